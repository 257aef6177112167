// The transmitter-release analyses of the group analysis window: one
// amperometric spike's measures. Like the other trace analyses they take
// the shown trace between the cursors, draw what they found and append a
// row.
#include <QComboBox>
#include <QFormLayout>
#include <QGroupBox>

#include "group_analysis/amperometry.h"
#include "group_analysis/ui/group_window.h"
#include "group_analysis/ui/trace_picture.h"

namespace vess::group {

namespace {
QComboBox* Combo(const char* name, const QStringList& items, bool editable) {
    auto* c = new QComboBox;
    c->setObjectName(name);
    c->addItems(items);
    c->setEditable(editable);
    return c;
}
}  // namespace

QWidget* GroupAnalysisWindow::BuildReleaseSettings() {
    amperoRise_ = Combo("Combo13", {"50-90% Rise", "25-75% Rise", "10-90% Rise"}, false);
    electrons_ = Combo("Combo15", {"1", "2", "4"}, true);
    auto* box = new QGroupBox(tr("Amperometry"));
    auto* f = new QFormLayout(box);
    f->addRow(tr("Rise"), amperoRise_);
    f->addRow(tr("Electrons per molecule"), electrons_);
    return box;
}

void GroupAnalysisWindow::ReadReleaseControls() {
    settings_.AmperoRise = amperoRise_->currentText().toStdString();
    settings_.Electrons = electrons_->currentText().toStdString();
}

void GroupAnalysisWindow::WriteReleaseControls() {
    amperoRise_->setCurrentText(QString::fromStdString(settings_.AmperoRise));
    electrons_->setCurrentText(QString::fromStdString(settings_.Electrons));
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
