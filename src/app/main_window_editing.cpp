// Editing, grouping, sorting and undo on the main window: each slot is one
// core command followed by a redraw.
#include <QAction>
#include <QMenu>

#include "app/job_runner.h"
#include "app/main_window.h"
#include "detection/editing.h"
#include "recording/event_grid.h"
#include "recording/ui/event_grid_model.h"

namespace vess {

void MainWindow::OnGroupSelected() {
    const auto rows = SelectedRows();
    AfterEdit(GroupSelectedEvents(ws_, dialogs_, rows).changed);
}

void MainWindow::OnGroupAll() { AfterEdit(GroupAllEvents(ws_, dialogs_).changed); }
void MainWindow::OnGroupWindow() { AfterEdit(GroupWindowEvents(ws_, dialogs_).changed); }
void MainWindow::OnUnmark() { AfterEdit(UnmarkEvent(ws_).changed); }
void MainWindow::OnUnmarkGrouped() { AfterEdit(UnmarkGroup(ws_, dialogs_).changed); }
void MainWindow::OnRejectThis() { AfterEdit(RejectEvent(ws_).changed); }

void MainWindow::OnRejectSelected() {
    const auto rows = SelectedRows();
    AfterEdit(RejectSelectedEvents(ws_, rows).changed);
}

void MainWindow::OnDeleteThis() { AfterEdit(DeleteEvent(ws_).changed); }

void MainWindow::OnDeleteSelected() {
    const auto rows = SelectedRows();
    AfterEdit(DeleteSelectedEvents(ws_, rows).changed);
}

void MainWindow::OnDeleteRejected() { AfterEdit(DeleteRejectedEvents(ws_).changed); }
void MainWindow::OnRemoveDuplicates() { AfterEdit(RemoveDuplicateEvents(ws_, dialogs_).changed); }

void MainWindow::OnSort(int field) {
    if (ws_.events.Count() < 2) return;
    ws_.history.Checkpoint(ws_.events, tr("Sort events").toStdString());
    ws_.events.Sort(static_cast<EventField>(field));
    AfterEdit(true);
}

void MainWindow::OnGridHeaderClicked(int column) {
    if (column < 1 || column > kEventFieldCount || Busy()) return;
    OnSort(int(FieldOfColumn(column)));
}

void MainWindow::OnUndo() {
    if (Busy() || !ws_.history.Undo(ws_.events)) return;
    KeepSelectionValid(ws_);
    ClearStaleReadouts();
    AfterEdit(true);
}

void MainWindow::OnRedo() {
    if (Busy() || !ws_.history.Redo(ws_.events)) return;
    KeepSelectionValid(ws_);
    ClearStaleReadouts();
    AfterEdit(true);
}

void MainWindow::RefreshActions() {
    const bool open = ws_.recording != nullptr;
    const bool running = Busy();
    const bool nonStop = NonStopRunning();
    const bool any = !ws_.events.Empty();
    const bool selected = ws_.HasSelectedEvent();
    auto enable = [this](const char* name, bool on) {
        if (QAction* a = Action(name)) a->setEnabled(on);
    };
    for (const char* n : {"menu_Analyze", "menu_AnalyzeNext", "menu_NonStop"}) enable(n, open && !running);
    enable("menu_Stop", nonStop);
    enable("menu_Reset", any && !running);
    for (const char* n : {"menu_RejectThisEvent", "menu_DeletEvent", "menu_Unmark",
                          "menu_RecalculatePeak", "menu_DoublePeak"})
        enable(n, selected && open && !running);
    enable("menu_ScanDoublePeak", any && open && !running);
    for (const char* n : {"menu_BaselineThreshold", "menu_RMSNoise", "menu_SuggestFromRecording",
                          "menu_LearnKernel", "menu_CheckAccuracy"})
        enable(n, open && !running);
    for (const char* n : {"menu_markasgp", "menu_Group", "menu_MarkAllEvents", "menu_UnmarkGrouped",
                          "menu_RejectEvents", "menu_deleteevents", "menu_DeleteRejected",
                          "menu_RemoveDuplicates", "menu_RemoveNearDuplicates", "menu_SaveData", "menu_savetoAsciiFile", "menu_SaveGridCsv"})
        enable(n, any && !running);
    enable("menu_MarkAllWindow", any && open && !running);
    enable("menu_DatInfo", open);
    enable("menu_SaveEvent", open && !running);
    enable("menu_OpenEvent", open && !running);
    enable("menu_SaveParameter", !running);
    if (sortMenu_) sortMenu_->setEnabled(ws_.events.Count() > 1 && !running);

    QAction* undo = Action("menu_Undo");
    QAction* redo = Action("menu_Redo");
    undo->setEnabled(ws_.history.CanUndo() && !running);
    redo->setEnabled(ws_.history.CanRedo() && !running);
    undo->setText(ws_.history.CanUndo()
                      ? tr("&Undo %1").arg(QString::fromStdString(ws_.history.UndoLabel()))
                      : tr("&Undo"));
    redo->setText(ws_.history.CanRedo()
                      ? tr("&Redo %1").arg(QString::fromStdString(ws_.history.RedoLabel()))
                      : tr("&Redo"));
    for (QAction* a : arrayActions_) a->setEnabled(!jobs_->Running());
    RefreshRegisteredActions();
}

}  // namespace vess
