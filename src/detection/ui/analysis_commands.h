// The analysis commands of the main window that its mouse commands on the
// trace share with its menus.
#pragma once

#include <cstdint>

namespace vess {

class CommandHost;
struct DoublePeakResult;
template <class T>
class Outcome;

// Recalculates the selected event (I, Shift+click).
void RecalculateSelectedEvent(CommandHost& host);
// The second peak (new or already stored) becomes the selected event, so
// that the next-event key goes on from it; a failure is shown.
void ShowDoublePeak(CommandHost& host, const Outcome<DoublePeakResult>& r, int32_t countBefore);

}  // namespace vess
