#include "hrv/ui/spectrum_window.h"

#include <QComboBox>
#include <QDoubleSpinBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>

#include <fmt/format.h>

#include "app/job_runner.h"
#include "graphs/plot_text.h"
#include "graphs/ui/plot_widget.h"
#include "hrv/analysis.h"
#include "hrv/plots.h"
#include "hrv/spectrum_report.h"
#include "hrv/texts.h"
#include "hrv/ui/hrv_widgets.h"
#include "recording/save_path.h"
#include "recording/workspace.h"

namespace vess::hrv {

namespace {

double Number(const QLineEdit* edit, double fallback) {
    bool ok = false;
    const double v = edit->text().trimmed().toDouble(&ok);
    return ok ? v : fallback;
}

}  // namespace

SpectrumWindow::SpectrumWindow(Workspace& ws, Dialogs& dialogs, JobRunner& jobs, QWidget* parent)
    : QWidget(parent), ws_(ws), dialogs_(dialogs, this), jobs_(jobs), bounds_(LoadHrvOptions(ws.iniPath)) {
    setObjectName("frmHRVSpectrum");
    setWindowTitle(Q(texts::kSpectrumCaption));
    auto* layout = new QVBoxLayout(this);
    auto* g = new QGridLayout;
    const BoundLists bounds = AddBoundRow(g, 0, bounds_, this);
    upper_ = bounds.upper;
    lower_ = bounds.lower;

    method_ = new QComboBox(this);
    method_->setObjectName("cbMethod");
    method_->addItem(Q(texts::kWelchMethod), int(SpectrumMethod::Welch));
    method_->addItem(Q(texts::kLombMethod), int(SpectrumMethod::LombScargle));
    detrend_ = new QComboBox(this);
    detrend_->setObjectName("cbDetrend");
    detrend_->addItem(tr("Remove the mean"), int(Detrend::Mean));
    detrend_->addItem(tr("Remove the linear trend"), int(Detrend::Linear));
    g->addWidget(new QLabel(tr("Method"), this), 1, 0);
    g->addWidget(method_, 1, 1);
    g->addWidget(detrend_, 1, 2, 1, 2);

    resample_ = new QLineEdit(this);
    resample_->setObjectName("txtResampleHz");
    window_ = new QComboBox(this);
    window_->setObjectName("cbWindowPoints");
    window_->setEditable(true);
    window_->addItems({"128", "256", "512", "1024", "2048"});
    overlap_ = new QLineEdit(this);
    overlap_->setObjectName("txtOverlap");
    g->addWidget(new QLabel(tr("Resampling (Hz)"), this), 2, 0);
    g->addWidget(resample_, 2, 1);
    g->addWidget(new QLabel(tr("Window (points)"), this), 2, 2);
    g->addWidget(window_, 2, 3);
    g->addWidget(new QLabel(tr("Overlap (%)"), this), 2, 4);
    g->addWidget(overlap_, 2, 5);

    const char* names[] = {"txtVLFLow", "txtVLFHigh", "txtLFHigh", "txtHFHigh"};
    const QString labels[] = {tr("VLF from (Hz)"), tr("VLF/LF (Hz)"), tr("LF/HF (Hz)"), tr("HF to (Hz)")};
    for (int i = 0; i < 4; ++i) {
        auto* spin = new QDoubleSpinBox(this);
        spin->setObjectName(names[i]);
        spin->setDecimals(4);
        spin->setRange(0, 100);
        spin->setSingleStep(0.01);
        edges_[std::size_t(i)] = spin;
        g->addWidget(new QLabel(labels[i], this), 3 + i / 2, (i % 2) * 2);
        g->addWidget(spin, 3 + i / 2, (i % 2) * 2 + 1);
        connect(spin, &QDoubleSpinBox::valueChanged, this, &SpectrumWindow::RefreshPreset);
    }
    preset_ = new QComboBox(this);
    preset_->setObjectName("cbSpectrumPreset");
    preset_->addItem(tr("Human"));
    preset_->addItem(tr("Mouse"));
    presetInForce_ = new QLabel(this);
    presetInForce_->setObjectName("lbPresetInForce");
    g->addWidget(new QLabel(tr("Preset:"), this), 5, 0);
    g->addWidget(preset_, 5, 1);
    g->addWidget(presetInForce_, 5, 2, 1, 3);
    layout->addLayout(g);
    connect(preset_, &QComboBox::activated, this, [this](int index) {
        // A preset sets everything it names: the interval bounds as well.
        const HrvOptions b = ApplyPreset(bounds_, index == 1 ? Preset::Mouse : Preset::Human, SpanOf(ws_).intervalUs);
        SetValue(upper_, b.upperBoundMs);
        SetValue(lower_, b.lowerBoundMs);
        SetOptions(index == 1 ? MouseSpectrumPreset() : HumanSpectrumPreset());
    });
    for (QComboBox* c : {upper_, lower_})
        connect(c, &QComboBox::currentTextChanged, this, &SpectrumWindow::RefreshPreset);
    connect(resample_, &QLineEdit::textChanged, this, &SpectrumWindow::RefreshPreset);

    auto* buttons = new QHBoxLayout;
    const std::array<std::pair<const char*, QString>, 3> buttonTexts{{
        {"Command1", tr("Compute Spectrum")}, {"Command2", tr("Save Results...")}, {"Command3", tr("Save Plot...")}}};
    for (std::size_t i = 0; i < buttonTexts.size(); ++i) {
        auto* b = buttons_[i] = new QPushButton(buttonTexts[i].second, this);
        b->setObjectName(buttonTexts[i].first);
        buttons->addWidget(b);
    }
    buttons->addStretch();
    layout->addLayout(buttons);
    QPushButton* compute = buttons_[0];
    connect(compute, &QPushButton::clicked, this, &SpectrumWindow::Compute);
    connect(&jobs_, &JobRunner::RunningChanged, compute, [compute](bool running) { compute->setEnabled(!running); });
    compute->setEnabled(!jobs_.Running());
    connect(buttons_[1], &QPushButton::clicked, this, &SpectrumWindow::SaveResults);
    connect(buttons_[2], &QPushButton::clicked, this, &SpectrumWindow::SavePlot);

    auto* body = new QHBoxLayout;
    auto* left = new QVBoxLayout;
    table_ = new QTableWidget(this);
    table_->setObjectName("TDBGrid1");
    FillGrid(table_, SpectrumTitles(), {});
    ratio_ = new QLabel(this);
    ratio_->setObjectName("lbLFHF");
    left->addWidget(table_);
    left->addWidget(ratio_);
    body->addLayout(left, 1);
    plotLayout_ = new QVBoxLayout;
    body->addLayout(plotLayout_, 1);
    layout->addLayout(body, 1);
    SetOptions(HumanSpectrumPreset());
    g->setColumnStretch(6, 1);  // the fields keep their size
    resize(1200, 640);
}

SpectrumOptions SpectrumWindow::Options() const {
    SpectrumOptions o;
    o.method = SpectrumMethod(method_->currentData().toInt());
    o.detrend = Detrend(detrend_->currentData().toInt());
    o.resampleHz = Number(resample_, o.resampleHz);
    o.windowPoints = int(ValueOf(window_, o.windowPoints));
    o.overlapPercent = Number(overlap_, o.overlapPercent);
    o.bands = {edges_[0]->value(), edges_[1]->value(), edges_[2]->value(), edges_[3]->value()};
    return o;
}

void SpectrumWindow::SetOptions(const SpectrumOptions& o) {
    method_->setCurrentIndex(method_->findData(int(o.method)));
    detrend_->setCurrentIndex(detrend_->findData(int(o.detrend)));
    resample_->setText(QString::number(o.resampleHz));
    window_->setCurrentText(QString::number(o.windowPoints));
    overlap_->setText(QString::number(o.overlapPercent));
    const double e[] = {o.bands.vlfLowHz, o.bands.vlfHighHz, o.bands.lfHighHz, o.bands.hfHighHz};
    for (int i = 0; i < 4; ++i) edges_[std::size_t(i)]->setValue(e[i]);
    RefreshPreset();
}

void SpectrumWindow::RefreshPreset() {
    const SpectrumOptions o = Options();
    const double upper = ValueOf(upper_, bounds_.upperBoundMs), lower = ValueOf(lower_, bounds_.lowerBoundMs);
    const auto same = [&](const SpectrumOptions& p, Preset preset) {
        const HrvOptions b = ApplyPreset(bounds_, preset, SpanOf(ws_).intervalUs);
        return p.bands == o.bands && p.resampleHz == o.resampleHz && b.upperBoundMs == upper &&
               b.lowerBoundMs == lower;
    };
    presetInForce_->setText(same(HumanSpectrumPreset(), Preset::Human)   ? tr("In force: Human")
                            : same(MouseSpectrumPreset(), Preset::Mouse) ? tr("In force: Mouse")
                                                                         : tr("In force: Custom"));
}

void SpectrumWindow::Compute() {
    if (jobs_.Running() || ws_.events.Empty() || !EnsureTimeOrder(ws_, dialogs_)) return;
    const double upper = ValueOf(upper_, bounds_.upperBoundMs), lower = ValueOf(lower_, bounds_.lowerBoundMs);
    BoundedRR rr = SelectIntervals(WorkspaceBeatTimesMs(ws_), lower, upper);
    if (rr.rrMs.empty() && rr.outsideBounds > 0) {
        dialogs_.Message(std::string(texts::kNoIntervalInBoundsCaption),
                         texts::NoIntervalInBoundsText(rr.outsideBounds, lower, upper));
        return;
    }
    const SpectrumOptions o = Options();
    jobs_.Start(MakeJob(std::string(texts::kSpectrumCaption),
                        [rr = std::move(rr), o](const JobProgress&) { return AnalyseSpectrum(rr.endMs, rr.rrMs, o); },
                        [this, o](SpectrumResult s) { ShowSpectrum(std::move(s), o); }),
                this);
}

void SpectrumWindow::ShowSpectrum(SpectrumResult s, const SpectrumOptions& o) {
    if (!s.error.empty()) {
        dialogs_.Message(std::string(texts::kSpectrumCaption), s.error);
        return;
    }
    FillGrid(table_, SpectrumTitles(), SpectrumRows(s, o.bands));
    ratio_->setText(QString::fromStdString(fmt::format("{} = {:.3f}", texts::kLFHF, s.lfHfRatio)));
    if (plot_) plot_->deleteLater();
    plot_ = new PlotWidget(SpectrumPlot(s, o.bands), this);
    plotLayout_->addWidget(plot_);
    result_ = std::move(s);
    computedWith_ = o;
}

bool SpectrumWindow::SaveResults() {
    return result_ && ShowFailure(dialogs_, SaveSpectrumCommand(dialogs_, *result_, computedWith_));
}

bool SpectrumWindow::SavePlot() {
    if (!plot_) return false;
    const auto path = ChooseSavePath(dialogs_, {std::string(texts::kSpectrumCaption), std::string(kPictureFilter),
                                                 std::string(kPictureExtension), {}},
                                     ExistingFile::AskReplace);
    return path && plot_->SaveAs(QString::fromStdString(path->string()));
}

}  // namespace vess::hrv
