// The trace analyses of the group analysis window: action potential shape
// and trains with the phase plane, field potentials, multiple peaks and
// manual detection. Each takes the shown trace (between the cursors once
// the user has placed them), draws what it found and appends its rows.
#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QMenu>

#include "graphs/ui/graph_frame.h"
#include "group_analysis/texts.h"
#include "group_analysis/trace_commands.h"
#include "hrv/rr_intervals.h"
#include "app/job_runner.h"
#include "group_analysis/ui/group_window.h"
#include "group_analysis/ui/trace_picture.h"
#include "recording/workspace.h"

namespace vess::group {

namespace {
QString Q(std::string_view s) { return QString::fromUtf8(s.data(), qsizetype(s.size())); }
std::string Str(std::string_view s) { return std::string(s); }
std::string Entry(const QComboBox* c) { return c->currentText().toStdString(); }

QComboBox* Combo(const char* name, const QStringList& items) {
    auto* c = new QComboBox;
    c->setObjectName(name);
    c->addItems(items);
    c->setEditable(true);
    return c;
}
}  // namespace

QWidget* GroupAnalysisWindow::BuildAnalysisSettings() {
    widthAbove_ = Combo("Combo14", {"0", "10", "20", "30", "40"});
    ym_ = Combo("Combo19", {"2", "5", "10", "20"});
    yt_ = Combo("Combo20", {"1", "2", "5", "10"});
    decayPercent_ = Combo("Combo12", {"90-37%", "90-10%", "80-20%"});
    slopeKind_ = Combo("Combo27", {Q(texts::kSlopeFitted), Q(texts::kSlopeChord)});
    slopeKind_->setEditable(false);
    fieldKind_ = Combo("Combo21", {Q(texts::kFieldPotentials), Q(texts::kSynapticCurrents)});
    fieldKind_->setEditable(false);
    fieldKind_->setCurrentText(Q(texts::kSynapticCurrents));
    thresholdRate_ = Combo("cbThresholdRate", {"10", "20", "30", "50"});
    thresholdRate_->setCurrentText("20");
    peakSds_ = Combo("cbPeakSds", {"3", "4", "5", "8", "10"});
    peakSds_->setCurrentText("5");
    thresholdBaseline_ = new QCheckBox(tr("AHP from threshold (else from baseline)"));
    thresholdBaseline_->setObjectName("Check2");
    auto* box = new QGroupBox(tr("Action Potentials, Field Potentials, Peaks"));
    auto* f = new QFormLayout(box);
    f->addRow(tr("Threshold dV/dt (mV/ms)"), thresholdRate_);
    f->addRow(tr("Width above threshold (mV)"), widthAbove_);
    f->addRow(tr("Decay"), decayPercent_);
    f->addRow(thresholdBaseline_);
    f->addRow(tr("Ym level (mV)"), ym_);
    f->addRow(tr("Yt level (mV)"), yt_);
    f->addRow(tr("Slope"), slopeKind_);
    f->addRow(tr("Response"), fieldKind_);
    f->addRow(tr("Peaks above (noise SDs)"), peakSds_);
    return box;
}

void GroupAnalysisWindow::ReadAnalysisControls() {
    ReadNumber(widthAbove_->currentText(), settings_.widthAboveThreshold);
    ReadNumber(ym_->currentText(), settings_.ym);
    ReadNumber(yt_->currentText(), settings_.yt);
    settings_.decayRange = decayPercent_->currentText().toStdString();
    settings_.useThresholdBaseline = thresholdBaseline_->isChecked();
}

void GroupAnalysisWindow::WriteAnalysisControls() {
    widthAbove_->setCurrentText(QString::fromStdString(ShortestText(settings_.widthAboveThreshold)));
    ym_->setCurrentText(QString::fromStdString(ShortestText(settings_.ym)));
    yt_->setCurrentText(QString::fromStdString(ShortestText(settings_.yt)));
    decayPercent_->setCurrentText(QString::fromStdString(settings_.decayRange));
    thresholdBaseline_->setChecked(settings_.useThresholdBaseline);
}

TraceAnalysisSettings GroupAnalysisWindow::MakeAnalysisSettings() const {
    TraceAnalysisSettings s;
    ApplyStoredSettings(s, settings_);
    SpikeShapeSettings& shape = s.train.shape;
    shape.thresholdRate = NumberEntryOr(Entry(thresholdRate_), shape.thresholdRate, 1e-9, 1e300);
    s.field.synapticCurrents = fieldKind_->currentText() == Q(texts::kSynapticCurrents);
    s.field.chordSlope = slopeKind_->currentText() == Q(texts::kSlopeChord);
    // A placed first cursor marks the stimulus; otherwise the fastest
    // deflections are taken for the stimuli.
    s.stimulusAtStart = picture_->CursorsPlaced();
    s.peaks.thresholdSds = NumberEntryOr(Entry(peakSds_), s.peaks.thresholdSds, 1e-9, 1e300);
    s.peaks.direction = ws_.params().PeakDirection < 0 ? -1 : 1;
    s.ecg.rrMs = MeanRrForQtc(hrv::AllIntervals(hrv::WorkspaceBeatTimesMs(ws_)).rrMs);
    return s;
}

// One trace at once; every trace of a superimposed type, and any diffusion
// fit, as a job whose rows arrive when it ends.
void GroupAnalysisWindow::RunAnalysis(TraceAnalysis analysis) {
    ReadControls();
    if (set_.Empty() || jobs_.Running()) return;
    const bool placed = picture_->CursorsPlaced() && picture_->Cursor(0) != picture_->Cursor(1);
    TraceAnalysisInput in{.analysis = analysis, .set = set_, .scale = scale_,
                          .traces = TracesToFit(set_, displayedType_, current_),
                          .from = placed ? picture_->Cursor(0) : 0,
                          .to = placed ? picture_->Cursor(1) : set_.length - 1,
                          .group = displayedGroup_, .settings = MakeAnalysisSettings()};
    if (!RunsAsJob(analysis, in.traces.size())) {
        ApplyAnalysis(RunTraceAnalyses(in, {}));
        return;
    }
    const QString title = Action(kAnalysisActions[int(analysis)])->text().remove('&');
    jobs_.Start(MakeJob(
                    title.toStdString(),
                    [in = std::move(in)](const JobProgress& progress) { return RunTraceAnalyses(in, progress); },
                    [this](TraceAnalysisRun run) { ApplyAnalysis(std::move(run)); }),
                this);
}

void GroupAnalysisWindow::ApplyAnalysis(TraceAnalysisRun run) {
    AppendTraceAnalysisRows(ws_.results, run, displayedGroup_);
    picture_->SetMarks(JoinedMarks(run));
    RefreshGrid();
    if (run.outcomes.size() == 1 && run.outcomes[0].plot) ShowPlot(this, *run.outcomes[0].plot);
}

void GroupAnalysisWindow::StartManualDetection() {
    if (set_.Empty()) return;
    if (!IsIndividualType(displayedType_)) {
        dialogs_.Message(Str(texts::kTryAgainCaption), Str(texts::kManualOnlyIndividual));
        return;
    }
    manual_ = true;
    manualCount_ = 0;
    picture_->SetMarks({});
    picture_->SetManualMode(true);
    Action("key_end_manual")->setEnabled(true);
}

void GroupAnalysisWindow::EndManualDetection() {
    manual_ = false;
    picture_->SetManualMode(false);
    Action("key_end_manual")->setEnabled(false);
}

void GroupAnalysisWindow::ManualPoint(int32_t point) {
    if (!manual_) return;
    const double time = set_.TimeMs(point), value = picture_->ValueAt(point);
    const bool second = manualCount_ > 0;
    ++manualCount_;
    const std::vector<std::vector<double>> row{{double(manualCount_), time, value,
                                                second ? time - manualTime_ : kNotMeasured,
                                                second ? value - manualValue_ : kNotMeasured}};
    AppendMeasureRows(ws_.results, ResultKind::ManualPoint, current_, displayedGroup_, row);
    RefreshGrid();
    manualTime_ = time, manualValue_ = value;
    auto marks = picture_->Marks();
    if (marks.empty()) marks.push_back(Markers("Manual", {}, {}, {255, 255, 0}));
    marks[0].x.push_back(time);
    marks[0].y.push_back(value);
    picture_->SetMarks(std::move(marks));
}

void GroupAnalysisWindow::BuildSpecialAnalyses(QMenu* analysis) {
    const char* captions[kTraceAnalysisCount] = {
        "Action Potential Wave Analysis &1", "Action Potential Wave Analysis &2 (Trains, Phase Plane)",
        "Population Spike / f&EPSP Analysis", "&Multipeak Analysis", "&Amperometric Peak Analysis",
        "&Random-walk Diffusion Fitting", "&ECG Analysis"};
    for (int k = 0; k < kTraceAnalysisCount; ++k)
        AddAction(analysis, kAnalysisActions[k], tr(captions[k]), [this, k] { RunAnalysis(TraceAnalysis(k)); });
    AddAction(analysis, "menu_ManualDetection", tr("Manual &Detection"), [this] { StartManualDetection(); });
    QAction* end = AddAction(analysis, "key_end_manual", tr("End Manual Detection"), [this] { EndManualDetection(); });
    end->setShortcut(QKeySequence(Qt::Key_Escape));
    end->setShortcutContext(Qt::WindowShortcut);
    end->setEnabled(false);
    connect(picture_, &TracePicture::PointPicked, this, &GroupAnalysisWindow::ManualPoint);
}

}  // namespace vess::group
