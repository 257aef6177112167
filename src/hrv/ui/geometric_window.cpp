#include "hrv/ui/geometric_window.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include <fmt/format.h>

#include "graphs/ui/plot_widget.h"
#include "hrv/plots.h"
#include "hrv/texts.h"
#include "hrv/ui/hrv_widgets.h"
#include "recording/workspace.h"
#include "statistics/prompts.h"

namespace vess::hrv {

namespace {

const QStringList kBinSizes{"0.1", "0.5", "1", "2", "5", "7.8125", "10", "20", "50"};

}  // namespace

GeometricWindow::GeometricWindow(Workspace& ws, Dialogs& dialogs, QWidget* parent)
    : QWidget(parent), ws_(ws), dialogs_(dialogs, this) {
    setObjectName("frmHRVGeo");
    setWindowTitle(Q(texts::kGeometricCaption));
    auto* layout = new QVBoxLayout(this);
    auto* options = new QGridLayout;
    rrBin_ = MakeValueList("cbRRBinSize", kBinSizes, 1, this);
    deltaBin_ = MakeValueList("cbDeltaRRBinSize", kBinSizes, 1, this);
    options->addWidget(new QLabel(Q(texts::kRRBinLabel), this), 0, 0);
    options->addWidget(rrBin_, 0, 1);
    options->addWidget(new QLabel(Q(texts::kDeltaRRBinLabel), this), 0, 2);
    options->addWidget(deltaBin_, 0, 3);
    const BoundLists bounds = AddBoundRow(options, 1, HrvOptions{}, this);
    upper_ = bounds.upper;
    lower_ = bounds.lower;
    preset_ = MakePresetList(this);
    presetInForce_ = new QLabel(this);
    presetInForce_->setObjectName("lbPresetInForce");
    options->addWidget(new QLabel(tr("Preset:"), this), 2, 0, Qt::AlignRight);
    options->addWidget(preset_, 2, 1);
    options->addWidget(presetInForce_, 2, 2, 1, 3);
    options->setColumnStretch(5, 1);
    layout->addLayout(options);
    connect(preset_, &QComboBox::activated, this, [this](int index) {
        SetOptions(ApplyPreset(Options(), Preset(preset_->itemData(index).toInt()), SpanOf(ws_).intervalUs));
    });
    for (QComboBox* c : {upper_, lower_})
        connect(c, &QComboBox::currentTextChanged, this, &GeometricWindow::RefreshPreset);

    auto* buttons = new QHBoxLayout;
    auto* generate = run_ = new QPushButton(Q(texts::kGeneratePlots), this);
    generate->setObjectName("Command1");
    auto* save = save_ = new QPushButton(Q(texts::kSaveOptions), this);
    save->setObjectName("Command2");
    buttons->addWidget(generate);
    buttons->addWidget(save);
    measures_ = new QLabel(this);
    measures_->setObjectName("lbMeasures");
    measures_->setTextInteractionFlags(Qt::TextSelectableByMouse);
    buttons->addWidget(measures_, 1);
    layout->addLayout(buttons);
    connect(generate, &QPushButton::clicked, this, &GeometricWindow::GeneratePlots);
    connect(save, &QPushButton::clicked, this, &GeometricWindow::SaveOptions);

    panesLayout_ = new QGridLayout;
    layout->addLayout(panesLayout_, 1);
    SetOptions(LoadHrvOptions(ws_.iniPath));
    resize(1000, 760);
}

HrvOptions GeometricWindow::Options() const {
    HrvOptions o = LoadHrvOptions(ws_.iniPath);  // the time-domain keys stay as saved
    o.rrBinMs = ValueOf(rrBin_, o.rrBinMs);
    o.deltaRRBinMs = ValueOf(deltaBin_, o.deltaRRBinMs);
    o.upperBoundMs = ValueOf(upper_, o.upperBoundMs);
    o.lowerBoundMs = ValueOf(lower_, o.lowerBoundMs);
    return o;
}

void GeometricWindow::SetOptions(const HrvOptions& o) {
    SetValue(rrBin_, o.rrBinMs);
    SetValue(deltaBin_, o.deltaRRBinMs);
    SetValue(upper_, o.upperBoundMs);
    SetValue(lower_, o.lowerBoundMs);
    RefreshPreset();
}

void GeometricWindow::RefreshPreset() {
    // The segment length is no option here: only the bounds decide the preset.
    HrvOptions o = Options();
    const double interval = SpanOf(ws_).intervalUs;
    for (Preset p : {Preset::Human, Preset::Mouse, Preset::Stored}) {
        const HrvOptions preset = ApplyPreset(o, p, interval);
        if (preset.upperBoundMs == o.upperBoundMs && preset.lowerBoundMs == o.lowerBoundMs) o = preset;
    }
    ShowPresetInForce(presetInForce_, preset_, o, interval);
}

void GeometricWindow::SaveOptions() {
    ShowFailure(dialogs_, SaveHrvOptionsCommand(ws_.iniPath, Options(), HrvWindow::Geometric, dialogs_));
}

void GeometricWindow::SetPane(int index, PlotWidget* plot) {
    auto& slot = panes_[std::size_t(index)];
    if (slot) slot->deleteLater();
    slot = plot;
    panesLayout_->addWidget(plot, index / 2, index % 2);
}

void GeometricWindow::GeneratePlots() {
    if (ws_.events.Empty() || !EnsureTimeOrder(ws_, dialogs_)) return;
    const HrvOptions o = Options();
    const RecordingSpan span = SpanOf(ws_);
    HrvAnalysis a = AnalyseBeats(WorkspaceBeatTimesMs(ws_), span.lengthMs, o.SegmentMs(span.intervalUs), o);
    if (a.rr.rrMs.empty() && a.rr.outsideBounds > 0) {
        dialogs_.Message(std::string(texts::kNoIntervalInBoundsCaption),
                         texts::NoIntervalInBoundsText(a.rr.outsideBounds, o.lowerBoundMs, o.upperBoundMs));
        return;
    }
    auto rrPlot = HistogramPlot(a.rr.rrMs, o.rrBinMs, texts::kRRSeries);
    auto deltaPlot = HistogramPlot(a.rr.DeltaMs(), o.deltaRRBinMs, texts::kDeltaRRSeries);
    if (!rrPlot || !deltaPlot) {
        ShowFailure(dialogs_, TooManyBins());
        return;
    }
    AddTriangle(*rrPlot, a.triangle, o.rrBinMs);
    SetPane(0, new PlotWidget(*rrPlot, this));
    SetPane(1, new PlotWidget(*deltaPlot, this));
    SetPane(2, new PlotWidget(LorenzPlot(a.rr.pairs, PaneLorenzAxes(), &a.lorenz), this));
    SetPane(3, new PlotWidget(TachogramPlot(a.rr.beatNumber, a.rr.rrMs, PaneTachogramAxes()), this));
    measures_->setText(QString::fromStdString(fmt::format(
        "{} {:.3f}    {} {:.1f} ms    {} {:.2f} ms    {} {:.2f} ms    {} {:.3f}", texts::kTriangularIndex,
        a.triangle.triangularIndex, texts::kTinn, a.triangle.tinnMs, texts::kSD1, a.lorenz.sd1Ms, texts::kSD2,
        a.lorenz.sd2Ms, texts::kSD1SD2, a.lorenz.ratio)));
    analysis_ = std::move(a);
}

}  // namespace vess::hrv
