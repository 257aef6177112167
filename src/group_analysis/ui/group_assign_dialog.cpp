#include "group_analysis/ui/group_assign_dialog.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QLabel>
#include <QPushButton>
#include <QSpinBox>
#include <QStackedWidget>
#include <QVBoxLayout>

#include "recording/workspace.h"

namespace vess::group {

namespace {

QSpinBox* Spin(int lo, int hi, int value) {
    auto* s = new QSpinBox;
    s->setRange(lo, hi);
    s->setValue(value);
    return s;
}

// Where the sweeps of the open recording start; none without a recording.
std::vector<int64_t> SweepStarts(const Workspace& ws) {
    return ws.recording ? ws.recording->SweepStarts() : std::vector<int64_t>{};
}

}  // namespace

std::string_view GroupAssignModeName(GroupAssignMode mode) {
    switch (mode) {
        case GroupAssignMode::Bursts: return "Group Bursts";
        case GroupAssignMode::Episodic: return "Group by Episodes";
        case GroupAssignMode::Random: break;
    }
    return "Group at Random";
}

GroupAssignDialog::GroupAssignDialog(Workspace& ws, GroupAssignMode mode, QWidget* parent)
    : QDialog(parent), ws_(ws) {
    setObjectName("GroupAssign");
    setWindowTitle(tr("Assign Groups"));
    mode_ = new QComboBox;
    for (auto m : {GroupAssignMode::Bursts, GroupAssignMode::Episodic, GroupAssignMode::Random})
        mode_->addItem(QString::fromUtf8(GroupAssignModeName(m).data()));
    pages_ = new QStackedWidget;

    auto* bursts = new QWidget;
    auto* bf = new QFormLayout(bursts);
    maxInterval_ = new QDoubleSpinBox;
    maxInterval_->setRange(0.001, 1e7);
    maxInterval_->setValue(100);
    minEvents_ = Spin(1, 100000, 3);
    burstGroup_ = Spin(1, 254, 1);
    firstOnly_ = new QCheckBox(tr("Only the first event of each burst"));
    maxInterval_->setObjectName("BurstMaxInterval");
    minEvents_->setObjectName("BurstMinEvents");
    burstGroup_->setObjectName("BurstGroup");
    firstOnly_->setObjectName("BurstFirstOnly");
    bf->addRow(tr("Maximum interval (ms)"), maxInterval_);
    bf->addRow(tr("Minimum events in a burst"), minEvents_);
    bf->addRow(tr("Group #"), burstGroup_);
    bf->addRow(firstOnly_);

    auto* episodes = new QWidget;
    auto* ef = new QFormLayout(episodes);
    bySweep_ = new QCheckBox(tr("By sweep"));
    bySweep_->setChecked(SweepStarts(ws_).size() > 1);
    window_ = new QDoubleSpinBox;
    window_->setRange(0.001, 1e9);
    window_->setValue(1000);
    firstGroup_ = Spin(1, 254, 1);
    bySweep_->setObjectName("EpisodeBySweep");
    window_->setObjectName("EpisodeWindow");
    firstGroup_->setObjectName("EpisodeFirstGroup");
    ef->addRow(bySweep_);
    ef->addRow(tr("Time window (ms)"), window_);
    ef->addRow(tr("First group #"), firstGroup_);

    auto* random = new QWidget;
    auto* rf = new QFormLayout(random);
    randomGroups_ = Spin(1, 254, 2);
    randomFirst_ = Spin(1, 254, 1);
    seed_ = Spin(0, 2147483647, 1);
    source_ = Spin(-1, kLastGroup, -1);
    source_->setSpecialValueText(tr("All events"));
    rf->addRow(tr("Number of groups"), randomGroups_);
    rf->addRow(tr("First group #"), randomFirst_);
    rf->addRow(tr("Seed"), seed_);
    rf->addRow(tr("Events of group"), source_);

    pages_->addWidget(bursts);
    pages_->addWidget(episodes);
    pages_->addWidget(random);
    preview_ = new QLabel;
    preview_->setObjectName("Preview");
    auto* box = new QDialogButtonBox(QDialogButtonBox::Apply | QDialogButtonBox::Close);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(mode_);
    layout->addWidget(pages_);
    layout->addWidget(new QLabel(tr("Preview:")));
    layout->addWidget(preview_);
    layout->addWidget(box);

    connect(mode_, &QComboBox::currentIndexChanged, this, [this](int i) {
        pages_->setCurrentIndex(i);
        UpdatePreview();
    });
    for (QSpinBox* s : {minEvents_, burstGroup_, firstGroup_, randomGroups_, randomFirst_, seed_, source_})
        connect(s, &QSpinBox::valueChanged, this, &GroupAssignDialog::UpdatePreview);
    for (QDoubleSpinBox* s : {maxInterval_, window_})
        connect(s, &QDoubleSpinBox::valueChanged, this, &GroupAssignDialog::UpdatePreview);
    for (QCheckBox* c : {firstOnly_, bySweep_})
        connect(c, &QCheckBox::toggled, this, &GroupAssignDialog::UpdatePreview);
    connect(box->button(QDialogButtonBox::Apply), &QPushButton::clicked, this, &GroupAssignDialog::Apply);
    connect(box, &QDialogButtonBox::rejected, this, &QDialog::reject);
    SetMode(mode);
}

void GroupAssignDialog::SetMode(GroupAssignMode mode) {
    mode_->setCurrentIndex(int(mode));
    pages_->setCurrentIndex(int(mode));
    UpdatePreview();
}

GroupPlan GroupAssignDialog::Plan() const {
    switch (GroupAssignMode(mode_->currentIndex())) {
        case GroupAssignMode::Bursts:
            return PlanBursts(ws_.events, {maxInterval_->value(), minEvents_->value(),
                                           firstOnly_->isChecked(), burstGroup_->value()});
        case GroupAssignMode::Episodic:
            return PlanEpisodic(ws_.events, {bySweep_->isChecked(), SweepStarts(ws_), window_->value(),
                                             firstGroup_->value()});
        case GroupAssignMode::Random: break;
    }
    return PlanRandom(ws_.events, {randomGroups_->value(), randomFirst_->value(),
                                   uint32_t(seed_->value()), source_->value()});
}

void GroupAssignDialog::UpdatePreview() {
    preview_->setText(QString::fromStdString(PreviewText(Plan())));
}

void GroupAssignDialog::Apply() {
    ApplyGroupPlan(ws_, Plan());
    UpdatePreview();
}

}  // namespace vess::group
