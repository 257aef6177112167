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

namespace vess {

class EventGridModel;
class EventSound;
class FileBrowser;
class NonStopRunner;
class JobRunner;
class BackgroundJob;
class DataAnalysisWindow;
class OverviewStrip;
class ParameterPanel;
class Screen;
class TraceView;
struct CorrelogramRequest;
struct DoublePeakResult;
struct FilterChoice;

class MainWindow : public QMainWindow, public CommandHost {
    Q_OBJECT
public:
    MainWindow(Workspace& ws, Dialogs& dialogs, QWidget* parent = nullptr);
    ~MainWindow() override;

    // Opens a file as a click in the file list does (ABF or event file).
    void OpenPath(const QString& path) override;
    // The menu action or button with this object name (nullptr if none).
    QAction* Action(const QString& objectName) const;
    bool NonStopRunning() const;
    // A non-stop analysis or a job runs: what would change the recording or
    // its events waits (the test every such command's enabling asks).
    bool Busy() const;
    JobRunner& Jobs() const override { return *jobs_; }
    Workspace& Ws() override { return ws_; }
    Dialogs& Asker() override { return dialogs_; }
    ToolWindows& Tools() override { return tools_; }
    void Redraw(bool eventsChanged) override;  // main_window_registry.cpp
    std::vector<int32_t> SelectedRows() const override;
    TraceView* Trace() const { return trace_; }
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
    // Layout and menus (main_window.cpp, main_window_menus.cpp).
    void BuildLayout();
    void BuildMenus();
    void BuildFileMenu();
    void BuildEditMenus();
    void BuildAnalysisMenu();
    void BuildNavigationMenu();
    void BuildLaterMenus();
    void BuildSignalMenu();     // main_window_signal.cpp
    void AddFilterActions(QMenu* m);      // main_window_filter.cpp
    void AddSignalToolActions(QMenu* m);  // main_window_signal_tools.cpp
    // The commands every subsystem registered (main_window_registry.cpp).
    void BuildRegisteredCommands();
    void RefreshRegisteredActions();
    // The menu at a '/'-separated path of titles, made when missing.
    QMenu* MenuAt(const QString& path);
    // Digital filter (main_window_filter.cpp).
    void OnFilterDialog();
    void OnFilterResponse(const FilterChoice& choice);
    void OnFilterApply(const FilterChoice& choice);
    void OnRemoveFilter();
    void OnToggleFiltered();
    void OnDetectOnFiltered(bool on);
    void RefreshFilterIndicator();
    QAction* AddAction(QMenu* menu, const char* name, const QString& text,
                       const QList<QKeySequence>& keys, const char* tip, void (MainWindow::*slot)());
    void RestoreGeometry();
    void SaveGeometry();

    // Redrawing.
    void RebuildScreen();
    // Tells the user once that the recording's file could not be read,
    // offering to save the events.
    void ReportReadFaultOnce();
    void RefreshTrace();
    void RefreshGrid();
    void RefreshStatus();
    void RefreshActions();
    void FitGridColumns();
    // The progress bar back to "Ready" (another file, or the events erased).
    void ResetProgress();
    // The pointer read-out and the non-stop progress, which speak of what
    // was shown before another file or an undo, are cleared.
    void ClearStaleReadouts();
    // Starts the overview read of the recording shown (a running one ends).
    void ReadOverview();
    // The file list highlights the open recording (nothing when none is open
    // or it lies in another folder), also after an abandoned switch.
    void ShowOpenFileInList();
    void OnDisplayTooltips(bool on);
    void ShowSelection();
    void AfterEdit(bool changed);
    void AfterNavigation(const struct NavResult& result);

    // Work arrays, histograms and statistics (main_window_statistics.cpp).
    void BuildStatisticsMenus();
    // Counts a correlogram as a job; its normalise question and plot follow.
    void StartCorrelogram(std::optional<CorrelogramRequest> request);
    void BuildDataArrayMenu();
    void BuildHistogramMenu();
    void BuildTestMenu();
    QMenu* AddStatisticsMenu(QMenu* parent, const char* name, std::string_view text);
    QAction* AddStatisticsAction(QMenu* menu, const std::string& name, std::string_view text,
                                 std::function<void()> run);
    DataAnalysisWindow* OpenDataAnalysis();
    void OpenMathOperation();
    void ArraysChanged();
    // Reads an array text file as a job; the arrays are replaced when it ends.
    void StartArraysImport();

