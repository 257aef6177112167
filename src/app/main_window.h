// The main window: file lists, the trace view, the event grid, the parameter
// boxes, the analysis buttons and every menu. It holds no state of its own
// beyond widgets: the recording, events, settings and selection live in the
// Workspace, and every command is a core function followed by a redraw.
#pragma once

#include <QMainWindow>

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "detection/detection_start.h"
#include "recording/dialogs.h"
#include "recording/ui/command_registry.h"
#include "recording/ui/tool_windows.h"
#include "recording/workspace.h"

class QAction;
class QComboBox;
class QLabel;
class QMenu;
class QProgressBar;
class QPushButton;
class QScrollBar;
class QSplitter;
class QTableView;
class QTimer;
class QToolBar;

namespace vess {

class EventGridModel;
class EventSound;
class FileBrowser;
class NonStopRunner;
class JobRunner;
class BackgroundJob;
class OverviewStrip;
class ParameterPanel;
class Screen;
class TraceView;

class MainWindow : public QMainWindow, public CommandHost {
    Q_OBJECT
public:
    MainWindow(Workspace& ws, Dialogs& dialogs, QWidget* parent = nullptr);
    ~MainWindow() override;

    // Opens a file as a click in the file list does (ABF or event file).
    void OpenPath(const QString& path) override;
    // The menu action or button with this object name (nullptr if none).
    QAction* Action(const QString& objectName) const;
    bool NonStopRunning() const override;
    // A non-stop analysis or a job runs: what would change the recording or
    // its events waits (the test every such command's enabling asks).
    bool Busy() const override;
    JobRunner& Jobs() const override { return *jobs_; }
    Workspace& Ws() override { return ws_; }
    Dialogs& Asker() override { return dialogs_; }
    ToolWindows& Tools() override { return tools_; }
    std::vector<int32_t> SelectedRows() const override;
    TraceView* Trace() const override { return trace_; }
    // The commands' view of the window (main_window_host.cpp).
    void StartNonStop() override;
    void StopNonStop() override;
    bool ReadyToDetect(bool wholeRecording) override;
    void EventsStored(int count) override;
    void OfferScreen(Screen&& screen) override;
    void Redraw(bool eventsChanged) override;
    void RedrawTrace(bool reread) override;
    void RedrawAll(bool eventsChanged) override;
    void ClearReadouts() override;

    OverviewStrip* Overview() const { return overview_; }
    // Reads the overview of each recording opened, away from the windows.
    BackgroundJob& OverviewReader();
    QTableView* Grid() const { return grid_; }
    // The analysis buttons are Command1 to Command7 by object name.
    QPushButton* AnalyzeButton() const { return buttons_.front(); }  // Command1
    QComboBox* PointsAtPeakBox() const;                              // Combo2
    FileBrowser* Files() const { return files_; }
    EventSound& Sound() { return *sound_; }
    // Redraws everything from the workspace.
    void RefreshAll();

protected:
    void closeEvent(QCloseEvent* event) override;
    // An .abf or .evt file dropped on the window opens as from the file list
    // (main_window_drop.cpp).
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    // Swallows tool-tip events of every window while DisplayTooltips is off.
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    // Layout (main_window.cpp).
    void BuildLayout();
    void BuildFilterIndicator();  // main_window_filter.cpp
    void RestoreGeometry();
    void SaveGeometry();
    // Menus, tool bar, keys and buttons from the registered commands
    // (main_window_registry.cpp).
    void BuildMenus();
    void BuildRegisteredCommands();
    void AddRegistered(const Command& command);
    // The menu at a '/'-separated path of titles, made when missing.
    QMenu* MenuAt(const QString& path);

    // Redrawing.
    void RebuildScreen();
    // The view, the overview and the kept screen let go of the open recording.
    void ForgetScreen();
    bool IsScreenToShow(const Screen& screen) const;
    void ShowScreenRead(std::unique_ptr<Screen> screen);
    // Tells the user once that the recording's file could not be read,
    // offering to save the events.
    void ReportReadFaultOnce();
    void RefreshTrace();
    void RefreshGrid();
    void RefreshStatus();  // main_window_status.cpp
    void RefreshFilterIndicator();  // main_window_filter.cpp
    // Enabling, check marks and captions of every command.
    void RefreshActions();
    void FitGridColumns();
    // The progress bar back to "Ready" (another file, or the events erased).
    void ResetProgress();
    // Starts the overview read of the recording shown (a running one ends).
    void ReadOverview();
    // The file list highlights the open recording (nothing when none is open
    // or it lies in another folder), also after an abandoned switch.
    void ShowOpenFileInList();
    void ShowSelection();
    // What decides whether the grid's current row is in view: the row, the
    // rows, the scroll bars and the viewport's size.
    struct GridView {
        int row = -1, rows = 0, vertical = 0, horizontal = 0;
        QSize viewport;
        bool operator==(const GridView&) const = default;
    };
    GridView GridViewNow(int row) const;
    void AfterEdit(bool changed);

