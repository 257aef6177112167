// Pictures of the windows for the documentation: analyses the first screens
// of the open recording, selects an event, and saves the main window; or
// puts the typical events into group 1, shows their average in the group
// analysis window, fits an exponential to it and saves that window.
#pragma once

#include <QString>

namespace vess {

class MainWindow;

enum class ScreenshotWindow { Main, Group };

// Takes the picture once the event loop has let the window settle, then ends
// the event loop: with 0, or 1 when the picture could not be written.
void ScheduleScreenshot(MainWindow& window, const QString& pngPath, int screens,
                        ScreenshotWindow which = ScreenshotWindow::Main);

}  // namespace vess
