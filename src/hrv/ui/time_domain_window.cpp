#include "hrv/ui/time_domain_window.h"

#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMenuBar>
#include <QPageSetupDialog>
#include <QPrintDialog>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>

#include "app/job_runner.h"
#include "graphs/ui/graph_frame.h"
#include "hrv/plot_commands.h"
#include "hrv/scans.h"
#include "hrv/tachogram.h"
#include "hrv/texts.h"
#include "recording/texts.h"
#include "hrv/ui/hrv_widgets.h"
#include "recording/template_header.h"
#include "recording/workspace.h"

namespace vess::hrv {

TimeDomainWindow::TimeDomainWindow(Workspace& ws, Dialogs& dialogs, JobRunner& jobs,
                                   std::filesystem::path templateFolder, QWidget* parent)
    : QMainWindow(parent), ws_(ws), dialogs_(dialogs, this), jobs_(jobs), templateFolder_(std::move(templateFolder)) {
    setObjectName("frmHRV");
    setWindowTitle(Q(texts::kTimeDomainCaption));
    auto* central = new QWidget(this);
    auto* layout = new QVBoxLayout(central);
    BuildOptions(central);
    layout->addWidget(central->findChild<QGroupBox*>("fraOptions"));

    auto* buttons = new QHBoxLayout;
    auto* start = run_ = new QPushButton(Q(texts::kStartAnalysis), central);
    start->setObjectName("Command1");
    auto* save = save_ = new QPushButton(Q(texts::kSaveOptions), central);
    save->setObjectName("Command2");
    buttons->addWidget(start);
    buttons->addWidget(save);
    buttons->addStretch();
    layout->addLayout(buttons);
    connect(start, &QPushButton::clicked, this, &TimeDomainWindow::StartAnalysis);
    connect(&jobs_, &JobRunner::RunningChanged, start, [start](bool running) { start->setEnabled(!running); });
    start->setEnabled(!jobs_.Running());
    connect(save, &QPushButton::clicked, this, &TimeDomainWindow::SaveOptions);

    results_ = new QTableWidget(central);
    results_->setObjectName("TDBGrid1");
    results_->setToolTip(Q(texts::kGridTip));
    FillGrid(results_, ResultTitles(), {});
    connect(results_->horizontalHeader(), &QHeaderView::sectionClicked, this, &TimeDomainWindow::ShowDefinition);
    layout->addWidget(results_, 1);
    auto* segmentTitle = new QLabel(Q(texts::kSegmentResults), central);
    layout->addWidget(segmentTitle);
    segments_ = new QTableWidget(central);
    segments_->setObjectName("TDBGrid2");
    FillGrid(segments_, SegmentTitles(), {});
    layout->addWidget(segments_, 2);
    setCentralWidget(central);
    BuildMenus();
    SetOptions(LoadHrvOptions(ws_.iniPath));  // LoadIniSettings
    resize(980, 620);
}

void TimeDomainWindow::BuildOptions(QWidget* panel) {
    auto* box = new QGroupBox(panel);
    box->setObjectName("fraOptions");
    auto* grid = new QGridLayout(box);
    const BoundLists bounds = AddBoundRow(grid, 0, HrvOptions{}, box);
    upper_ = bounds.upper;
    lower_ = bounds.lower;

    grid->addWidget(new QLabel(Q(texts::kSegmentPointsLabel), box), 1, 0);
    points_ = new QLineEdit(box);
    points_->setObjectName("txtNPointsSeg");
    grid->addWidget(points_, 1, 1);
    segmentTime_ = new QLabel(box);
    segmentTime_->setObjectName("lbSegmentTime");
    grid->addWidget(segmentTime_, 1, 2, 1, 3);

    grid->addWidget(new QLabel(Q(texts::kThresholdLabel), box), 2, 0);
    threshold_ = new QLineEdit(box);
    threshold_->setObjectName("txtThreshdeltaRR");
    grid->addWidget(threshold_, 2, 1);

    includeZero_ = new QCheckBox(Q(texts::kIncludeZeroLabel), box);
    includeZero_->setObjectName("ckIncludeZero");
    excludeLast_ = new QCheckBox(Q(texts::kExcludeLastLabel), box);
    excludeLast_->setObjectName("ckExcludeLastSeg");
    grid->addWidget(includeZero_, 3, 0, 1, 2);
    grid->addWidget(excludeLast_, 3, 2, 1, 3);

    grid->addWidget(new QLabel(tr("Preset:"), box), 4, 0, Qt::AlignRight);
    preset_ = MakePresetList(box);
    grid->addWidget(preset_, 4, 1);
    presetInForce_ = new QLabel(box);
    presetInForce_->setObjectName("lbPresetInForce");
    grid->addWidget(presetInForce_, 4, 2, 1, 3);
    grid->setColumnStretch(5, 1);  // the lists keep their size, the texts get the room
    segmentTime_->setWordWrap(true);
    connect(preset_, &QComboBox::activated, this, &TimeDomainWindow::ApplyPreset);
    for (QComboBox* c : {upper_, lower_}) connect(c, &QComboBox::currentTextChanged, this, &TimeDomainWindow::RefreshPreset);
    connect(points_, &QLineEdit::textChanged, this, &TimeDomainWindow::RefreshPreset);
}

void TimeDomainWindow::BuildMenus() {
    const auto add = [this](QMenu* menu, const char* name, const QString& text, auto slot) {
        QAction* a = menu->addAction(text);
        a->setObjectName(name);
        connect(a, &QAction::triggered, this, slot);
    };
    QMenu* td = menuBar()->addMenu(tr("&Time Domain Results"));
    add(td, "menu_TimeDomainCopy", tr("&Copy"), [this] { CopyGrid(TimeDomainGrid::Results); });
    add(td, "menu_TimeDomainPrint", tr("&Print..."), [this] { PrintGrid(TimeDomainGrid::Results); });
    add(td, "menu_TimeDomainPrintSetup", tr("Print Set&up..."), [this] { PrintSetup(); });
    add(td, "menu_TimeDomain", tr("&Save as Text..."),
        [this] { ShowFailure(dialogs_, SaveGridCommand(dialogs_, grids_, TimeDomainGrid::Results)); });
    QMenu* seg = menuBar()->addMenu(Q(texts::kSegmentResults));
    add(seg, "menu_SegmentResultsCopy", tr("&Copy"), [this] { CopyGrid(TimeDomainGrid::Segments); });
    add(seg, "menu_SegmentResultsPrint", tr("&Print..."), [this] { PrintGrid(TimeDomainGrid::Segments); });
    add(seg, "menu_SegmentResultsPrintSetup", tr("Print Set&up..."), [this] { PrintSetup(); });
    add(seg, "menu_SegmentResults", tr("&Save as Text..."),
        [this] { ShowFailure(dialogs_, SaveGridCommand(dialogs_, grids_, TimeDomainGrid::Segments)); });
    QMenu* tacho = menuBar()->addMenu(Q(texts::kTachogramMenu));
    tacho->setObjectName("menu_Tachogram");
    add(tacho, "menu_TachogramGenerate", Q(texts::kGeneratePlot), [this] {
        if (const auto plot = TachogramPlotCommand(ws_, dialogs_); ShowFailure(dialogs_, plot.status()))
            ShowPlot(this, plot.value());
    });
    add(tacho, "menu_TachogramSaveABF", Q(vess::texts::kSaveAsAbf), [this] {
        EnsureTemplateHeader(templateFolder_);
        ShowFailure(dialogs_, SaveTachogramAbfCommand(ws_, dialogs_, templateFolder_));
    });
    add(tacho, "menu_TachogramSaveASCII", Q(texts::kSaveAsAscii), [this] { ShowFailure(dialogs_, SaveTachogramAsciiCommand(ws_, dialogs_)); });
}

QAction* TimeDomainWindow::Action(const char* objectName) const { return findChild<QAction*>(objectName); }

double TimeDomainWindow::IntervalUs() const { return SpanOf(ws_).intervalUs; }

HrvOptions TimeDomainWindow::Options() const {
    HrvOptions o = LoadHrvOptions(ws_.iniPath);  // bin sizes belong to the geometric window
    o.upperBoundMs = ValueOf(upper_, o.upperBoundMs);
    o.lowerBoundMs = ValueOf(lower_, o.lowerBoundMs);
    bool ok = false;
    const int points = points_->text().trimmed().toInt(&ok);
    if (ok && points > 0) o.pointsPerSegment = points;
    const double threshold = threshold_->text().trimmed().toDouble(&ok);
    if (ok) o.thresholdMs = threshold;
    o.includeZeroSegments = includeZero_->isChecked();
    o.excludeLastSegment = excludeLast_->isChecked();
    return o;
}

void TimeDomainWindow::SetOptions(const HrvOptions& o) {
    SetValue(upper_, o.upperBoundMs);
    SetValue(lower_, o.lowerBoundMs);
    points_->setText(QString::number(o.pointsPerSegment));
    threshold_->setText(QString::number(o.thresholdMs));
    includeZero_->setChecked(o.includeZeroSegments);
    excludeLast_->setChecked(o.excludeLastSegment);
    RefreshPreset();
}

void TimeDomainWindow::ApplyPreset(int index) {
    SetOptions(hrv::ApplyPreset(Options(), Preset(preset_->itemData(index).toInt()), IntervalUs()));
}

void TimeDomainWindow::RefreshPreset() {
    const HrvOptions o = Options();
    ShowPresetInForce(presetInForce_, preset_, o, IntervalUs());
    segmentTime_->setText(QString::fromStdString(std::string(texts::kSegmentPointsSuffix)) +
                          QStringLiteral(" (%1 s)").arg(o.SegmentMs(IntervalUs()) / 1000, 0, 'g', 6));
}

void TimeDomainWindow::StartAnalysis() {
    if (jobs_.Running()) return;
    auto request = PrepareTimeDomain(ws_, dialogs_, Options());
    if (!request) return;
    auto r = std::make_shared<const TimeDomainRequest>(std::move(*request));
    jobs_.Start(MakeJob(std::string(texts::kStartAnalysis), [r](const JobProgress&) { return AnalyseTimeDomain(*r); },
                        [this, r](HrvAnalysis a) {
                            if (!ShowFailure(dialogs_, FileTimeDomain(*r, a, grids_))) return;
                            FillGrid(results_, ResultTitles(), grids_.results);
                            FillGrid(segments_, SegmentTitles(), grids_.segments);
                        }),
                this);
}

void TimeDomainWindow::SaveOptions() {
    ShowFailure(dialogs_, SaveHrvOptionsCommand(ws_.iniPath, Options(), HrvWindow::TimeDomain, dialogs_));
}

void TimeDomainWindow::ShowDefinition(int column) {
    if (column < 1 || column > int(texts::kMeasureColumns.size())) return;
    const auto c = std::size_t(column - 1);
    dialogs_.Message(std::string(texts::kMeasureColumns[c]), std::string(texts::kMeasureDefinitions[c]));
}

void TimeDomainWindow::CopyGrid(TimeDomainGrid which) {
    QApplication::clipboard()->setText(QString::fromStdString(GridAsText(grids_, which)));
    dialogs_.Message(std::string(texts::kCopyFinishedCaption), std::string(texts::kCopyFinishedText));
}

void TimeDomainWindow::PrintGrid(TimeDomainGrid which) {
    QPrintDialog dialog(&printer_, this);
    if (dialog.exec() != QDialog::Accepted) return;
    const bool results = which == TimeDomainGrid::Results;
    hrv::PrintGrid(results ? results_ : segments_, Q(results ? texts::kTimeDomainCaption : texts::kSegmentResults),
                   printer_);
}

void TimeDomainWindow::PrintSetup() {
    QPageSetupDialog dialog(&printer_, this);
    dialog.exec();
}

}  // namespace vess::hrv
