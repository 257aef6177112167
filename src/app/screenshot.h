// A picture of the main window for the documentation: analyses the first
// screens of the open recording, selects an event, and saves the window.
#pragma once

#include <QString>

namespace vess {

class MainWindow;

// Returns false when the picture could not be written.
bool TakeScreenshot(MainWindow& window, const QString& pngPath, int screens);

}  // namespace vess
