// The commands of the group analysis window: display, navigation, trace
// edits, the results grid and the menus.
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QMenuBar>
#include <QPageSetupDialog>
#include <qcustomplot.h>
#include <QPlainTextEdit>
#include <QPrintPreviewDialog>
#include <QPrinter>
#include <QPushButton>
#include <QRadioButton>
#include <QTableView>

#include <filesystem>

#include "app/job_runner.h"
#include "graphs/plot_text.h"
#include "graphs/ui/graph_frame.h"
#include "graphs/ui/grid_print.h"
#include "group_analysis/fit_review.h"
#include "group_analysis/results_commands.h"
#include "group_analysis/results_plots.h"
#include "group_analysis/texts.h"
#include "group_analysis/trace_commands.h"
#include "group_analysis/ui/group_assign_dialog.h"
#include "group_analysis/ui/group_window.h"
#include "group_analysis/ui/trace_picture.h"
#include "group_analysis/ui/widget_out.h"
#include "recording/file_io.h"
#include "recording/workspace.h"

namespace vess::group {

namespace {
std::string Str(std::string_view s) { return std::string(s); }
QString Q(std::string_view s) { return QString::fromUtf8(s.data(), qsizetype(s.size())); }
// The temporary file trace and curve data pass through on the way to the clipboard.
constexpr const char* kTraceTempFile = "TempTrace.txt";
}  // namespace

AnalysisType GroupAnalysisWindow::Type() const {
    return AnalysisTypeFromName(type_->currentText().toStdString());
}

void GroupAnalysisWindow::StartDisplay() {
    // A running fit holds its own copy of the set; the one shown stays until it ends.
    if (jobs_.Running()) return;
    ReadControls();
    set_ = TraceSet{};
    if (ws_.recording) {
        scale_ = UnitScale::Of(*ws_.recording);
        displayedGroup_ = settings_.groupNumber;
        displayedType_ = Type();
        const TraceSetOptions o{
            .source = settings_.useGroups ? TraceSource::Group : TraceSource::Episodes,
            .group = settings_.groupNumber,
            .type = displayedType_,
            .alignment = AlignmentFromName(settings_.alignment),
            .blocks = settings_.blocksToAnalyse,
            .baselineAdjust = settings_.adjustBaseline,
            .fullSweep = fullSweep_->isChecked()};
        const std::string tooLarge =
            TraceSetSizeProblem(TraceSetBytes(*ws_.recording, ws_.events, o, false));
        if (tooLarge.empty()) set_ = BuildTraceSet(*ws_.recording, ws_.events, ws_.params(), o);
        else dialogs_.Message(Str(texts::kWindowCaption), tooLarge);
    }
    current_ = 0;
    picture_->SetTraces(&set_, scale_);
    picture_->SetTitle(PictureTitle(settings_.useGroups, displayedGroup_, displayedType_));
    picture_->SetDecimation(settings_.displayEveryPoint);
    if (IsSuperimposeType(displayedType_)) picture_->ShowAll();
    else picture_->ShowTrace(0);
    traceLabel_->setText(Q(texts::TraceLabel(0, set_.count)));
    const int32_t last = std::max(set_.length - 1, 0);
    if (!timeLock_->isChecked()) {
        picture_->SetCursor(0, std::min(set_.prePoints, last));
        picture_->SetCursor(1, last);
    }
    UpdateCursorLabel();
}

void GroupAnalysisWindow::MoveTo(int32_t trace) {
    if (set_.Empty()) return;
    current_ = std::clamp(trace, 0, set_.count);
    if (!IsSuperimposeType(displayedType_)) picture_->ShowTrace(IsAverageType(displayedType_) ? 0 : current_);
    else picture_->SetHighlighted(current_);
    picture_->ClearCurve();
    traceLabel_->setText(Q(texts::TraceLabel(current_, set_.count)));
    UpdateCursorLabel();
}

void GroupAnalysisWindow::JumpToTrace() {
    if (const auto target = JumpTargetCommand(set_, displayedType_, dialogs_); ShowFailure(dialogs_, target.status()))
        MoveTo(*target);
}

void GroupAnalysisWindow::RemoveTrace() {
    if (!jobs_.Running() && ShowFailure(dialogs_, RemoveTraceCommand(ws_, set_, current_))) StartDisplay();
}

void GroupAnalysisWindow::RegroupTrace() {
    if (!jobs_.Running() && ShowFailure(dialogs_, RegroupTraceCommand(ws_, set_, current_, displayedGroup_, dialogs_)))
        StartDisplay();
}

const ResultColumn* GroupAnalysisWindow::CurrentColumn() const {
    const int c = std::max(grid_->currentIndex().column(), 0);
    return c < int(gridColumns_.size()) ? &gridColumns_[std::size_t(c)] : nullptr;
}

void GroupAnalysisWindow::RefreshGrid() {
    const ResultKind kind = ws_.results.Empty() ? ResultKind::None
                                                : ReadResultRow(ws_.results[ws_.results.Count()]).kind;
    gridColumns_ = ResultColumns(kind);
    gridModel_->Reload(gridColumns_, kind, ws_.recording ? ws_.recording->Units() : std::string());
    grid_->resizeColumnsToContents();
}

void GroupAnalysisWindow::PutColumn(int array) {
    if (const ResultColumn* c = CurrentColumn())
        ShowFailure(dialogs_, PutColumnToArrayCommand(ws_.results, *c, ws_.Array(array), array, dialogs_));
}

void GroupAnalysisWindow::ShowColumnStatistics() {
    if (ws_.results.Empty()) return;
    dialogs_.Message(Str(texts::kColumnStatCaption),
                     ColumnStatisticsText(ResultColumnStatistics(ws_.results)));
}

int32_t GroupAnalysisWindow::ShownTrace() const { return IsAverageType(displayedType_) ? 0 : current_; }

std::string GroupAnalysisWindow::RecordingName() const {
    return ws_.recording ? ws_.recording->FileName() : std::string();
}

void GroupAnalysisWindow::ExtractTrace() {
    if (set_.Empty()) return;
    resultCurve_ = TraceCurve(set_, scale_, ShownTrace(), GroupAnalysisHeader(RecordingName(), displayedGroup_));
}

void GroupAnalysisWindow::TraceDataOut(bool toClipboard) {
    const auto text = TraceDataText(set_, scale_, RecordingName(), displayedGroup_, dialogs_);
    if (!text) return;
    if (toClipboard) CopyTextThroughFile(*text, kTraceTempFile);
    else ShowFailure(dialogs_, SaveTextFileCommand(*text, dialogs_));
}

void GroupAnalysisWindow::CurveDataOut(bool toClipboard) {
    const auto text = CurveDataText(resultCurve_, scale_.units, dialogs_);
    if (!ShowFailure(dialogs_, text.status())) return;
    if (toClipboard) CopyTextThroughFile(*text, kTraceTempFile);
    else ShowFailure(dialogs_, SaveTextFileCommand(*text, dialogs_));
}

void GroupAnalysisWindow::PlotDataArray(int array) {
    if (auto plot = DataArrayHistogramCommand(ws_.Array(array), array, dialogs_); ShowFailure(dialogs_, plot.status()))
        ShowPlot(this, *plot);
}

// Pictures go into documents: they keep the axes and may carry scale bars.
void GroupAnalysisWindow::SavePicture() {
    const auto name = dialogs_.SaveFile({"", std::string(kPictureFilter), std::string(kPictureExtension), ""});
    if (!name || name->empty()) return;
    picture_->SetScaleBars(dialogs_.AskYesNo(Str(texts::kScaleBarsCaption), Str(texts::kScaleBarsPrompt)));
    if (!picture_->SaveAs(QString::fromStdString(WithDefaultExtension(*name, kPictureExtension).string())))
        dialogs_.Message(Str(texts::kWindowCaption), "The picture could not be written to " + *name + ".");
    picture_->SetScaleBars(false);
}

void GroupAnalysisWindow::CopyPictureSvg() {
    picture_->SetScaleBars(dialogs_.AskYesNo(Str(texts::kScaleBarsCaption), Str(texts::kScaleBarsPrompt)));
    const QString path = QString::fromStdString((std::filesystem::temp_directory_path() / "TempPicture.svg").string());
    if (picture_->SaveAs(path)) CopySvgFile(path);
    picture_->SetScaleBars(false);
}

void GroupAnalysisWindow::PrintResults() {
    if (print_.choosePrinter(*printer_)) PrintGrid(*gridModel_, Q(texts::kColumnStatCaption), *printer_);
}

void GroupAnalysisWindow::PreviewResults() {
    QPrintPreviewDialog preview(printer_.get(), this);
    preview.setWindowTitle(Q(texts::kPreviewCaption));
    connect(&preview, &QPrintPreviewDialog::paintRequested, this,
            [this](QPrinter* printer) { PrintGrid(*gridModel_, Q(texts::kColumnStatCaption), *printer); });
    print_.showPreview(preview);
}

void GroupAnalysisWindow::PrintPicture() {
    if (print_.choosePrinter(*printer_)) PaintPicture(*printer_);
}

// The picture, its group and type line included, scaled to the page.
void GroupAnalysisWindow::PaintPicture(QPagedPaintDevice& device) {
    QCPPainter p(&device);
    const double scale = std::min(double(device.width()) / picture_->width(), double(device.height()) / picture_->height());
    p.scale(scale, scale);
    picture_->Render(p, picture_->width(), picture_->height());
}

void GroupAnalysisWindow::RunFluctuation() {
    const auto plot = FluctuationCommand(ws_.results, set_, scale_, displayedType_, displayedGroup_, settings_);
    if (!plot) return;
    RefreshGrid();
    ShowPlot(this, *plot);
}

QAction* GroupAnalysisWindow::AddAction(QMenu* menu, const char* name, const QString& text,
                                        std::function<void()> run) {
    QAction* a = menu->addAction(text);
    a->setObjectName(name);
    connect(a, &QAction::triggered, this, std::move(run));
    actions_[name] = a;
    return a;
}

void GroupAnalysisWindow::BuildMenus() {
    auto done = [this] { RefreshGrid(); };
    QMenu* file = menuBar()->addMenu(tr("&File"));
    AddAction(file, "menu_SaveResults", tr("&Save Results..."), [this] { ShowFailure(dialogs_, SaveResultsCommand(ws_.results, dialogs_)); });
    AddAction(file, "menu_LoadResults", tr("&Load Results..."), [this] { StartLoadingResults(); });
    AddAction(file, "menu_copyasciifile", tr("Save Results as &Text..."), [this] { ShowFailure(dialogs_, SaveResultsAsciiCommand(ws_.results, dialogs_)); });
    AddAction(file, "menu_saveascii", tr("Save Trace &Data..."), [this] { TraceDataOut(false); });
    AddAction(file, "menu_savecurvedata", tr("Save &Curve Data..."), [this] { CurveDataOut(false); });
    AddAction(file, "menu_saveBMP", tr("Save &Picture (PNG, SVG, PDF)..."), [this] { SavePicture(); });
    file->addSeparator();
    AddAction(file, "menu_SaveSettings", tr("Save Settings"), [this] { ReadControls(); ShowFailure(dialogs_, SaveGroupSettingsCommand(ws_.iniPath, settings_, dialogs_)); });
    AddAction(file, "menu_SaveAsCustomSetup", tr("Save as Custom Settings..."), [this] { ReadControls(); ShowFailure(dialogs_, SaveGroupCustomSettingsCommand(settings_, dialogs_)); });
    AddAction(file, "menu_LoadSettings", tr("Load Custom Settings..."), [this] { if (ShowFailure(dialogs_, LoadGroupCustomSettingsCommand(settings_, dialogs_))) WriteControls(); });
    AddAction(file, "menu_exit", tr("E&xit"), [this] { close(); });

    QMenu* trace = menuBar()->addMenu(tr("&Trace"));
    AddAction(trace, "menu_DisplayTrace", tr("&Start Display"), [this] { StartDisplay(); });
    AddAction(trace, "menu_trace_remove", tr("&Remove Trace"), [this] { RemoveTrace(); });
    AddAction(trace, "menu_trace_regroup", tr("Re&group Trace"), [this] { RegroupTrace(); });
    AddAction(trace, "menu_trace_extract", tr("E&xtract Trace"), [this] { ExtractTrace(); });
    AddAction(trace, "menu_copydata", tr("&Copy Trace Data"), [this] { TraceDataOut(true); });
    AddAction(trace, "menu_extractcurvedata", tr("Copy C&urve Data"), [this] { CurveDataOut(true); });
    AddAction(trace, "menu_copybmp", tr("Copy &Picture"), [this] { CopyWidget(picture_); });
    AddAction(trace, "menu_CopyMeta", tr("Copy Picture as &SVG"), [this] { CopyPictureSvg(); });
    AddAction(trace, "menu_print", tr("Print Pictu&re..."), [this] { PrintPicture(); });

    QMenu* results = menuBar()->addMenu(tr("&Results"));
    AddAction(results, "menu_LastResult", tr("Delete &Last Result"), [this, done] { DeleteLastResult(ws_.results); done(); });
    AddAction(results, "menu_ClearResults", tr("&Clear Results"), [this, done] { ws_.results.Clear(); done(); });
    AddAction(results, "menu_DeleteEven", tr("Delete &Even Rows"), [this, done] { DeleteEvenResults(ws_.results); done(); });
    AddAction(results, "menu_DeleteOdd", tr("Delete &Odd Rows"), [this, done] { DeleteOddResults(ws_.results); done(); });
    AddAction(results, "menu_DeleteSelected", tr("Delete &Selected Rows"), [this, done] {
        std::set<int32_t> rows;
        for (const auto& r : grid_->selectionModel()->selectedRows()) rows.insert(r.row() + 1);
        DeleteSelectedResults(ws_.results, rows);
        done();
    });
    AddAction(results, "menu_copyresults", tr("Cop&y Results"), [this] { CopyTextThroughFile(ResultsText(ws_.results), "TempAsc.tmp"); });
    AddAction(results, "menu_PrintResults", tr("&Print Results..."), [this] { PrintResults(); });
    AddAction(results, "menu_preview", tr("Print Pre&view..."), [this] { PreviewResults(); });
    AddAction(results, "menu_PageSetup", tr("Page Set&up..."), [this] {
        QPageSetupDialog(printer_.get(), this).exec();
    });
    AddAction(results, "menu_ColumnStat", tr("Column &Statistics"), [this] { ShowColumnStatistics(); });
    AddAction(results, "menu_Put2Array1", tr("Put Column into Array #&1"), [this] { PutColumn(1); });
    AddAction(results, "menu_Put2Array2", tr("Put Column into Array #&2"), [this] { PutColumn(2); });
    auto plot = [this](auto make) {
        if (const ResultColumn* c = CurrentColumn())
            if (auto p = make(*c); ShowFailure(dialogs_, p.status())) ShowPlot(this, *p);
    };
    AddAction(results, "menu_FreqHisto", tr("&Frequency Histogram"), [this, plot] { plot([this](const ResultColumn& c) { return ResultHistogramCommand(ws_.results, c, false, dialogs_); }); });
    AddAction(results, "menu_CumulHisto", tr("C&umulative Histogram"), [this, plot] { plot([this](const ResultColumn& c) { return ResultHistogramCommand(ws_.results, c, true, dialogs_); }); });
    AddAction(results, "menu_TimeCoursePlot", tr("&Time Course Plot"), [this, plot] { plot([this](const ResultColumn& c) { return TimeCourseCommand(ws_.results, c, dialogs_); }); });
    AddAction(results, "menu_scatter", tr("X-Y &Scatter (current and next column)"), [this] {
        const int c = std::max(grid_->currentIndex().column(), 0);
        if (c + 1 < int(gridColumns_.size()))
            ShowPlot(this, ScatterPlot(ws_.results, gridColumns_[std::size_t(c)], gridColumns_[std::size_t(c + 1)],
                                 c + 2 < int(gridColumns_.size()) ? std::optional(gridColumns_[std::size_t(c + 2)]) : std::nullopt));
    });

    QMenu* plotArray = results->addMenu(tr("&Plot"));
    plotArray->menuAction()->setObjectName("menu_Plot");
    for (int array : {1, 2})
        AddAction(plotArray, array == 1 ? "menu_Plot_1" : "menu_Plot_2", Q(texts::DataArrayName(array)),
                  [this, array] { PlotDataArray(array); });

    QMenu* analysis = menuBar()->addMenu(tr("&Analysis"));
    AddAction(analysis, "menu_StartFitting", tr("Start &Fitting"), [this] { StartFitting(); });
    AddAction(analysis, "menu_CompareFits", tr("&Compare Fits"), [this] { StartCompareFits(); });
    AddAction(analysis, "menu_NonStationary", tr("&Non-stationary Fluctuation Analysis"), [this] { ReadControls(); RunFluctuation(); });
    AddAction(analysis, "menu_simplex_User", tr("&User-defined Function..."), [this] {
        dialogs_.Message(Str(texts::kNotAvailableCaption), Str(texts::kAvailableInFuture));
    });
    BuildSpecialAnalyses(analysis);

    QMenu* groups = menuBar()->addMenu(tr("&Groups"));
    for (auto [name, mode] : {std::pair{"menu_groupBursts", GroupAssignMode::Bursts},
                              std::pair{"menu_groupEpisodic", GroupAssignMode::Episodic},
                              std::pair{"menu_groupbyrandom", GroupAssignMode::Random}})
        AddAction(groups, name, Q(GroupAssignModeName(mode)), [this, mode] {
            GroupAssignDialog d(ws_, mode, this);
            d.exec();
        });
}

}  // namespace vess::group
