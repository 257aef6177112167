#include "signal/ui/filter_dialog.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QVBoxLayout>
#include <limits>

#include "signal/filter_texts.h"

namespace vess {

namespace {

template <typename W>
W* Named(W* w, const char* name, const char* tip) {
    w->setObjectName(name);
    w->setToolTip(QObject::tr(tip));
    return w;
}

}  // namespace

FilterDialog::FilterDialog(const FilterChoice& choice, double sampleRateHz, QWidget* parent) : QDialog(parent) {
    setObjectName("FilterDialog");
    setWindowTitle(tr(texts::kFilterCaption));
    kind_ = Named(new QComboBox(this), "cbFilterKind", "The response shape of the filter");
    for (FilterKind kind : kFilterKinds) kind_->addItem(tr(KindCaption(kind).data()), int(kind));
    pass_ = Named(new QComboBox(this), "cbFilterPass", "Keep the frequencies below (low-pass) or above (high-pass) the cut-off");
    pass_->addItem(tr("Low-pass"), int(FilterPass::Low));
    pass_->addItem(tr("High-pass"), int(FilterPass::High));
    cutoff_ = Named(new QLineEdit(this), "edFilterCutoff",
                    "Cut-off in Hz, above 0 and below half the sampling frequency: the -3 dB point "
                    "(Butterworth, Bessel, Gaussian), the edge of the ripple band (Chebyshev, elliptic) or of the stop "
                    "band (inverse Chebyshev)");
    order_ = Named(new QSpinBox(this), "spFilterOrder", "Filter order: steeper with a higher order");
    order_->setRange(1, kMaxFilterOrder);
    ripple_ = Named(new QDoubleSpinBox(this), "spFilterRipple", "Largest ripple of the pass band, dB");
    ripple_->setRange(0.01, 10);
    ripple_->setDecimals(2);
    ripple_->setSuffix(" dB");
    attenuation_ = Named(new QDoubleSpinBox(this), "spFilterAttenuation", "Least attenuation of the stop band, dB");
    attenuation_->setRange(1, 200);
    attenuation_->setDecimals(1);
    attenuation_->setSuffix(" dB");
    zeroPhase_ = Named(new QCheckBox(tr("Zero phase (forward and backward)"), this), "chkFilterZeroPhase",
                       "Filter forward and then backward: no delay or shape change of events, twice "
                       "the attenuation, but the filtered trace depends on later samples");

    auto* form = new QFormLayout;
    form->addRow(tr("Kind"), kind_);
    form->addRow(tr("Pass"), pass_);
    form->addRow(tr("Cut-off (Hz)"), cutoff_);
    form->addRow(tr("Order"), order_);
    form->addRow(tr("Pass-band ripple"), ripple_);
    form->addRow(tr("Stop-band attenuation"), attenuation_);
    form->addRow(zeroPhase_);
    auto* rate = new QLabel(tr("Sampling frequency %1 Hz: the cut-off must be below %2 Hz.")
                                .arg(sampleRateHz, 0, 'g', 8)
                                .arg(sampleRateHz / 2, 0, 'g', 8),
                            this);
    rate->setObjectName("lbFilterRate");
    rate->setWordWrap(true);

    auto* buttons = new QDialogButtonBox(this);
    QPushButton* response = Named(buttons->addButton(tr("&Frequency Response"), QDialogButtonBox::ActionRole),
                                  "btnFilterResponse", "Draw the gain of this filter against frequency");
    QPushButton* apply = Named(buttons->addButton(tr("&Apply"), QDialogButtonBox::ApplyRole), "btnFilterApply",
                               "Filter the channel and show the filtered trace");
    QPushButton* remove = Named(buttons->addButton(tr("&Remove Filter"), QDialogButtonBox::ResetRole),
                                "btnFilterRemove", "Go back to the recorded trace");
    QPushButton* close = Named(buttons->addButton(QDialogButtonBox::Close), "btnFilterClose", "Close this form");
    connect(response, &QPushButton::clicked, this, [this] { emit ResponseRequested(Chosen()); });
    connect(apply, &QPushButton::clicked, this, [this] { emit ApplyRequested(Chosen()); });
    connect(remove, &QPushButton::clicked, this, [this] { emit RemoveRequested(); });
    connect(close, &QPushButton::clicked, this, &QDialog::reject);
    connect(kind_, &QComboBox::currentIndexChanged, this, [this] { UpdateEnabled(); });

    auto* layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addWidget(rate);
    layout->addWidget(buttons);
    SetChoice(choice);
}

FilterChoice FilterDialog::Chosen() const {
    FilterChoice s;
    s.kind = FilterKind(kind_->currentData().toInt());
    s.pass = FilterPass(pass_->currentData().toInt());
    bool ok = false;
    const double cutoff = cutoff_->text().trimmed().toDouble(&ok);
    s.cutoffHz = ok ? cutoff : std::numeric_limits<double>::quiet_NaN();
    s.order = order_->value();
    s.rippleDb = ripple_->value();
    s.attenuationDb = attenuation_->value();
    s.zeroPhase = zeroPhase_->isChecked();
    return s;
}

void FilterDialog::SetChoice(const FilterChoice& s) {
    kind_->setCurrentIndex(kind_->findData(int(s.kind)));
    pass_->setCurrentIndex(pass_->findData(int(s.pass)));
    cutoff_->setText(QString::number(s.cutoffHz, 'g', 10));
    order_->setValue(s.order);
    ripple_->setValue(s.rippleDb);
    attenuation_->setValue(s.attenuationDb);
    zeroPhase_->setChecked(s.zeroPhase);
    UpdateEnabled();
}

void FilterDialog::UpdateEnabled() {
    const auto kind = FilterKind(kind_->currentData().toInt());
    ripple_->setEnabled(HasRipple(kind));
    attenuation_->setEnabled(HasAttenuation(kind));
    order_->setEnabled(HasOrder(kind));
    if (kind == FilterKind::Gaussian) pass_->setCurrentIndex(pass_->findData(int(FilterPass::Low)));
    pass_->setEnabled(kind != FilterKind::Gaussian);
    zeroPhase_->setEnabled(kind != FilterKind::Gaussian);  // the Gaussian kernel is centred already
}

}  // namespace vess
