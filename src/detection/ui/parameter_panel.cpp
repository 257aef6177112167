#include "detection/ui/parameter_panel.h"

#include <algorithm>

#include <QCheckBox>
#include <QComboBox>
#include <QDoubleValidator>
#include <QFormLayout>
#include <QIntValidator>
#include <QLabel>
#include <QLineEdit>
#include <QHBoxLayout>
#include <QSignalBlocker>
#include <QSpinBox>

#include "detection/method_texts.h"
#include "detection/ui/texts.h"
#include "recording/method_settings.h"
#include "recording/recording.h"

namespace vess {
namespace {

constexpr int kMaxPointsPeak = 21;
constexpr int kMaxBlocksPerScreen = 4096;

bool ReadInt(const QLineEdit* box, int32_t& out) {
    bool ok = false;
    const int v = box->text().trimmed().toInt(&ok);
    if (ok) out = v;
    return ok;
}

bool ReadFloat(const QLineEdit* box, float& out) {
    bool ok = false;
    const double v = QLocale::c().toDouble(box->text().trimmed(), &ok);
    if (ok) out = static_cast<float>(v);
    return ok;
}

}  // namespace

ParameterPanel::ParameterPanel(QWidget* parent) : QGroupBox(tr("Analysis parameters"), parent) {
    setObjectName("AnalysisParameters");
    form_ = new QFormLayout(this);
    form_->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    form_->setLabelAlignment(Qt::AlignRight | Qt::AlignVCenter);

    method_ = new QComboBox(this);
    method_->setObjectName("cbDetectionMethod");
    for (const DetectionMethod m :
         {DetectionMethod::Threshold, DetectionMethod::Deconvolution, DetectionMethod::Template})
        method_->addItem(QString::fromUtf8(MethodName(m).data(), qsizetype(MethodName(m).size())),
                         int(m));
    method_->setToolTip(tr("How events are found: the amplitude and area thresholds, the trace "
                           "deconvolved with the event kernel, or the kernel fitted as a template"));
    form_->addRow(QString(method_texts::kMethodLabel), method_);
    connect(method_, &QComboBox::activated, this, [this](int index) {
        emit MethodChosen(DetectionMethod(method_->itemData(index).toInt()));
    });
    auto* kernelRow = new QWidget(this);
    auto* kernelLayout = new QHBoxLayout(kernelRow);
    kernelLayout->setContentsMargins(0, 0, 0, 0);
    kernelRise_ = NewMethodBox(kernelRow, "txtKernelRiseMs", tr("Rise time constant of the event kernel, ms"));
    kernelDecay_ = NewMethodBox(kernelRow, "txtKernelDecayMs", tr("Decay time constant of the event kernel, ms"));
    kernelLayout->addWidget(kernelRise_);
    kernelLayout->addWidget(kernelDecay_);
    form_->addRow(tr("Kernel rise / decay (ms)"), kernelRow);
    methodThreshold_ = NewMethodBox(this, "txtMethodThreshold", {});
    form_->addRow(tr("Detection threshold"), methodThreshold_);
    methodThresholdLabel_ = qobject_cast<QLabel*>(form_->labelForField(methodThreshold_));
    lowPass_ = NewMethodBox(this, "txtLowPassMs",
                            tr("SD of the Gaussian smoothing of the deconvolved trace, ms"));
    form_->addRow(tr("Smoothing (ms)"), lowPass_);

    direction_ = new QComboBox(this);
    direction_->setObjectName("cbPeakDirection");
    direction_->addItem(tr("Downward (-1)"), -1);
    direction_->addItem(tr("Upward (+1)"), 1);
    form_->addRow(tr("Peak direction"), direction_);
    connect(direction_, &QComboBox::activated, this, &ParameterPanel::OnBoxEdited);

    threshold_ = AddBox("txtThresholdAmplitude", tr("Amplitude threshold"),
                        tr("Smallest amplitude of an event, in the channel's units"));
    thresholdLabel_ = qobject_cast<QLabel*>(form_->labelForField(threshold_));
    areaThreshold_ = AddBox("txtAreaThreshold", tr("Area threshold"),
                            tr("Smallest area of an event, units x ms"));
    areaLabel_ = qobject_cast<QLabel*>(form_->labelForField(areaThreshold_));
    searchMax_ = AddBox("txtPeriodToSearchMax", tr("Search period (µs)"),
                        tr("Length of each search range for a peak"));
    startBaseline_ = AddBox("txtPeriodStartBaseline", tr("Baseline start (µs)"),
                            tr("How far before the peak the baseline window begins"));
    baselineAverage_ = AddBox("txtPeriodBaselineAverage", tr("Baseline length (µs)"),
                              tr("Length of the baseline window"));
    findDecay_ = AddBox("txtPeriodFindDecayTime", tr("Decay period (µs)"),
                        tr("How far after the peak the decay point is sought"));
    decayPercent_ = AddBox("txtDecayPercent", tr("Decay fraction"),
                           tr("Fraction of the amplitude that marks the decay point (0 to 1)"));
    for (QLineEdit* b : {searchMax_, startBaseline_, baselineAverage_, findDecay_})
        b->setValidator(new QIntValidator(1, 100000000, b));
    for (QLineEdit* b : {threshold_, areaThreshold_, decayPercent_}) {
        auto* v = new QDoubleValidator(b);
        v->setLocale(QLocale::c());
        b->setValidator(v);
    }

    points_ = new QComboBox(this);
    points_->setObjectName("Combo2");
    for (int i = 1; i <= kMaxPointsPeak; ++i) points_->addItem(QString::number(i), i);
    points_->setToolTip(tr("Points averaged at the peak"));
    form_->addRow(tr("Points at peak"), points_);
    connect(points_, &QComboBox::activated, this,
            [this](int index) { emit NumberPointsPeakChosen(points_->itemData(index).toInt()); });

    complexPeak_ = new QCheckBox(tr("Complex peaks"), this);
    complexPeak_->setObjectName("ckComplexPeak");
    sound_ = new QCheckBox(tr("Sound on"), this);
    sound_->setObjectName("ckSoundOn");
    form_->addRow(complexPeak_, sound_);
    connect(complexPeak_, &QCheckBox::toggled, this, &ParameterPanel::OnBoxEdited);
    connect(sound_, &QCheckBox::toggled, this, [this](bool on) {
        if (!showing_) emit SoundToggled(on);
    });

    auto* screenRow = new QWidget(this);
    auto* screenLayout = new QHBoxLayout(screenRow);
    screenLayout->setContentsMargins(0, 0, 0, 0);
    blocks_ = new QSpinBox(screenRow);
    blocks_->setObjectName("spBlocksPerScreen");
    blocks_->setRange(1, kMaxBlocksPerScreen);
    blocks_->setKeyboardTracking(false);  // one change per value typed, not per digit
    blocks_->setToolTip(ui_text::kTipBlocksPerScreen);
    screenLength_ = new QLabel(screenRow);
    screenLength_->setObjectName("lbScreenLength");
    screenLayout->addWidget(blocks_, 1);
    screenLayout->addWidget(screenLength_, 1);
    form_->addRow(tr("Blocks per screen"), screenRow);
    if (auto* label = form_->labelForField(screenRow)) label->setToolTip(ui_text::kTipBlocksPerScreen);
    connect(blocks_, &QSpinBox::valueChanged, this, [this](int blocks) {
        if (!showing_) emit BlocksPerScreenChosen(blocks);
    });
    connect(blocks_, &QSpinBox::editingFinished, this, [this] {
        if (blocks_->hasFocus()) emit EditingDone();  // Enter, not a click elsewhere
    });
}

QLineEdit* ParameterPanel::NewMethodBox(QWidget* parent, const char* name, const QString& tip) {
    auto* box = new QLineEdit(parent);
    box->setObjectName(name);
    box->setToolTip(tip);
    auto* v = new QDoubleValidator(0, 100000, 6, box);
    v->setLocale(QLocale::c());
    box->setValidator(v);
    connect(box, &QLineEdit::editingFinished, this, &ParameterPanel::OnMethodBoxEdited);
    connect(box, &QLineEdit::returnPressed, this, &ParameterPanel::EditingDone);
    return box;
}

QLineEdit* ParameterPanel::AddBox(const char* name, const QString& label, const QString& tip) {
    auto* box = new QLineEdit(this);
    box->setObjectName(name);
    box->setToolTip(tip);
    form_->addRow(label, box);
    connect(box, &QLineEdit::editingFinished, this, &ParameterPanel::OnBoxEdited);
    connect(box, &QLineEdit::returnPressed, this, &ParameterPanel::EditingDone);
    return box;
}

void ParameterPanel::Show(const Settings& settings, const std::string& units, double intervalUs) {
    showing_ = true;
    const AnalysisParameters& p = settings.analysis;
    shown_ = p;
    const QSignalBlocker b0(method_), b1(direction_), b2(points_), b3(complexPeak_), b4(sound_), b5(blocks_);
    const int blocks = std::clamp(settings.blocksPerScreen, 1, kMaxBlocksPerScreen);
    blocks_->setValue(blocks);
    screenLength_->setText(intervalUs > 0 ? tr("= %1 ms").arg(blocks * kBlockPoints * intervalUs / 1000.0, 0, 'g', 6)
                                          : QString());
    ShowMethod(settings.method);
    direction_->setCurrentIndex(p.PeakDirection > 0 ? 1 : 0);
    threshold_->setText(QString::number(p.ThresholdAmplitude));
    areaThreshold_->setText(QString::number(p.AreaThreshold));
    searchMax_->setText(QString::number(p.PeriodToSearchMax));
    startBaseline_->setText(QString::number(p.PeriodStartBaseline));
    baselineAverage_->setText(QString::number(p.PeriodBaselineAverage));
    findDecay_->setText(QString::number(p.PeriodFindDecayTime));
    decayPercent_->setText(QString::number(p.DecayPercent));
    // A file may hold more points than the list offers: show its value as it is.
    const int points = std::max<int>(p.NumberPointsPeak, 1);
    int pointsIndex = points_->findData(points);
    if (pointsIndex < 0) {
        points_->addItem(QString::number(points), points);
        pointsIndex = points_->count() - 1;
    }
    points_->setCurrentIndex(pointsIndex);
    complexPeak_->setChecked(p.ComplexPeak);
    sound_->setChecked(settings.soundOn);
    const QString u = units.empty() ? QString() : QString::fromStdString(units);
    if (thresholdLabel_)
        thresholdLabel_->setText(u.isEmpty() ? tr("Amplitude threshold")
                                             : tr("Amplitude threshold (%1)").arg(u));
    if (areaLabel_)
        areaLabel_->setText(u.isEmpty() ? tr("Area threshold")
                                        : tr("Area threshold (%1·ms)").arg(u));
    showing_ = false;
}

// The filtering methods' boxes show only with those methods; the amplitude
// and area boxes, which they do not use, are disabled and say why.
void ParameterPanel::ShowMethod(const MethodParameters& m) {
    shownMethod_ = m;
    method_->setCurrentIndex(std::max(method_->findData(int(m.method)), 0));
    const bool filtering = m.method != DetectionMethod::Threshold;
    const bool deconvolution = m.method == DetectionMethod::Deconvolution;
    kernelRise_->setText(QString::number(m.riseTauMs, 'g', 3));
    kernelDecay_->setText(QString::number(m.decayTauMs, 'g', 3));
    methodThreshold_->setText(QString::number(deconvolution ? m.deconvolutionThreshold : m.templateThreshold, 'g', 3));
    methodThreshold_->setToolTip(deconvolution ? tr("An event rises above this many noise SDs of the deconvolved trace")
                                               : tr("An event's fitted scale exceeds this many of its standard errors"));
    if (methodThresholdLabel_)
        methodThresholdLabel_->setText(deconvolution ? tr("Threshold (noise SDs)") : tr("Threshold (scale / SE)"));
    lowPass_->setText(QString::number(m.lowPassMs, 'g', 3));
    form_->setRowVisible(kernelRise_->parentWidget(), filtering);
    form_->setRowVisible(methodThreshold_, filtering);
    form_->setRowVisible(lowPass_, deconvolution);
    const QString unused = tr("Not used by the %1 method: its own threshold decides which events are found.")
                               .arg(QString::fromUtf8(MethodName(m.method).data(), qsizetype(MethodName(m.method).size())));
    threshold_->setEnabled(!filtering);
    areaThreshold_->setEnabled(!filtering);
    threshold_->setToolTip(filtering ? unused : tr("Smallest amplitude of an event, in the channel's units"));
    areaThreshold_->setToolTip(filtering ? unused : tr("Smallest area of an event, units x ms"));
}

void ParameterPanel::OnMethodBoxEdited() {
    if (showing_) return;
    MethodParameters m = shownMethod_;
    // A box left as shown keeps the value behind its rounded text.
    auto read = [](const QLineEdit* box, double& out) {
        if (box->text().trimmed() == QString::number(out, 'g', 3)) return true;
        bool ok = false;
        const double v = QLocale::c().toDouble(box->text().trimmed(), &ok);
        if (ok && v > 0) out = v;
        return ok && v > 0;
    };
    double& threshold = m.method == DetectionMethod::Template ? m.templateThreshold : m.deconvolutionThreshold;
    const bool ok = read(kernelRise_, m.riseTauMs) && read(kernelDecay_, m.decayTauMs) &&
                    read(methodThreshold_, threshold) && read(lowPass_, m.lowPassMs);
    if (!ok || m.decayTauMs <= m.riseTauMs || m == shownMethod_) return;
    shownMethod_ = m;
    emit MethodParametersEdited(m);
}

void ParameterPanel::OnBoxEdited() {
    if (showing_) return;
    AnalysisParameters p = shown_;
    p.PeakDirection = static_cast<int16_t>(direction_->currentData().toInt());
    const bool ok = ReadFloat(threshold_, p.ThresholdAmplitude) &&
                    ReadFloat(areaThreshold_, p.AreaThreshold) &&
                    ReadInt(searchMax_, p.PeriodToSearchMax) &&
                    ReadInt(startBaseline_, p.PeriodStartBaseline) &&
                    ReadInt(baselineAverage_, p.PeriodBaselineAverage) &&
                    ReadInt(findDecay_, p.PeriodFindDecayTime) &&
                    ReadFloat(decayPercent_, p.DecayPercent);
    p.ComplexPeak = complexPeak_->isChecked();
    if (!ok || p == shown_) return;
    shown_ = p;
    emit ParametersEdited(p);
}

}  // namespace vess
