// Navigation on the main window: the scroll bar, the overview, the grid's
// current row and column titles, and the screen length. The core decides
// where to go; the window shows it.
#include <QComboBox>
#include <QTableView>

#include "app/background_job.h"
#include "app/main_window.h"
#include "detection/overview.h"
#include "detection/ui/overview_strip.h"
#include "detection/navigation.h"
#include "detection/ui/editing_commands.h"
#include "detection/ui/navigation_commands.h"
#include "detection/ui/trace_view.h"
#include "recording/event_grid.h"

namespace vess {

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
    ShowNavigation(*this, r);
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

void MainWindow::OnGridHeaderClicked(int column) {
    if (column < 1 || column > kEventFieldCount || Busy()) return;
    SortEventsBy(*this, FieldOfColumn(column));
}

}  // namespace vess
