// One "Sample" frame of the data analysis window: option "Data Array " with
// the choice of array, or option "Mean" with the mean, "Std. Dev" and count
// typed in (t- and F-tests only).
#pragma once

#include <QGroupBox>

#include <optional>

#include "statistics/data_analysis.h"

class QComboBox;
class QLineEdit;
class QRadioButton;

namespace vess {

class SampleFrame : public QGroupBox {
    Q_OBJECT
public:
    // number: 1 or 2 (frame "Sample 1" / "Sample 2", array preset to it).
    SampleFrame(int number, QWidget* parent = nullptr);

    // The summary option is offered only where the test reads summaries.
    void AllowSummary(bool allowed);
    // The sample as chosen; nothing when a summary field is not a number.
    std::optional<TestSample> Chosen() const;

    QRadioButton* ArrayOption() const { return optArray_; }
    QRadioButton* MeanOption() const { return optMean_; }
    QComboBox* ArrayChoice() const { return array_; }
    QLineEdit* MeanField() const { return mean_; }
    QLineEdit* StdDevField() const { return stdDev_; }
    QLineEdit* CountField() const { return count_; }

private:
    void UpdateEnabled();

    QRadioButton* optArray_;
    QRadioButton* optMean_;
    QComboBox* array_;
    QLineEdit* mean_;
    QLineEdit* stdDev_;
    QLineEdit* count_;
};

}  // namespace vess
