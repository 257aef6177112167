// A picture of the main window for the documentation: analyses the first
// screens of the open recording, selects an event, and saves the window.
#pragma once

#include <QString>

namespace vess {

class MainWindow;

// Takes the picture once the event loop has let the window settle, then ends
// the event loop: with 0, or 1 when the picture could not be written.
void ScheduleScreenshot(MainWindow& window, const QString& pngPath, int screens);

}  // namespace vess
