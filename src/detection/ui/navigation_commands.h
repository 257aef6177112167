// Moving the screen or the selected event, shared by the View menu's
// commands and the main window's scroll bar, overview and grid.
#pragma once

namespace vess {

class CommandHost;
struct NavResult;

// Moves where result says and redraws; nothing when it does not move.
void ShowNavigation(CommandHost& host, const NavResult& result);

}  // namespace vess