    // Files and the parameter boxes (main_window_files.cpp).
    void OnFileChosen(const QString& path);
    void OnParametersEdited(const AnalysisParameters& params);
    void OnNumberPointsPeak(int points);
    void OnMethodChosen(DetectionMethod method);
    void OnMethodParametersEdited(const MethodParameters& method);
    bool AskToSaveUnsavedEvents();

    // Mouse commands on the trace and the non-stop progress
    // (main_window_analysis.cpp).
    void OnNonStopProgress(bool finished);
    void OnTraceClicked(int64_t index, Qt::MouseButton button, Qt::KeyboardModifiers modifiers);
    void DetectAtClick(int64_t index, bool lowThresholds);

    // The scroll bar, the overview, the grid (main_window_navigation.cpp).
    void OnBlocksPerScreen(int blocks);
    void OnOverviewSample(int64_t sample);
    void OnGridHeaderClicked(int column);
    void OnScroll(int screen);
    // Shows the screen starting at a block, keeping the selected event.
    void ShowScreen(int32_t startBlock);
    void OnGridRowChosen(int row);

    Workspace& ws_;
    Dialogs& dialogs_;
    std::unique_ptr<Screen> screen_;
    std::unique_ptr<NonStopRunner> nonStop_;
    JobRunner* jobs_ = nullptr;
    BackgroundJob* overviewReader_ = nullptr;
    std::unique_ptr<EventSound> sound_;
    bool syncingSelection_ = false;
    GridView gridShown_;  // when the current row was last put in view
    // Grid columns are fitted once per recording opened; after that the
    // widths are the user's.
    bool fitColumns_ = true;

    FileBrowser* files_ = nullptr;
    TraceView* trace_ = nullptr;
    OverviewStrip* overview_ = nullptr;
    QScrollBar* scroll_ = nullptr;
    QLabel* cursorLabel_ = nullptr;
    QTableView* grid_ = nullptr;
    EventGridModel* gridModel_ = nullptr;
    ParameterPanel* params_ = nullptr;
    QComboBox* groupNav_ = nullptr;
    QProgressBar* progress_ = nullptr;
    QSplitter* leftSplit_ = nullptr;
    QSplitter* rightSplit_ = nullptr;
    QSplitter* mainSplit_ = nullptr;
    QLabel* statusFile_ = nullptr;
    QLabel* statusChannel_ = nullptr;
    QLabel* statusScreen_ = nullptr;
    QLabel* statusPointer_ = nullptr;
    QLabel* statusEvents_ = nullptr;
    std::map<QString, QAction*> actions_;
    std::vector<QPushButton*> buttons_;
    QToolBar* toolBar_ = nullptr;
    // The trace view shows the filtered copy while one is applied and this
    // is on; detection reads it when the settings say so.
    QLabel* statusFilter_ = nullptr;
    ToolWindows tools_{this, &dialogs_};
    // The enabling of the registered actions. Many commands share one plain
    // test (idle, a recording open): each test is asked once a refresh, and
    // its actions are touched only when its answer changed. Commands with a
    // test of their own are asked one by one, and set only when it changes.
    struct OwnTest {
        QAction* action;
        const Command* command;
        int enabled = -1;  // the enabling last set; -1: none yet
    };
    std::vector<bool (*)(const CommandState&)> enablingTests_;
    std::vector<std::vector<QAction*>> actionsOfTest_;  // by index into enablingTests_
    std::vector<int> testsPassed_;  // each test's last answer; -1: not asked yet
    std::vector<OwnTest> ownTests_;
    // The actions that take a check mark or caption from the state.
    std::vector<std::pair<QAction*, const Command*>> checkedActions_;
    struct CaptionShown {
        QAction* action;
        const Command* command;
        std::optional<uint64_t> stamp{};  // the caption's stamp when last set; none: not set yet
    };
    std::vector<CaptionShown> captionedActions_;
    // What the status bar and the title show, from the workspace; each label
    // is set again only when its part changed (main_window_status.cpp).
    struct StatusShown {
        bool open = false;
        uint64_t samples = 0;  // the recording's samples version the name and units were read at
        std::string fileName, units, events;
        int channel = 0;
        int64_t screen = 0, screens = 0;
        QString screenText;  // "Screen %1 of <screens>"
        bool modified = false;
        // What the events label was made from.
        int32_t eventCount = 0;
        std::string madeFor, madeWith;
    };
    std::optional<StatusShown> statusShown_;
};

}  // namespace vess