    // Files and settings (main_window_files.cpp).
    void OnFileChosen(const QString& path);
    void OnOpenEvent();
    void OnSaveEvent();
    void OnDatInfo();
    void OnSaveData();
    void OnSaveAscii();
    void OnSaveSettings();
    void OnSaveSettingsCustom();
    void OnLoadSettings();
    void OnSaveParameter();
    void OnLoadParameter();
    void OnSuggest(int entry);
    void OnParametersEdited(const AnalysisParameters& params);
    void OnNumberPointsPeak(int points);
    bool SaveEventsQuestion();
    bool AskToSaveUnsavedEvents();

    // Analysis (main_window_analysis.cpp).
    void OnAnalyze();
    void OnAnalyzeNext();
    void OnNonStop();
    void OnStop();
    void OnReset();
    void OnNonStopProgress(bool finished);
    void OnTraceClicked(int64_t index, Qt::MouseButton button, Qt::KeyboardModifiers modifiers);
    void OnRecalculate();
    void OnDoublePeak();
    void OnScanDoublePeak();
    void OnBaselineThreshold();
    void OnRmsNoise();
    void DetectDoublePeakAt(int64_t index);
    void AfterDoublePeak(const DoublePeakResult& r, int32_t countBefore);
    void DetectAtClick(int64_t index, bool lowThresholds);

    // Detection methods (main_window_methods.cpp).
    void BuildMethodActions(QMenu* analysis, QMenu* events);
    void OnMethodChosen(DetectionMethod method);
    void OnSuggestFromRecording();
    void OnLearnKernel();
    void OnCheckAccuracy();
    void OnRemoveNearDuplicates();
    // Before F9, next window and non-stop: the settings suggested from a
    // recording analysed for the first time; false when the thresholds are
    // out of reach and the user did not take the suggestion, or when a run
    // over the whole recording was cancelled at the replace question.
    bool ReadyToDetect(bool wholeRecording = false);
    void OnMethodParametersEdited(const MethodParameters& method);

    // Editing (main_window_editing.cpp).
    void OnGroupSelected();
    void OnGroupAll();
    void OnGroupWindow();
    void OnUnmark();
    void OnUnmarkGrouped();
    void OnRejectThis();
    void OnRejectSelected();
    void OnDeleteThis();
    void OnDeleteSelected();
    void OnDeleteRejected();
    void OnRemoveDuplicates();
    void OnSort(int field);
    void OnUndo();
    void OnRedo();

    // Navigation (main_window_navigation.cpp).
    void Go(int command);
    void OnJumpTime();
    void OnJumpEvent();
    void OnDisplayStep(int step);
    void OnFitDisplay();
    void OnResetDisplay();
    void OnBlocksPerScreen(int blocks);
    void OnOverviewSample(int64_t sample);
    void OnGridHeaderClicked(int column);
    void OnScroll(int screen);
    // Shows the screen starting at a block, keeping the selected event.
    void ShowScreen(int32_t startBlock);
    void OnGridRowChosen(int row);
    void OnGroupNavigate(int item);
    void OnToggleCursors(bool on);

    Workspace& ws_;
    Dialogs& dialogs_;
    std::unique_ptr<Screen> screen_;
    std::unique_ptr<NonStopRunner> nonStop_;
    JobRunner* jobs_ = nullptr;
    BackgroundJob* overviewReader_ = nullptr;
    // Every command over the work arrays: they wait while a job runs.
    std::vector<QAction*> arrayActions_;
    std::unique_ptr<EventSound> sound_;
    bool syncingSelection_ = false;
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
    QMenu* sortMenu_ = nullptr;
    // The trace view shows the filtered copy while one is applied and this
    // is on; detection reads it when the settings say so.
    QLabel* statusFilter_ = nullptr;
    ToolWindows tools_{this};
    struct RegisteredAction {
        QAction* action;
        const Command* command;
    };
    std::vector<RegisteredAction> registered_;
};

}  // namespace vess
