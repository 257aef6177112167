// The transmitter-release and heart analyses of the group analysis window:
// one amperometric spike's measures, the fit of the diffusion and uptake
// model, and the delineation of an ECG beat. Like the other trace analyses they take
// the shown trace between the cursors, draw what they found and append a
// row.
#include <algorithm>

#include <QComboBox>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QVBoxLayout>

#include "group_analysis/amperometry.h"
#include "group_analysis/ecg_delineation.h"
#include "group_analysis/radial_diffusion.h"
#include "group_analysis/ui/group_window.h"
#include "group_analysis/ui/trace_picture.h"
#include "hrv/rr_intervals.h"

namespace vess::group {

namespace {
QComboBox* Combo(const char* name, const QStringList& items, bool editable) {
    auto* c = new QComboBox;
    c->setObjectName(name);
    c->addItems(items);
    c->setEditable(editable);
    return c;
}
// The diffusion fields in the order of the settings they show.
constexpr const char* kWalkLabels[9] = {"Release (µM)", "Vmax (µM/s)", "Km (µM)", "Dead radius (µm)",
                                        "Total radius (µm)", "Bin size (µm)", "D (cm²/s)", "Max iterations",
                                        "Tolerance"};
constexpr const char* kWalkNames[9] = {"txtRelease", "txtVmax", "txtKm", "txtDeadRadius", "txtTotalRadius",
                                       "txtBinSize", "txtDiffusionCoeff", "Text2", "Text3"};

double Number(const QLineEdit* e, double fallback) {
    bool ok = false;
    const double v = e->text().toDouble(&ok);
    return ok && v > 0 ? v : fallback;
}
}  // namespace

QWidget* GroupAnalysisWindow::BuildReleaseSettings() {
    amperoRise_ = Combo("Combo13", {"50-90% Rise", "25-75% Rise", "10-90% Rise"}, false);
    electrons_ = Combo("Combo15", {"1", "2", "4"}, true);
    auto* ampero = new QGroupBox(tr("Amperometry"));
    auto* f = new QFormLayout(ampero);
    f->addRow(tr("Rise"), amperoRise_);
    f->addRow(tr("Electrons per molecule"), electrons_);

    walkType_ = Combo("Combo16", {"Amperometry in Slice"}, false);
    edge_ = Combo("Combo17", {"Diffusing", "Reflecting"}, false);
    auto* walk = new QGroupBox(tr("Random-walk Diffusion"));
    auto* g = new QGridLayout(walk);
    g->addWidget(new QLabel(tr("Type")), 0, 0);
    g->addWidget(walkType_, 0, 1);
    g->addWidget(new QLabel(tr("Edge")), 0, 2);
    g->addWidget(edge_, 0, 3);
    for (int k = 0; k < 9; ++k) {
        walkFields_[std::size_t(k)] = new QLineEdit;
        walkFields_[std::size_t(k)]->setObjectName(kWalkNames[k]);
        g->addWidget(new QLabel(tr(kWalkLabels[k])), 1 + k / 2, 2 * (k % 2));
        g->addWidget(walkFields_[std::size_t(k)], 1 + k / 2, 2 * (k % 2) + 1);
    }
    auto* both = new QWidget;
    auto* v = new QVBoxLayout(both);
    v->setContentsMargins(0, 0, 0, 0);
    v->addWidget(ampero);
    v->addWidget(walk);
    return both;
}

void GroupAnalysisWindow::ReadReleaseControls() {
    settings_.AmperoRise = amperoRise_->currentText().toStdString();
    settings_.Electrons = electrons_->currentText().toStdString();
    settings_.WalkType = walkType_->currentText().toStdString();
    settings_.Edge = edge_->currentText().toStdString();
    std::string* texts[7] = {&settings_.Release, &settings_.Vmax, &settings_.Km, &settings_.DeadRadius,
                             &settings_.TotalRadius, &settings_.BinSize, &settings_.DiffusionCoeff};
    for (int k = 0; k < 7; ++k) *texts[k] = walkFields_[std::size_t(k)]->text().toStdString();
    settings_.WalkMaxIter = int(Number(walkFields_[7], settings_.WalkMaxIter));
    settings_.WalkTolerance = Number(walkFields_[8], settings_.WalkTolerance);
}

void GroupAnalysisWindow::WriteReleaseControls() {
    amperoRise_->setCurrentText(QString::fromStdString(settings_.AmperoRise));
    electrons_->setCurrentText(QString::fromStdString(settings_.Electrons));
    walkType_->setCurrentText(QString::fromStdString(settings_.WalkType));
    edge_->setCurrentText(QString::fromStdString(settings_.Edge));
    const std::string* texts[7] = {&settings_.Release, &settings_.Vmax, &settings_.Km, &settings_.DeadRadius,
                                   &settings_.TotalRadius, &settings_.BinSize, &settings_.DiffusionCoeff};
    for (int k = 0; k < 7; ++k) walkFields_[std::size_t(k)]->setText(QString::fromStdString(*texts[k]));
    walkFields_[7]->setText(QString::number(settings_.WalkMaxIter));
    walkFields_[8]->setText(QString::number(settings_.WalkTolerance));
}

void GroupAnalysisWindow::RunAmperometric() {
    ReadControls();
    const auto stretch = AnalysedStretch();
    if (!stretch) return;
    AmperoSettings s;
    SetAmperoRise(s, settings_.AmperoRise);
    SetAmperoDecay(s, settings_.DecayPercent);  // the default stays when unreadable
    if (const double n = electrons_->currentText().toDouble(); n > 0) s.electrons = n;
    const AmperoSpike spike = MeasureAmperoSpike(*stretch, s);
    picture_->SetMarks(AmperoMarkers(spike));
    AppendMeasureRows(ResultKind::Amperometric, {AmperoValues(spike)});
}

}  // namespace vess::group

namespace vess::group {

void GroupAnalysisWindow::RunDiffusionFit() {
    ReadControls();
    const auto stretch = AnalysedStretch();
    if (!stretch) return;
    WalkModel m;
    double* values[7] = {&m.release, &m.vmax, &m.km, &m.deadRadius, &m.totalRadius, &m.binSize, &m.diffusion};
    for (int k = 0; k < 7; ++k) *values[k] = Number(walkFields_[std::size_t(k)], *values[k]);
    if (walkFields_[3]->text().toDouble() == 0) m.deadRadius = 0;
    m.diffusingEdge = settings_.Edge != "Reflecting";
    const WalkFit fit = FitWalk(*stretch, m, {settings_.WalkMaxIter, settings_.WalkTolerance});
    picture_->SetMarks(WalkFitMarkers(*stretch, fit));
    AppendMeasureRows(ResultKind::Diffusion, {WalkFitValues(fit)});
}

// QTc takes the mean RR interval of the recording's events (one event per
// beat); with fewer than two events, or events out of time order, it is not
// measured.
void GroupAnalysisWindow::RunEcg() {
    ReadControls();
    const auto stretch = AnalysedStretch();
    if (!stretch) return;
    EcgSettings s;
    const auto beats = hrv::AllIntervals(hrv::WorkspaceBeatTimesMs(ws_));
    const bool inOrder = std::ranges::all_of(beats.rrMs, [](double rr) { return rr > 0; });
    if (!beats.rrMs.empty() && inOrder) s.rrMs = Mean(beats.rrMs, 0, beats.rrMs.size());
    const EcgBeat beat = DelineateBeat(*stretch, s);
    picture_->SetMarks(EcgMarkers(*stretch, beat));
    AppendMeasureRows(ResultKind::Ecg, {EcgValues(beat)});
}

}  // namespace vess::group
