// The digital filter form: kind, pass, cut-off, order, ripple, attenuation
// and zero phase, with buttons that ask for the frequency response, for
// applying the filter and for removing it. The form only reads and shows a
// FilterChoice; the main window does the work.
#pragma once

#include <QDialog>

#include "signal/filter_design.h"

class QCheckBox;
class QComboBox;
class QDoubleSpinBox;
class QLabel;
class QLineEdit;
class QSpinBox;

namespace vess {

class FilterDialog : public QDialog {
    Q_OBJECT
public:
    FilterDialog(const FilterChoice& choice, double sampleRateHz, QWidget* parent = nullptr);
    // What the form says now; a cut-off that is not a number gives NaN.
    FilterChoice Chosen() const;
    void SetChoice(const FilterChoice& choice);

signals:
    void ResponseRequested(const FilterChoice& choice);
    void ApplyRequested(const FilterChoice& choice);
    void RemoveRequested();

private:
    void UpdateEnabled();
    QComboBox* kind_ = nullptr;
    QComboBox* pass_ = nullptr;
    QLineEdit* cutoff_ = nullptr;
    QSpinBox* order_ = nullptr;
    QDoubleSpinBox* ripple_ = nullptr;
    QDoubleSpinBox* attenuation_ = nullptr;
    QCheckBox* zeroPhase_ = nullptr;
};

}  // namespace vess
