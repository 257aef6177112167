// GrpAnal, "Group Analysis and Curve Fitting": builds the trace set of a
// group, shows and navigates it, fits the decay, and keeps the results grid.
// The window is thin: every command is a core function of group_analysis.
#pragma once

#include <array>

#include <QMainWindow>

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "group_analysis/decay_fit.h"
#include "group_analysis/fit_run.h"
#include "group_analysis/group_settings.h"
#include "group_analysis/trace_analysis_run.h"
#include "group_analysis/trace_set.h"
#include "group_analysis/trace_text.h"
#include "group_analysis/ui/results_grid_model.h"
#include "recording/ui/window_dialogs.h"

class QCheckBox;
class QComboBox;
class QLabel;
class QPagedPaintDevice;
class QPlainTextEdit;
class QPrinter;
class QPrintPreviewDialog;
class QPushButton;
class QRadioButton;
class QTableView;

namespace vess {
struct Workspace;
class Dialogs;
class JobRunner;
}

class QLineEdit;

namespace vess::group {

class TracePicture;

// The object names of the Analysis menu's trace analyses, in TraceAnalysis order.
inline constexpr int kTraceAnalysisCount = 7;
inline constexpr const char* kAnalysisActions[kTraceAnalysisCount] = {
    "menu_APWave1", "menu_APWave2", "menu_fEPSP", "menu_Multipeak", "menu_Ampero", "menu_RandomWalk", "menu_ECG"};

// Takes the number a box shows into value; anything that is not a finite
// number leaves value as it was.
void ReadNumber(const QString& text, double& value);

// How printing reaches a printer. The desktop shows the print and preview
// dialogs; tests print to PDF files and look at the preview without showing it.
struct PrintHooks {
    std::function<bool(QPrinter&)> choosePrinter;       // false: cancelled
    std::function<void(QPrintPreviewDialog&)> showPreview;
};

class GroupAnalysisWindow : public QMainWindow {
    Q_OBJECT
public:
    GroupAnalysisWindow(Workspace& ws, Dialogs& dialogs, JobRunner& jobs, QWidget* parent = nullptr);
    ~GroupAnalysisWindow() override;

    // The commands behind the buttons, menus and keys.
    void StartDisplay();
    // Start a fit job over the shown set (nothing while a job runs).
    void StartFitting();
    void StartCompareFits();
    // Reads a results file as a job; its rows join the table when it ends.
    void StartLoadingResults();
    void MoveTo(int32_t trace);
    void RemoveTrace();
    void RegroupTrace();
    void JumpToTrace();
    // menu_trace_extract: the shown trace becomes the result curve.
    void ExtractTrace();
    void RefreshGrid();
    void PrintResults();
    void PreviewResults();
    void PrintPicture();
    // The picture as printed: the group and type line above the display.
    void PaintPicture(QPagedPaintDevice& device);
    void SetPrintHooks(PrintHooks hooks) { print_ = std::move(hooks); }

    const TraceSet& Traces() const { return set_; }
    int32_t CurrentTrace() const { return current_; }
    // A fit job of this window is running.
    bool Fitting() const { return fitting_; }
    GroupAnalysisSettings& Settings() { return settings_; }
    TracePicture* Picture() const { return picture_; }
    QTableView* Grid() const { return grid_; }
    QPlainTextEdit* Report() const { return report_; }
    QLabel* TraceLabel() const { return traceLabel_; }  // Label6
    // The controls by what they are. Their object names, from the written
    // command tables, stay for scripts that find widgets by name.
    QRadioButton* EpisodesOption() const { return episodes_; }     // Option2_0
    QRadioButton* ByGroupOption() const { return byGroup_; }       // Option2_1
    QComboBox* GroupBox() const { return group_; }                 // Combo1
    QComboBox* AnalysisTypeBox() const { return type_; }           // Combo2
    QComboBox* AlignmentBox() const { return alignment_; }         // Combo3
    QComboBox* BlocksBox() const { return blocks_; }               // Combo4
    QComboBox* OffsetBox() const { return offset_; }               // Combo6
    QComboBox* ExponentialsBox() const { return exponentials_; }   // Combo9
    QComboBox* MaxIterationsBox() const { return maxIter_; }       // Combo11
    QComboBox* ElectronsBox() const { return electrons_; }         // Combo15
    QComboBox* WalkEdgeBox() const { return edge_; }               // Combo17
    QCheckBox* FullSweepCheck() const { return fullSweep_; }       // Check10
    QPushButton* StartButton() const { return start_; }            // Command1
    QPushButton* FitButton() const { return fit_; }                // Command2
    QAction* Action(const char* name) const { return actions_.at(name); }
    const std::optional<ResultCurve>& Curve() const { return resultCurve_; }

