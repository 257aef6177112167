// Start Fitting and Compare Fits of the group analysis window: each runs as
// a job over a copy of the shown set, the running search shown by the job
// runner, and its fits go into the results, the report and the picture when
// it ends. Start Display and the trace edits wait for it.
#include <QComboBox>
#include <QCheckBox>
#include <QPlainTextEdit>
#include <QPushButton>

#include "app/job_runner.h"
#include "group_analysis/fit_review.h"
#include "group_analysis/fit_run.h"
#include "group_analysis/results_commands.h"
#include "group_analysis/texts.h"
#include "group_analysis/trace_commands.h"
#include "group_analysis/ui/group_window.h"
#include "group_analysis/ui/trace_picture.h"
#include "recording/workspace.h"

namespace vess::group {

namespace {
QString Q(std::string_view s) { return QString::fromUtf8(s.data(), qsizetype(s.size())); }
}  // namespace

bool GroupAnalysisWindow::StartFitJob(std::optional<double> compareCriterionPercent) {
    if (set_.Empty() || jobs_.Running()) return false;
    FitRunInput input{.set = set_,
                      .traces = TracesToFit(set_, displayedType_, current_),
                      .peakDirection = ws_.params().PeakDirection,
                      .group = displayedGroup_,
                      .scale = scale_,
                      .settings = FitSettingsFrom(settings_, picture_->Cursor(0), picture_->Cursor(1)),
                      .compareCriterionPercent = compareCriterionPercent};
    const bool compare = compareCriterionPercent.has_value();
    Job job = MakeJob(
        std::string(compare ? texts::kCompareFitsCaption : texts::kStartFitting),
        [in = std::move(input)](const JobProgress& progress) { return RunFits(in, progress); },
        [this, compare](FitRunResult run) {
            if (compare) ApplyComparisons(std::move(run));
            else ApplyFits(std::move(run));
        });
    fitting_ = true;  // before the runner says a job runs: the button stays live to stop it
    if (!jobs_.Start(std::move(job), this)) {
        fitting_ = false;
        return false;
    }
    fit_->setText(Q(texts::kInterruptFitting));
    return true;
}

void GroupAnalysisWindow::StartFitting() {
    ReadControls();
    StartFitJob(std::nullopt);
}

void GroupAnalysisWindow::StartCompareFits() {
    ReadControls();
    if (set_.Empty() || jobs_.Running()) return;
    dialogs_.Message(std::string(texts::kCompareFitsCaption), std::string(texts::kCompareFitsText));
    StartFitJob(NumberEntryOr(criterion_->currentText().toStdString(), 1.0, 0, 100));
}

void GroupAnalysisWindow::ApplyFits(FitRunResult run) {
    AppendFitRows(ws_.results, run);
    for (const TraceFit& fit : run.fits) picture_->SetCurve(fit.from, fit.curve);
    report_->setPlainText(QString::fromStdString(run.report));
    lastFits_ = std::move(run.fits);
    if (!lastFits_.empty()) {
        const TraceFit& last = lastFits_.back();
        resultCurve_ = FittedCurve(set_, last.from, last.curve, CurveFitHeader(displayedGroup_, last.trace));
    }
    RefreshGrid();
    const std::string minRSquared = minRSquared_->currentText().toStdString();
    const std::string confidence = confidence_->currentText().toStdString();
    AutoRejectAfterFits(ws_, set_, displayedType_, lastFits_,
                        {autoReject_->isChecked(), minRSquared, rejectCi_->isChecked(), confidence}, dialogs_);
}

void GroupAnalysisWindow::ApplyComparisons(FitRunResult run) {
    AppendFitRows(ws_.results, run);
    RefreshGrid();
    const int target = WholeEntryOr(regroupTarget_->currentText().toStdString(), -1, 0, 255);
    if (regroupTwo_->isChecked() && target >= 0)
        RegroupTwoExponentialCommand(ws_, set_, run.twoWon, target, dialogs_);
}

void GroupAnalysisWindow::StartLoadingResults() {
    if (jobs_.Running()) return;
    const auto name = ChooseResultsFile(dialogs_);
    if (!name) return;
    jobs_.Start(MakeJob(
                    std::string(texts::kResultsFileFilter),
                    [name = *name](const JobProgress&) { return ReadResultsFile(name); },
                    [this, name = *name](std::optional<std::vector<ResultBytes>> rows) {
                        ShowFailure(dialogs_, PlaceLoadedResults(ws_.results, dialogs_, name, std::move(rows)));
                        RefreshGrid();
                    }),
                this);
}

void GroupAnalysisWindow::OnJobsRunning(bool running) {
    if (!running && fitting_) {
        fitting_ = false;
        fit_->setText(Q(texts::kStartFitting));
    }
    // What would change the set or the events under a job waits for it.
    start_->setEnabled(!running);
    for (const char* name : {"menu_DisplayTrace", "menu_trace_remove", "menu_trace_regroup", "menu_StartFitting",
                             "menu_CompareFits", "menu_LoadResults", "menu_NonStationary", "menu_ManualDetection"})
        Action(name)->setEnabled(!running);
    for (const char* name : kAnalysisActions) Action(name)->setEnabled(!running);
    fit_->setEnabled(!running || fitting_);
}

}  // namespace vess::group
