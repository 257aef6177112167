// The settings boxes of the transmitter-release analyses of the group
// analysis window: amperometry and the diffusion and uptake model.
#include <QComboBox>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QVBoxLayout>

#include "group_analysis/trace_commands.h"
#include "group_analysis/ui/group_window.h"

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
    settings_.amperometryRise = amperoRise_->currentText().toStdString();
    ReadNumber(electrons_->currentText(), settings_.electrons);
    settings_.walkType = walkType_->currentText().toStdString();
    settings_.walkEdge = edge_->currentText().toStdString();
    double* values[7] = {&settings_.release, &settings_.vmax, &settings_.km, &settings_.deadRadius,
                         &settings_.totalRadius, &settings_.walkBinSize, &settings_.diffusionCoefficient};
    for (int k = 0; k < 7; ++k) ReadNumber(walkFields_[std::size_t(k)]->text(), *values[k]);
    settings_.walkMaxIterations = WholeEntryOr(walkFields_[7]->text().toStdString(), settings_.walkMaxIterations, 1, 1000000);
    settings_.walkTolerance = NumberEntryOr(walkFields_[8]->text().toStdString(), settings_.walkTolerance, 1e-15, 1);
}

void GroupAnalysisWindow::WriteReleaseControls() {
    amperoRise_->setCurrentText(QString::fromStdString(settings_.amperometryRise));
    electrons_->setCurrentText(QString::fromStdString(ShortestText(settings_.electrons)));
    walkType_->setCurrentText(QString::fromStdString(settings_.walkType));
    edge_->setCurrentText(QString::fromStdString(settings_.walkEdge));
    const double values[7] = {settings_.release, settings_.vmax, settings_.km, settings_.deadRadius,
                              settings_.totalRadius, settings_.walkBinSize, settings_.diffusionCoefficient};
    for (int k = 0; k < 6; ++k) walkFields_[std::size_t(k)]->setText(QString::fromStdString(WalkText(values[k])));
    walkFields_[6]->setText(QString::fromStdString(CoefficientText(values[6])));
    walkFields_[7]->setText(QString::number(settings_.walkMaxIterations));
    walkFields_[8]->setText(QString::number(settings_.walkTolerance));
}

}  // namespace vess::group
