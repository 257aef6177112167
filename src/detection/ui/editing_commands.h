// The editing commands of the main window that the window's own mouse and
// grid commands share with its menus.
#pragma once

#include "recording/event_record.h"

namespace vess {

class CommandHost;

// Sorts the events by a field (undoable); nothing with fewer than two.
void SortEventsBy(CommandHost& host, EventField field);

}  // namespace vess
