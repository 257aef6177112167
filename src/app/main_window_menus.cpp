// Menus, shortcuts and tool-tips of the main window. Every command is a
// QAction named after its menu entry, so menus, buttons and keys share one
// enabled state and one tool-tip.
#include <QAction>
#include <QActionGroup>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>
#include <QTableView>
#include <QToolBar>

#include "app/main_window.h"
#include "recording/event_exports.h"
#include "detection/navigation.h"
#include "detection/ui/texts.h"
#include "recording/texts.h"

namespace vess {

using namespace ui_text;

QAction* MainWindow::AddAction(QMenu* menu, const char* name, const QString& text,
                               const QList<QKeySequence>& keys, const char* tip,
                               void (MainWindow::*slot)()) {
    auto* a = new QAction(text, this);
    a->setObjectName(name);
    a->setShortcuts(keys);
    a->setShortcutContext(Qt::WindowShortcut);
    if (tip) {
        a->setToolTip(tip);
        a->setStatusTip(tip);
    }
    if (slot) connect(a, &QAction::triggered, this, slot);
    if (menu) menu->addAction(a);
    addAction(a);  // shortcuts work even while the menu bar is hidden
    actions_[name] = a;
    return a;
}

void MainWindow::BuildMenus() {
    BuildFileMenu();
    BuildEditMenus();
    BuildAnalysisMenu();
    BuildNavigationMenu();
    BuildLaterMenus();
    BuildRegisteredCommands();

    // The buttons run the same actions and follow their enabling.
    const char* buttonActions[] = {"menu_Analyze", "menu_AnalyzeNext", "menu_NonStop", "menu_Stop",
                                   "menu_Reset", "menu_SaveSettings", "menu_SaveSettings"};
    for (std::size_t i = 0; i < buttons_.size(); ++i) {
        QAction* a = Action(buttonActions[i]);
        QPushButton* b = buttons_[i];
        connect(b, &QPushButton::clicked, a, &QAction::trigger);
        connect(a, &QAction::enabledChanged, b, &QPushButton::setEnabled);
        b->setToolTip(a->toolTip());
        b->setEnabled(a->isEnabled());
    }

    // Menus show the tool-tips that name each command's key.
    for (QMenu* menu : menuBar()->findChildren<QMenu*>()) menu->setToolTipsVisible(true);

    // Editing commands on the grid's context menu.
    for (const char* name : {"menu_Group", "menu_RejectEvents", "menu_deleteevents", "menu_Unmark"})
        grid_->addAction(Action(name));
}

void MainWindow::BuildFileMenu() {
    QMenu* m = menuBar()->addMenu(tr("&File"));
    m->setObjectName("menu_File");
    // Ctrl+O opens a recording (registered with the recording's commands).
    AddAction(m, "menu_OpenEvent", tr("Open &Event File..."), {QKeySequence("Ctrl+Shift+O")}, nullptr,
              &MainWindow::OnOpenEvent);
    AddAction(m, "menu_SaveEvent", tr("&Save Event File..."), {QKeySequence::Save}, nullptr,
              &MainWindow::OnSaveEvent);
    m->addSeparator();
    AddAction(m, "menu_SaveData", tr("Export Events as &Text (ATF)..."), {}, nullptr,
              &MainWindow::OnSaveData);
    AddAction(m, "menu_savetoAsciiFile", tr("Export Events as &ASCII..."), {}, nullptr,
              &MainWindow::OnSaveAscii);
    connect(AddAction(m, "menu_SaveGridCsv", tr("Export Event &Grid as CSV..."), {},
                      "Every column of the event grid, in the grid's units, as a CSV file", nullptr),
            &QAction::triggered, this, [this] { ShowFailure(dialogs_, SaveGridCsvCommand(ws_, dialogs_)); });
    AddAction(m, "menu_DatInfo", tr("Data File &Information"), {QKeySequence("Ctrl+I")}, nullptr,
              &MainWindow::OnDatInfo);
    m->addSeparator();
    AddAction(m, "menu_SaveSettings", tr("Save Se&ttings"), {}, nullptr,
              &MainWindow::OnSaveSettings);
    AddAction(m, "menu_SaveSettingsCustom", tr("Save &Custom Settings..."), {}, nullptr,
              &MainWindow::OnSaveSettingsCustom);
    AddAction(m, "menu_LoadSettings", tr("&Load Custom Settings..."), {}, nullptr,
              &MainWindow::OnLoadSettings);
    AddAction(m, "menu_SaveParameter", tr("Save &Parameters..."), {}, nullptr,
              &MainWindow::OnSaveParameter);
    AddAction(m, "menu_LoadParameter", tr("Load Pa&rameters..."), {}, nullptr,
              &MainWindow::OnLoadParameter);
    QMenu* suggest = m->addMenu(QString::fromStdString(std::string(texts::kSuggestParametersCaption)));
    suggest->setObjectName("menu_SuggParam");
    const QString kinds[] = {tr("1  Fast events"), tr("2  Slow events"), tr("3  Large events")};
    for (int k = 1; k <= 3; ++k) {
        QAction* a = AddAction(suggest, QString("menu_SuggParam%1").arg(k).toUtf8().constData(),
                               kinds[k - 1], {}, nullptr, nullptr);
        connect(a, &QAction::triggered, this, [this, k] { OnSuggest(k); });
    }
    actions_["menu_SuggParam"] = suggest->menuAction();
    m->addSeparator();
    AddAction(m, "menu_Exit", tr("E&xit"), {QKeySequence::Quit}, nullptr, nullptr);
    connect(Action("menu_Exit"), &QAction::triggered, this, &QWidget::close);
}

void MainWindow::BuildEditMenus() {
    QMenu* e = menuBar()->addMenu(tr("&Edit"));
    e->setObjectName("menu_Edit");
    AddAction(e, "menu_Undo", tr("&Undo"), {QKeySequence("Ctrl+Z")}, nullptr, &MainWindow::OnUndo);
    AddAction(e, "menu_Redo", tr("&Redo"), {QKeySequence("Ctrl+Y"), QKeySequence("Ctrl+Shift+Z")},
              nullptr, &MainWindow::OnRedo);

    QMenu* m = menuBar()->addMenu(tr("E&vents"));
    m->setObjectName("menu_Events");
    AddAction(m, "menu_markasgp", tr("&Group Selected Events..."), {QKeySequence("G")}, nullptr,
              &MainWindow::OnGroupSelected);
    AddAction(nullptr, "menu_Group", tr("Group Selected Events..."), {}, nullptr,
              &MainWindow::OnGroupSelected);
    AddAction(m, "menu_MarkAllEvents", tr("Group &All Events..."), {QKeySequence("Shift+N")},
              kTipGroupAll, &MainWindow::OnGroupAll);
    AddAction(m, "menu_MarkAllWindow", tr("Group Events in This &Window..."), {QKeySequence("M")},
              kTipGroupWindow, &MainWindow::OnGroupWindow);
    AddAction(m, "menu_Unmark", tr("&Unmark Selected Event"), {QKeySequence("U")}, kTipUnmark,
              &MainWindow::OnUnmark);
    AddAction(m, "menu_UnmarkGrouped", tr("Unmark Grouped Events..."), {}, nullptr,
              &MainWindow::OnUnmarkGrouped);
    m->addSeparator();
    AddAction(m, "menu_RejectThisEvent", tr("&Reject Selected Event"), {QKeySequence("J")},
              kTipReject, &MainWindow::OnRejectThis);
    AddAction(m, "menu_RejectEvents", tr("Reject Events Selected in the Grid"), {}, nullptr,
              &MainWindow::OnRejectSelected);
    AddAction(m, "menu_DeletEvent", tr("&Delete Selected Event"), {QKeySequence("K")}, kTipDelete,
              &MainWindow::OnDeleteThis);
    AddAction(m, "menu_deleteevents", tr("Delete Events Selected in the Grid"),
              {QKeySequence("Shift+Del")}, nullptr, &MainWindow::OnDeleteSelected);
    AddAction(m, "menu_DeleteRejected", tr("Delete All Rejected Events"), {}, nullptr,
              &MainWindow::OnDeleteRejected);
    AddAction(m, "menu_RemoveDuplicates", tr("Remove Duplicate Events"), {}, nullptr,
              &MainWindow::OnRemoveDuplicates);
    // The group assignments of the group analysis commands come here.
    m->addSeparator();
    sortMenu_ = m->addMenu(tr("&Sort Events By"));
    sortMenu_->setObjectName("menu_Sort");
    actions_["menu_Sort"] = sortMenu_->menuAction();
    const char* fields[] = {"Time", "Amplitude", "Time to Rise", "Time to Decay", "Area",
                            "Baseline", "Noise", "Group", "Channel", "Rise10-90", "Half-width",
                            "Rise 50", "Peak Direction", "Burst #", "Burst Event#", "Slope10-90",
                            "Relative Time"};
    for (int f = 0; f < kEventFieldCount; ++f) {
        QAction* a = AddAction(sortMenu_, QString("menu_Sort%1").arg(f).toUtf8().constData(),
                               fields[f], {}, nullptr, nullptr);
        connect(a, &QAction::triggered, this, [this, f] { OnSort(f); });
    }
}

void MainWindow::BuildAnalysisMenu() {
    QMenu* m = menuBar()->addMenu(tr("&Analysis"));
    m->setObjectName("menu_Analysis");
    AddAction(m, "menu_Analyze", tr("Analyze This Window"), {QKeySequence(Qt::Key_F9)}, kTipAnalyze,
              &MainWindow::OnAnalyze);
    AddAction(m, "menu_AnalyzeNext", tr("Analyze Next Window"),
              {QKeySequence(Qt::Key_F10), QKeySequence("N")}, kTipAnalyzeNext,
              &MainWindow::OnAnalyzeNext);
    AddAction(m, "menu_NonStop", tr("Non-stop Analysis"), {QKeySequence(Qt::Key_F11)}, kTipNonStop,
              &MainWindow::OnNonStop);
    AddAction(m, "menu_Stop", tr("Stop Non-stop Analysis"), {QKeySequence(Qt::Key_F12)}, kTipStop,
              &MainWindow::OnStop);
    AddAction(m, "menu_Reset", tr("Reset (Erase All Events)..."), {}, nullptr, &MainWindow::OnReset);
    m->addSeparator();
    AddAction(m, "menu_RecalculatePeak", tr("Recalculate Selected Event"), {QKeySequence("I")},
              kTipRecalculate, &MainWindow::OnRecalculate);
    AddAction(m, "menu_DoublePeak", tr("Analyze Selected Event for Double Peak"),
              {QKeySequence("L")}, kTipDoublePeak, &MainWindow::OnDoublePeak);
    AddAction(m, "menu_ScanDoublePeak", tr("Scan All Events for Double Peaks"), {}, nullptr,
              &MainWindow::OnScanDoublePeak);
    AddAction(m, "menu_BaselineThreshold", tr("Baseline and Threshold..."), {}, nullptr,
              &MainWindow::OnBaselineThreshold);
    AddAction(m, "menu_RMSNoise", tr("RMS Noise of This Window"), {}, nullptr,
              &MainWindow::OnRmsNoise);
    BuildMethodActions(m, menuBar()->findChild<QMenu*>("menu_Events"));
}

void MainWindow::BuildNavigationMenu() {
    QMenu* v = menuBar()->addMenu(tr("&View"));
    v->setObjectName("menu_View");
    QToolBar* bar = addToolBar(tr("Navigation"));
    bar->setObjectName("tbNavigation");
    bar->setMovable(false);
    struct Nav { const char* name; const char* text; const char* key; const char* tip; NavCommand cmd; const char* icon; };
    const Nav screens[] = {
        {"menu_FirstScreen", "First Screen", "A", kTipFirstScreen, NavCommand::FirstScreen, "|◀"},
        {"menu_PrevScreen", "Previous Screen", "S", kTipPrevScreen, NavCommand::PrevScreen, "◀"},
        {"menu_NextScreen", "Next Screen", "D", kTipNextScreen, NavCommand::NextScreen, "▶"},
        {"menu_LastScreen", "Last Screen", "F", kTipLastScreen, NavCommand::LastScreen, "▶|"},
    };
    const Nav events[] = {
        {"menu_FirstEvent", "First Event", "Z", kTipFirstEvent, NavCommand::FirstEvent, "|◆"},
        {"menu_PrevEvent", "Previous Event", "X", kTipPrevEvent, NavCommand::PrevEvent, "◆◀"},
        {"menu_NextEvent", "Next Event", "C", kTipNextEvent, NavCommand::NextEvent, "▶◆"},
        {"menu_LastEvent", "Last Event", "V", kTipLastEvent, NavCommand::LastEvent, "◆|"},
        {"menu_NextEventNextWindow", "Next Event in Next Window", "B", kTipNextEventNextWindow,
         NavCommand::NextEventInNextWindow, nullptr},
        {"menu_FirstInSequence", "First Event in Sequence", "Q", kTipFirstInSequence,
         NavCommand::FirstInSequence, nullptr},
        {"menu_PrevInSequence", "Previous Event in Sequence", "W", kTipPrevInSequence,
         NavCommand::PrevInSequence, nullptr},
        {"menu_NextInSequence", "Next Event in Sequence", "E", kTipNextInSequence,
         NavCommand::NextInSequence, nullptr},
        {"menu_LastInSequence", "Last Event in Sequence", "R", kTipLastInSequence,
         NavCommand::LastInSequence, nullptr},
        {"menu_FirstGrouped", "First Grouped Event", "1", kTipFirstGrouped, NavCommand::FirstGrouped, nullptr},
        {"menu_PrevGrouped", "Previous Grouped Event", "2", kTipPrevGrouped, NavCommand::PrevGrouped, nullptr},
        {"menu_NextGrouped", "Next Grouped Event", "3", kTipNextGrouped, NavCommand::NextGrouped, nullptr},
        {"menu_LastGrouped", "Last Grouped Event", "4", kTipLastGrouped, NavCommand::LastGrouped, nullptr},
        {"menu_NextTimeInterval", "Next Time Interval", "Ctrl+T", kTipJumpInterval,
         NavCommand::NextTimeInterval, nullptr},
    };
    QMenu* go = v->addMenu(tr("&Go To"));
    go->setObjectName("menu_GoTo");
    auto add = [&](const Nav& n) {
        QAction* a = AddAction(go, n.name, tr(n.text), {QKeySequence(n.key)}, n.tip, nullptr);
        const int cmd = int(n.cmd);
        connect(a, &QAction::triggered, this, [this, cmd] { Go(cmd); });
        if (n.icon) {
            a->setIconText(n.icon);
            bar->addAction(a);
        }
    };
    for (const Nav& n : screens) add(n);
    go->addSeparator();
    bar->addSeparator();
    for (const Nav& n : events) add(n);
    go->addSeparator();
    AddAction(go, "menu_JumpTime", tr("Specific Time..."), {QKeySequence("T")}, kTipJumpTime,
              &MainWindow::OnJumpTime);
    AddAction(go, "menu_JumpEvent", tr("Event Number..."), {QKeySequence("Y")}, kTipJumpEvent,
              &MainWindow::OnJumpEvent);

    bar->addSeparator();
    struct Disp { const char* name; const char* text; Qt::Key key; const char* tip; DisplayStep step; const char* icon; };
    const Disp display[] = {
        {"menu_GainUp", "Increase Display Gain", Qt::Key_Home, kTipGainUp, DisplayStep::IncreaseGain, "Gain +"},
        {"menu_GainDown", "Decrease Display Gain", Qt::Key_End, kTipGainDown, DisplayStep::DecreaseGain, "Gain −"},
        {"menu_OffsetUp", "Increase Display Offset", Qt::Key_PageUp, kTipOffsetUp, DisplayStep::IncreaseOffset, "Offset ↑"},
        {"menu_OffsetDown", "Decrease Display Offset", Qt::Key_PageDown, kTipOffsetDown, DisplayStep::DecreaseOffset, "Offset ↓"},
    };
    v->addSeparator();
    for (const Disp& d : display) {
        QAction* a = AddAction(v, d.name, tr(d.text), {QKeySequence(d.key)}, d.tip, nullptr);
        const int step = int(d.step);
        connect(a, &QAction::triggered, this, [this, step] { OnDisplayStep(step); });
        a->setIconText(d.icon);
        bar->addAction(a);
    }
    QAction* fit = AddAction(v, "menu_FitDisplay", tr("&Fit Display to This Screen"), {QKeySequence("H")},
                             kTipFitDisplay, &MainWindow::OnFitDisplay);
    fit->setIconText(tr("Fit"));
    bar->addAction(fit);
    QAction* reset = AddAction(v, "menu_ResetDisplay", tr("&Reset Display Gain and Offset"),
                               {QKeySequence("0")}, kTipResetDisplay, &MainWindow::OnResetDisplay);
    reset->setIconText(tr("Reset"));
    bar->addAction(reset);
    v->addSeparator();
    QAction* cursors = AddAction(v, "menu_Cursors", tr("&Cursors"), {QKeySequence("Ctrl+K")},
                                 nullptr, nullptr);
    cursors->setCheckable(true);
    cursors->setToolTip(tr("Two cursors: the first follows the mouse, a middle click sets the second"));
    connect(cursors, &QAction::toggled, this, &MainWindow::OnToggleCursors);
    bar->addAction(cursors);
    QAction* tips = AddAction(v, "menu_DisplayTooltips", tr("Show &Tool-tips"), {}, nullptr, nullptr);
    tips->setCheckable(true);
    tips->setChecked(ws_.settings.showToolTips);
    connect(tips, &QAction::toggled, this, &MainWindow::OnDisplayTooltips);
}

void MainWindow::BuildLaterMenus() {
    // The analysis menus that follow the main window's own, in menu-bar order.
    BuildStatisticsMenus();
    BuildSignalMenu();
}

}  // namespace vess