    // The trace analyses of the Analysis menu (group_window_analyses.cpp):
    // each reads the shown trace between the cursors the user placed, or
    // every trace of a superimposed type as a job, draws what it found and
    // appends its rows.
    void RunAnalysis(TraceAnalysis analysis);
    // Manual detection: each click on the trace appends its time and value;
    // Escape ends it.
    void StartManualDetection();
    void EndManualDetection();
    bool ManualDetection() const { return manual_; }

private:
    void BuildControls();
    void BuildKeys();
    void BuildMenus();
    QAction* AddAction(QMenu* menu, const char* name, const QString& text,
                       std::function<void()> run);
    void ReadControls();
    void WriteControls();
    void UpdateCursorLabel();
    AnalysisType Type() const;
    bool StartFitJob(std::optional<double> compareCriterionPercent);
    void ApplyFits(FitRunResult run);
    void ApplyComparisons(FitRunResult run);
    void OnJobsRunning(bool running);
    const ResultColumn* CurrentColumn() const;
    void PutColumn(int array);
    void ShowColumnStatistics();
    // The trace shown alone: trace 0 for the average types.
    int32_t ShownTrace() const;
    std::string RecordingName() const;
    // Trace or curve data to the clipboard (through a temporary file) or
    // into a text file.
    void TraceDataOut(bool toClipboard);
    void CurveDataOut(bool toClipboard);
    void PlotDataArray(int array);
    void SavePicture();
    void CopyPictureSvg();
    void RunFluctuation();
    void BuildSpecialAnalyses(QMenu* analysis);
    QWidget* BuildAnalysisSettings();
    void ReadAnalysisControls();
    void WriteAnalysisControls();
    QWidget* BuildReleaseSettings();
    void ReadReleaseControls();
    void WriteReleaseControls();
    TraceAnalysisSettings MakeAnalysisSettings() const;
    void ApplyAnalysis(TraceAnalysisRun run);
    void ManualPoint(int32_t point);

    Workspace& ws_;
    WindowDialogs dialogs_;  // its questions open in front of it
    JobRunner& jobs_;
    GroupAnalysisSettings settings_;
    TraceSet set_;
    UnitScale scale_;
    int32_t current_ = 0;
    int displayedGroup_ = 1;
    // The type of the shown traces, as it was at Start Display: what is on
    // screen, whatever the type box says since.
    AnalysisType displayedType_{};
    bool fitting_ = false;
    std::vector<TraceFit> lastFits_;
    std::optional<ResultCurve> resultCurve_;
    std::vector<ResultColumn> gridColumns_;
    std::map<std::string, QAction*> actions_;
    std::unique_ptr<QPrinter> printer_;
    PrintHooks print_;

    QRadioButton *episodes_, *byGroup_;
    QComboBox *group_, *type_, *alignment_, *blocks_, *every_, *gain_, *offset_;
    QComboBox *fitRange_, *exponentials_, *method_, *maxIter_, *rise_, *minRSquared_, *confidence_;
    QComboBox *criterion_, *regroupTarget_, *amplitudeBins_, *averageTraces_;
    QCheckBox *baseline_, *fullSweep_, *timeLock_, *includeOffset_, *fixAmplitude_, *useGuess_;
    QCheckBox *autoReject_, *rejectCi_, *regroupTwo_, *restart_, *subtractBaseVar_, *fluctuationOffset_;
    QComboBox *widthAbove_, *ym_, *yt_, *decayPercent_, *slopeKind_, *fieldKind_, *thresholdRate_, *peakSds_;
    QCheckBox* thresholdBaseline_;
    QComboBox *amperoRise_, *electrons_, *walkType_, *edge_;
    std::array<QLineEdit*, 9> walkFields_{};  // initial values, MaxIter, Tolerance
    bool manual_ = false;
    int manualCount_ = 0;
    double manualTime_ = 0, manualValue_ = 0;
    QPushButton *start_, *fit_;
    QLabel *traceLabel_, *cursorLabel_, *progress_;
    TracePicture* picture_;
    QPlainTextEdit* report_;
    QTableView* grid_;
    ResultsGridModel* gridModel_;
};

}  // namespace vess::group
