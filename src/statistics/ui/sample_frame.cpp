#include "statistics/ui/sample_frame.h"

#include <QComboBox>
#include <QFormLayout>
#include <QLineEdit>
#include <QRadioButton>

#include "statistics/array_entry.h"
#include "statistics/texts.h"
#include "statistics/ui/texts.h"

namespace vess {

using stats_ui_texts::Q;

SampleFrame::SampleFrame(int number, QWidget* parent)
    : QGroupBox(Q(number == 1 ? stats_texts::kSample1Frame : stats_texts::kSample2Frame), parent) {
    const QString n = QString::number(number);
    setObjectName("Sample" + n);
    optArray_ = new QRadioButton(Q(stats_texts::kOptionDataArray), this);
    optArray_->setObjectName("optDataArray" + n);
    optMean_ = new QRadioButton(Q(stats_texts::kOptionMean), this);
    optMean_->setObjectName("optMean" + n);
    array_ = new QComboBox(this);
    array_->setObjectName("cbArray" + n);
    for (std::string_view choice : stats_texts::kChoiceArray) array_->addItem(Q(choice));
    array_->setCurrentIndex(number - 1);
    auto field = [&](const char* name) {
        auto* e = new QLineEdit(this);
        e->setObjectName(QString(name) + n);
        return e;
    };
    mean_ = field("txtMean");
    stdDev_ = field("txtStdDev");
    count_ = field("txtCount");
    auto* form = new QFormLayout(this);
    form->addRow(optArray_, array_);
    form->addRow(optMean_, mean_);
    form->addRow(Q(stats_texts::kOptionStdDev), stdDev_);
    form->addRow(Q(stats_ui_texts::kCount), count_);
    optArray_->setChecked(true);
    connect(optArray_, &QRadioButton::toggled, this, &SampleFrame::UpdateEnabled);
    UpdateEnabled();
}

void SampleFrame::AllowSummary(bool allowed) {
    optMean_->setEnabled(allowed);
    if (!allowed) optArray_->setChecked(true);
    UpdateEnabled();
}

void SampleFrame::UpdateEnabled() {
    const bool summary = optMean_->isChecked();
    array_->setEnabled(!summary);
    for (QLineEdit* e : {mean_, stdDev_, count_}) e->setEnabled(summary);
}

std::optional<TestSample> SampleFrame::Chosen() const {
    TestSample sample;
    sample.fromArray = optArray_->isChecked();
    sample.arrayNumber = array_->currentIndex() + 1;
    if (sample.fromArray) return sample;
    const auto mean = ParseTypedValue(mean_->text().toStdString());
    const auto sd = ParseTypedValue(stdDev_->text().toStdString());
    const auto count = ParseTypedValue(count_->text().toStdString());
    if (!mean || !sd || !count) return std::nullopt;
    sample.mean = *mean;
    sample.stdDev = *sd;
    sample.count = *count;
    return sample;
}

}  // namespace vess
