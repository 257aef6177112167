// Measurement commands on single events: click detection, recalculation,
// double peaks, baseline and threshold, RMS noise.
#include <QAction>

#include "app/main_window.h"

namespace vess {

// Waiting for the core's click detection; the actions stay disabled.
void MainWindow::DetectAtClick(int64_t, bool) {}
void MainWindow::OnRecalculate() {}
void MainWindow::OnDoublePeak() {}
void MainWindow::OnScanDoublePeak() {}
void MainWindow::OnBaselineThreshold() {}
void MainWindow::OnRmsNoise() {}


}  // namespace vess
