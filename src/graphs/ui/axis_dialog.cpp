#include "graphs/ui/axis_dialog.h"

#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QLineEdit>
#include <QPushButton>

#include <limits>

#include "graphs/ui/plot_widget.h"

namespace vess {

namespace {

QDoubleSpinBox* RangeBox(const char* name, double value, QWidget* parent) {
    auto* box = new QDoubleSpinBox(parent);
    box->setObjectName(name);
    box->setDecimals(6);
    box->setRange(-std::numeric_limits<double>::max(), std::numeric_limits<double>::max());
    box->setValue(value);
    return box;
}

QLineEdit* TextBox(const char* name, const std::string& text, QWidget* parent) {
    auto* edit = new QLineEdit(QString::fromStdString(text), parent);
    edit->setObjectName(name);
    return edit;
}

}  // namespace

AxisDialog::AxisDialog(PlotWidget& plot, QWidget* parent) : QDialog(parent), plot_(plot) {
    setObjectName("AxisDialog");
    setWindowTitle(tr("Axes and Titles"));
    const PlotData& p = plot.Description();
    const PlotRanges r = plot.Ranges();
    title_ = TextBox("edTitle", p.title, this);
    xLabel_ = TextBox("edXLabel", p.xAxis, this);
    yLabel_ = TextBox("edYLabel", p.yAxis, this);
    xMin_ = RangeBox("edXMin", r.x.lower, this);
    xMax_ = RangeBox("edXMax", r.x.upper, this);
    yMin_ = RangeBox("edYMin", r.y.lower, this);
    yMax_ = RangeBox("edYMax", r.y.upper, this);
    buttons_ = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    auto* form = new QFormLayout(this);
    form->addRow(tr("Title"), title_);
    form->addRow(tr("X axis text"), xLabel_);
    form->addRow(tr("X from"), xMin_);
    form->addRow(tr("X to"), xMax_);
    form->addRow(tr("Y axis text"), yLabel_);
    form->addRow(tr("Y from"), yMin_);
    form->addRow(tr("Y to"), yMax_);
    form->addRow(buttons_);
    for (QDoubleSpinBox* box : {xMin_, xMax_, yMin_, yMax_})
        connect(box, &QDoubleSpinBox::valueChanged, this, &AxisDialog::Check);
    connect(buttons_, &QDialogButtonBox::accepted, this, [this] {
        Apply();
        accept();
    });
    connect(buttons_, &QDialogButtonBox::rejected, this, &QDialog::reject);
}

void AxisDialog::Check() {
    const bool ok = xMin_->value() < xMax_->value() && yMin_->value() < yMax_->value();
    buttons_->button(QDialogButtonBox::Ok)->setEnabled(ok);
}

void AxisDialog::Apply() {
    if (!buttons_->button(QDialogButtonBox::Ok)->isEnabled()) return;
    plot_.SetTexts(title_->text().toStdString(), xLabel_->text().toStdString(),
                   yLabel_->text().toStdString());
    plot_.SetRanges({{xMin_->value(), xMax_->value()}, {yMin_->value(), yMax_->value()}});
}

}  // namespace vess
