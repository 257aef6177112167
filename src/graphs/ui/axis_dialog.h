// The small dialog that edits a plot's title, axis texts and axis ranges.
// OK stays disabled while a range is not lower < upper.
#pragma once

#include <QDialog>

#include "graphs/plot.h"

class QDialogButtonBox;
class QDoubleSpinBox;
class QLineEdit;

namespace vess {

class PlotWidget;

class AxisDialog : public QDialog {
    Q_OBJECT
public:
    explicit AxisDialog(PlotWidget& plot, QWidget* parent = nullptr);

    // Applies the fields to the plot (what OK does).
    void Apply();

private:
    void Check();

    PlotWidget& plot_;
    QLineEdit* title_;
    QLineEdit* xLabel_;
    QLineEdit* yLabel_;
    QDoubleSpinBox* xMin_;
    QDoubleSpinBox* xMax_;
    QDoubleSpinBox* yMin_;
    QDoubleSpinBox* yMax_;
    QDialogButtonBox* buttons_;
};

}  // namespace vess
