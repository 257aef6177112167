// Navigation on the main window: keys and buttons that move the screen or
// the selected event, the scroll bar, the grid's current row and the display
// scale. The core decides where to go; the window shows it.
#include <QComboBox>
#include <QTableView>

#include "app/background_job.h"
#include "app/main_window.h"
#include "detection/overview.h"
#include "detection/ui/overview_strip.h"
#include "detection/navigation.h"
#include "detection/ui/trace_view.h"

namespace vess {

void MainWindow::AfterNavigation(const NavResult& result) {
    if (!result.moved) return;
    ApplyNavigation(ws_, result);
    RefreshTrace();
    ShowSelection();
    RefreshStatus();
    RefreshActions();
}

void MainWindow::Go(int command) {
    if (NonStopRunning()) return;
    AfterNavigation(Navigate(ws_, static_cast<NavCommand>(command)));
}

void MainWindow::OnJumpTime() {
    if (NonStopRunning()) return;
    AfterNavigation(JumpToTime(ws_, dialogs_));
}

void MainWindow::OnJumpEvent() {
    if (NonStopRunning()) return;
    AfterNavigation(JumpToEventNumber(ws_, dialogs_));
}

void MainWindow::OnDisplayStep(int step) {
    const DisplayScale next = StepDisplay(DisplayScaleFromSettings(ws_.settings),
                                          static_cast<DisplayStep>(step), trace_->FullSpanCounts());
    StoreDisplayScale(ws_.settings, next);
    RefreshTrace();
}

void MainWindow::OnFitDisplay() {
    if (!ws_.recording) return;
    StoreDisplayScale(ws_.settings, trace_->FitAllScale());
    RefreshTrace();
}

BackgroundJob& MainWindow::OverviewReader() {
    if (!overviewReader_) overviewReader_ = new BackgroundJob(this);
    return *overviewReader_;
}

// The screen is drawn first; the overview fills in when its read ends. A
// read for a recording since closed or replaced is cancelled, and its
// extremes would be refused by the strip anyway.
void MainWindow::ReadOverview() {
    OverviewReader().Cancel();
    if (!ws_.recording) return;
    const Recording* rec = ws_.recording.get();
    OverviewReader().Start(OverviewJob(rec->Path(), rec->Channel(), [this, rec](BlockExtremes blocks) {
        overview_->SetExtremes(rec, std::move(blocks));
    }));
}

void MainWindow::OnResetDisplay() {
    trace_->ResetZoom();  // back to the whole screen
    StoreDisplayScale(ws_.settings, DisplayScale{});
    RefreshTrace();
}

// The screen length changes the tiling: the screen that holds the first block
// shown before is shown after.
void MainWindow::OnBlocksPerScreen(int blocks) {
    if (NonStopRunning() || blocks < 1 || blocks == ws_.settings.blocksPerScreen) {
        RefreshAll();
        return;
    }
    ws_.settings.blocksPerScreen = blocks;
    ws_.settings.lengthsFollowRate = false;  // the user's length holds for every file
    if (ws_.recording) ws_.screenStartBlock = GeometryOf(ws_).ScreenOfBlock(ws_.screenStartBlock);
    RefreshAll();
}

void MainWindow::ShowScreen(int32_t startBlock) {
    if (!ws_.recording || NonStopRunning()) return;
    NavResult r;
    r.screenStartBlock = startBlock;
    r.selectedEvent = ws_.selectedEvent;
    r.moved = r.screenStartBlock != ws_.screenStartBlock;
    AfterNavigation(r);
}

void MainWindow::OnOverviewSample(int64_t sample) { ShowScreen(GeometryOf(ws_).ScreenOfSample(sample)); }

void MainWindow::OnScroll(int screen) {
    const ScreenGeometry g = GeometryOf(ws_);
    ShowScreen(g.ScreenOfBlock(int64_t(screen) * g.blocksPerScreen));
}

void MainWindow::OnGridRowChosen(int row) {
    if (syncingSelection_ || row < 0 || NonStopRunning()) return;
    NavResult r = ShowEvent(ws_, row + 1);
    r.moved = true;
    ApplyNavigation(ws_, r);
    RefreshTrace();
    RefreshStatus();
    RefreshActions();
}

void MainWindow::OnGroupNavigate(int item) {
    ws_.settings.navigationGroup = item;
}

void MainWindow::OnToggleCursors(bool on) { trace_->SetCursorsOn(on); }

}  // namespace vess
