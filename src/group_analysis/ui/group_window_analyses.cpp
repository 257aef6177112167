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
#include "group_analysis/field_potential.h"
#include "group_analysis/multipeak.h"
#include "group_analysis/spike_train.h"
#include "group_analysis/texts.h"
#include "group_analysis/ui/group_window.h"
#include "group_analysis/ui/trace_picture.h"
#include "recording/workspace.h"

namespace vess::group {

namespace {
QString Q(std::string_view s) { return QString::fromUtf8(s.data(), qsizetype(s.size())); }
std::string Str(std::string_view s) { return std::string(s); }

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
    settings_.WidthAboveThreshold = widthAbove_->currentText().toStdString();
    settings_.Ym = ym_->currentText().toStdString();
    settings_.Yt = yt_->currentText().toStdString();
    settings_.DecayPercent = decayPercent_->currentText().toStdString();
    settings_.UseThresholdBaseline = thresholdBaseline_->isChecked();
}

void GroupAnalysisWindow::WriteAnalysisControls() {
    widthAbove_->setCurrentText(QString::fromStdString(settings_.WidthAboveThreshold));
    ym_->setCurrentText(QString::fromStdString(settings_.Ym));
    yt_->setCurrentText(QString::fromStdString(settings_.Yt));
    decayPercent_->setCurrentText(QString::fromStdString(settings_.DecayPercent));
    thresholdBaseline_->setChecked(settings_.UseThresholdBaseline);
}

SpikeShapeSettings GroupAnalysisWindow::MakeSpikeSettings() const {
    SpikeShapeSettings s;
    if (const double rate = thresholdRate_->currentText().toDouble(); rate > 0) s.thresholdRate = rate;
    s.widthAboveThreshold = widthAbove_->currentText().toDouble();
    s.useThresholdBaseline = thresholdBaseline_->isChecked();
    SetRiseRange(s, rise_->currentIndex());
    SetDecayPercent(s, decayPercent_->currentText().toStdString());  // the default stays when unreadable
    return s;
}

std::optional<SampledTrace> GroupAnalysisWindow::AnalysedStretch() {
    if (set_.Empty()) return std::nullopt;
    if (const auto problem = SingleTraceProblem(displayedType_)) {
        dialogs_.Message(Str(texts::kWindowCaption), *problem);
        return std::nullopt;
    }
    const bool placed = picture_->CursorsPlaced() && picture_->Cursor(0) != picture_->Cursor(1);
    return TraceStretch(set_, ShownTrace(), placed ? picture_->Cursor(0) : 0,
                        placed ? picture_->Cursor(1) : set_.length - 1, scale_);
}

void GroupAnalysisWindow::AppendMeasureRows(ResultKind kind, const std::vector<std::vector<double>>& rows) {
    for (const auto& values : rows) ws_.results.Append(MeasureRow(kind, ShownTrace(), displayedGroup_, values));
    RefreshGrid();
}

void GroupAnalysisWindow::RunSpikeShape() {
    ReadControls();
    const auto stretch = AnalysedStretch();
    if (!stretch) return;
    const SpikeShape s = MeasureSpike(*stretch, MakeSpikeSettings());
    picture_->SetMarks(SpikeMarkers(s));
    AppendMeasureRows(ResultKind::SpikeShape, {SpikeShapeValues(s)});
}

void GroupAnalysisWindow::RunSpikeTrain() {
    ReadControls();
    const auto stretch = AnalysedStretch();
    if (!stretch) return;
    const SpikeTrainSettings s{.shape = MakeSpikeSettings(), .minHeight = ym_->currentText().toDouble(),
                               .hysteresis = yt_->currentText().toDouble()};
    const SpikeTrain train = MeasureSpikeTrain(*stretch, s);
    picture_->SetMarks(SpikeTrainMarkers(train));
    AppendMeasureRows(ResultKind::SpikeTrain, SpikeTrainRows(train));
    ShowPlot(PhasePlanePlot(*stretch, train, scale_.units));
}

void GroupAnalysisWindow::RunFieldPotential() {
    ReadControls();
    const auto stretch = AnalysedStretch();
    if (!stretch) return;
    FieldSettings s;
    s.synapticCurrents = fieldKind_->currentText() == Q(texts::kSynapticCurrents);
    s.chordSlope = slopeKind_->currentText() == Q(texts::kSlopeChord);
    // A placed first cursor marks the stimulus; otherwise the fastest
    // deflections are taken for the stimuli.
    std::vector<double> stimuli;
    if (picture_->CursorsPlaced()) stimuli.push_back(stretch->startMs);
    const auto responses = MeasureFieldResponses(*stretch, s, stimuli);
    picture_->SetMarks(FieldMarkers(responses));
    std::vector<std::vector<double>> rows;
    for (std::size_t k = 0; k < responses.size(); ++k) rows.push_back(FieldResponseValues(responses[k], int(k + 1)));
    AppendMeasureRows(s.synapticCurrents ? ResultKind::EvokedCurrent : ResultKind::FieldPotential, rows);
}

void GroupAnalysisWindow::RunMultipeak() {
    ReadControls();
    const auto stretch = AnalysedStretch();
    if (!stretch) return;
    MultipeakSettings s;
    if (const double sds = peakSds_->currentText().toDouble(); sds > 0) s.thresholdSds = sds;
    s.direction = ws_.params().PeakDirection < 0 ? -1 : 1;
    const Multipeak m = FindPeaks(*stretch, s);
    picture_->SetMarks(MultipeakMarkers(m));
    AppendMeasureRows(ResultKind::Multipeak, MultipeakRows(m));
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
    AppendMeasureRows(ResultKind::ManualPoint,
                      {{double(manualCount_), time, value, second ? time - manualTime_ : kNotMeasured,
                        second ? value - manualValue_ : kNotMeasured}});
    manualTime_ = time, manualValue_ = value;
    auto marks = picture_->Marks();
    if (marks.empty()) marks.push_back(Markers("Manual", {}, {}, {255, 255, 0}));
    marks[0].x.push_back(time);
    marks[0].y.push_back(value);
    picture_->SetMarks(std::move(marks));
}

void GroupAnalysisWindow::BuildSpecialAnalyses(QMenu* analysis) {
    AddAction(analysis, "menu_APWave1", tr("Action Potential Wave Analysis &1"), [this] { RunSpikeShape(); });
    AddAction(analysis, "menu_APWave2", tr("Action Potential Wave Analysis &2 (Trains, Phase Plane)"),
              [this] { RunSpikeTrain(); });
    AddAction(analysis, "menu_fEPSP", tr("Population Spike / f&EPSP Analysis"), [this] { RunFieldPotential(); });
    AddAction(analysis, "menu_Multipeak", tr("&Multipeak Analysis"), [this] { RunMultipeak(); });
    AddAction(analysis, "menu_ManualDetection", tr("Manual &Detection"), [this] { StartManualDetection(); });
    AddAction(analysis, "menu_Ampero", tr("&Amperometric Peak Analysis"), [this] { RunAmperometric(); });
    AddAction(analysis, "menu_RandomWalk", tr("&Random-walk Diffusion Fitting"), [this] { RunDiffusionFit(); });
    AddAction(analysis, "menu_ECG", tr("&ECG Analysis"), [this] { RunEcg(); });
    QAction* end = AddAction(analysis, "key_end_manual", tr("End Manual Detection"), [this] { EndManualDetection(); });
    end->setShortcut(QKeySequence(Qt::Key_Escape));
    end->setShortcutContext(Qt::WindowShortcut);
    end->setEnabled(false);
    connect(picture_, &TracePicture::PointPicked, this, &GroupAnalysisWindow::ManualPoint);
}

}  // namespace vess::group
