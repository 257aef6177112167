#include "group_analysis/ui/group_window.h"

#include "recording/rate_defaults.h"

#include <cmath>

#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QPrintDialog>
#include <QPrintPreviewDialog>
#include <QPrinter>
#include <QPushButton>
#include <QRadioButton>
#include <QSplitter>
#include <QTableView>
#include <QVBoxLayout>

#include "app/job_runner.h"
#include "recording/number_text.h"
#include "group_analysis/texts.h"
#include "group_analysis/trace_commands.h"
#include "group_analysis/ui/trace_picture.h"
#include "recording/workspace.h"

namespace vess::group {

namespace {

QString Q(std::string_view s) { return QString::fromUtf8(s.data(), qsizetype(s.size())); }

QComboBox* Combo(const char* name, const QStringList& items, bool editable = false) {
    auto* c = new QComboBox;
    c->setObjectName(name);
    c->addItems(items);
    c->setEditable(editable);
    return c;
}

std::string Entry(const QComboBox* c) { return c->currentText().toStdString(); }

QCheckBox* Check(const char* name, const QString& text) {
    auto* c = new QCheckBox(text);
    c->setObjectName(name);
    return c;
}

}  // namespace

void ReadNumber(const QString& text, double& value) {
    bool ok = false;
    const double v = text.trimmed().toDouble(&ok);
    if (ok && std::isfinite(v)) value = v;
}

GroupAnalysisWindow::GroupAnalysisWindow(Workspace& ws, Dialogs& dialogs, JobRunner& jobs, QWidget* parent)
    : QMainWindow(parent), ws_(ws), dialogs_(dialogs, this), jobs_(jobs) {
    setObjectName("GrpAnal");
    setWindowTitle(Q(texts::kWindowCaption));
    settings_ = LoadGroupSettings(ws_.iniPath);
    if (ws_.settings.lengthsFollowRate && ws_.recording)
        settings_.blocksToAnalyse = GroupBlocks(kNewInstallationGroupStretchMs, ws_.recording->IntervalUs());
    BuildControls();
    BuildMenus();
    BuildKeys();
    WriteControls();
    connect(&jobs_, &JobRunner::RunningChanged, this, &GroupAnalysisWindow::OnJobsRunning);
    OnJobsRunning(jobs_.Running());
    printer_ = std::make_unique<QPrinter>(QPrinter::HighResolution);
    print_.choosePrinter = [this](QPrinter& printer) {
        QPrintDialog dialog(&printer, this);
        return dialog.exec() == QDialog::Accepted;
    };
    print_.showPreview = [](QPrintPreviewDialog& preview) { preview.exec(); };
    regroupTarget_->setCurrentText(QString::number(settings_.groupNumber + 1));
    if (ws_.recording) scale_ = UnitScale::Of(*ws_.recording);
    RefreshGrid();
    resize(1100, 760);
}

GroupAnalysisWindow::~GroupAnalysisWindow() = default;

void GroupAnalysisWindow::BuildControls() {
    QStringList groups;
    for (int g = 0; g <= 255; ++g) groups << QString::number(g);
    QStringList typeNames, alignNames;
    for (int k = 0; k < kAnalysisTypeCount; ++k) typeNames << Q(AnalysisTypeName(AnalysisType(k)));
    for (int k = 0; k < kAlignmentCount; ++k) alignNames << Q(AlignmentName(Alignment(k)));

    episodes_ = new QRadioButton(Q(texts::kSourceEpisodes));
    byGroup_ = new QRadioButton(Q(texts::kSourceGroup));
    episodes_->setObjectName("Option2_0");
    byGroup_->setObjectName("Option2_1");
    group_ = Combo("Combo1", groups, true);
    type_ = Combo("Combo2", typeNames);
    alignment_ = Combo("Combo3", alignNames);
    blocks_ = Combo("Combo4", {"0.0625", "0.125", "0.25", "0.5", "0.75", "1", "1.25", "1.5", "2",
                               "3", "4", "5", "10", "20", "50", "100", "1000", "2000", "3000", "4000", "5000"},
                    true);
    every_ = Combo("Combo7", {"1", "2", "5", "10", "20", "50", "100"}, true);
    gain_ = Combo("Combo5", {"0.5", "1", "2", "5", "10"}, true);
    offset_ = Combo("Combo6", {"0"}, true);
    baseline_ = Check("ckBaseline", tr("Baseline adjusted (sets baseline as zero)"));
    fullSweep_ = Check("Check10", tr("Display Full Sweep"));
    timeLock_ = Check("Check15", tr("Time-lock cursors"));
    start_ = new QPushButton(tr("&Start Display"));
    start_->setObjectName("Command1");
    traceLabel_ = new QLabel(Q(texts::TraceLabel(0, 0)));
    traceLabel_->setObjectName("Label6");
    cursorLabel_ = new QLabel;
    cursorLabel_->setObjectName("lbCursor");

    auto* display = new QGroupBox(tr("Display"));
    auto* form = new QFormLayout(display);
    auto* source = new QHBoxLayout;
    source->addWidget(episodes_);
    source->addWidget(byGroup_);
    form->addRow(source);
    form->addRow(Q(texts::kSourceGroup), group_);
    form->addRow(tr("Type"), type_);
    form->addRow(tr("Alignment"), alignment_);
    form->addRow(tr("Blocks to Analyse    (1 block=256 points)"), blocks_);
    auto* everyRow = new QHBoxLayout;
    everyRow->addWidget(every_);
    everyRow->addWidget(new QLabel(tr("Points")));
    form->addRow(tr("Display every"), everyRow);
    form->addRow(tr("Gain / offset"), [&] {
        auto* w = new QWidget;
        auto* h = new QHBoxLayout(w);
        h->setContentsMargins(0, 0, 0, 0);
        h->addWidget(gain_);
        h->addWidget(offset_);
        return w;
    }());
    form->addRow(baseline_);
    form->addRow(fullSweep_);
    form->addRow(start_);

    auto* nav = new QHBoxLayout;
    struct Nav { const char* name; const char* text; const char* tip; std::function<void()> run; };
    for (const Nav& n : {Nav{"SSCommand1_0", "|<", "Jump to Beginning", [this] { MoveTo(0); }},
                         Nav{"SpinButton5_down", "<", "Jump to previous or next window", [this] { MoveTo(current_ - 1); }},
                         Nav{"SpinButton5_up", ">", "Jump to previous or next window", [this] { MoveTo(current_ + 1); }},
                         Nav{"SSCommand1_1", ">|", "Jump to the end", [this] { MoveTo(set_.count); }}}) {
        auto* b = new QPushButton(n.text);
        b->setObjectName(n.name);
        b->setToolTip(tr(n.tip));
        b->setFocusPolicy(Qt::NoFocus);
        connect(b, &QPushButton::clicked, this, n.run);
        nav->addWidget(b);
    }
    nav->addWidget(traceLabel_, 1);
    auto* hint = new QLabel(tr("Press \"ASDF\" to navigate, \"Y\" to jump, \"K\" to remove, \"U\" to re-group."));
    hint->setObjectName("Label21");

    fitRange_ = Combo("Combo8", {Q(texts::kFitRangePeakToEnd), Q(texts::kFitRange1090),
                                 Q(texts::kFitRange2080), Q(texts::kFitRangeCustom)});
    exponentials_ = Combo("Combo9", {"1", "2", "3"});
    method_ = Combo("FitMethod", {Q(texts::kFitMethodLeastSquares), Q(texts::kFitMethodSimplex)});
    maxIter_ = Combo("Combo11", {"1000", "2000", "5000"}, true);
    rise_ = Combo("Combo29", {Q(texts::kRise1090), Q(texts::kRise2080), Q(texts::kRise3070)});
    QStringList rsq;
    for (const char* v : {"0.99", "0.98", "0.97", "0.96", "0.95", "0.94", "0.93", "0.92", "0.91",
                          "0.90", "0.85", "0.80", "0.75", "0.70", "0.65", "0.60", "0.55", "0.50",
                          "0.40", "0.30", "0.20", "0.10"})
        rsq << v;
    minRSquared_ = Combo("Combo10", rsq);
    confidence_ = Combo("Combo30", {"95", "99", "90", "80"});
    criterion_ = Combo("Combo31", {"0.1", "0.5", "1", "2", "5", "10"});
    regroupTarget_ = Combo("Combo32", groups, true);
    includeOffset_ = Check("Check3", tr("Include Offset"));
    fixAmplitude_ = Check("Check4", tr("Fix Amplitude"));
    useGuess_ = Check("UseGuess", tr("Use Initial Guesses"));
    autoReject_ = Check("Check13", tr("Auto-reject"));
    rejectCi_ = Check("Check12", tr("Auto-rejection: confidence interval (%)"));
    regroupTwo_ = Check("Check14", tr("Regroup for 2- expoential trace"));
    restart_ = Check("RestartSearch", tr("Restart the search until it settles"));
    // The restarts belong to the simplex search only.
    connect(method_, &QComboBox::currentTextChanged, this,
            [this](const QString& m) { restart_->setEnabled(m == Q(texts::kFitMethodSimplex)); });
    restart_->setEnabled(false);
    fit_ = new QPushButton(Q(texts::kStartFitting));
    fit_->setObjectName("Command2");
    fit_->setToolTip(tr("Click to stop the fitting process"));
    progress_ = new QLabel;
    progress_->setObjectName("lbProgress");
    auto* compare = new QPushButton(Q(texts::kCompareFitsCaption));
    compare->setObjectName("Command19");
    auto* useLast = new QPushButton(tr("Use Last Fit"));
    useLast->setObjectName("Command11");

    auto* fitting = new QGroupBox(tr("Curve Fitting"));
    auto* ff = new QFormLayout(fitting);
    ff->addRow(tr("Fit Range"), fitRange_);
    ff->addRow(tr("# of exponentials"), exponentials_);
    ff->addRow(tr("Fit method"), method_);
    ff->addRow(tr("Max iterations"), maxIter_);
    ff->addRow(tr("Rise"), rise_);
    ff->addRow(includeOffset_);
    ff->addRow(fixAmplitude_);
    ff->addRow(useGuess_);
    ff->addRow(restart_);
    ff->addRow(autoReject_, minRSquared_);
    ff->addRow(rejectCi_, confidence_);
    ff->addRow(tr("Criterion: Change in R-sqr (%)"), criterion_);
    ff->addRow(regroupTwo_);
    ff->addRow(tr("Group #:"), regroupTarget_);
    auto* fitButtons = new QHBoxLayout;
    fitButtons->addWidget(fit_);
    fitButtons->addWidget(compare);
    fitButtons->addWidget(useLast);
    ff->addRow(fitButtons);
    ff->addRow(progress_);

    amplitudeBins_ = Combo("Text4", {"10", "20", "50", "100", "200"}, true);
    averageTraces_ = Combo("Combo18", {"0", "3", "5", "10", "20"}, true);
    subtractBaseVar_ = Check("Check5", tr("Subtract baseline variance"));
    fluctuationOffset_ = Check("Check6", tr("Include Offset"));
    auto* fluctuation = new QGroupBox(tr("Non-stationary Fluctuation"));
    auto* nf = new QFormLayout(fluctuation);
    nf->addRow(tr("Amplitude bins"), amplitudeBins_);
    nf->addRow(tr("Traces in the running mean (0: all)"), averageTraces_);
    nf->addRow(subtractBaseVar_);
    nf->addRow(fluctuationOffset_);

    picture_ = new TracePicture;
    report_ = new QPlainTextEdit;
    report_->setObjectName("Text1");
    report_->setReadOnly(true);
    report_->setMaximumHeight(150);
    grid_ = new QTableView;
    gridModel_ = new ResultsGridModel(ws_.results, grid_);
    grid_->setModel(gridModel_);
    grid_->setObjectName("TDBGrid1");
    grid_->setSelectionBehavior(QAbstractItemView::SelectRows);
    grid_->setEditTriggers(QAbstractItemView::NoEditTriggers);

    auto* buttons = new QHBoxLayout;
    struct Btn { const char* name; const char* text; std::function<void()> run; };
    for (const Btn& b : {Btn{"Command3", "Save Settings", [this] { ReadControls(); ShowFailure(dialogs_, SaveGroupSettingsCommand(ws_.iniPath, settings_, dialogs_)); }},
                         Btn{"Command10", "Delete Last Result", [this] { Action("menu_LastResult")->trigger(); }},
                         Btn{"Command5", "Clear Results", [this] { Action("menu_ClearResults")->trigger(); }}}) {
        auto* w = new QPushButton(tr(b.text));
        w->setObjectName(b.name);
        connect(w, &QPushButton::clicked, this, b.run);
        buttons->addWidget(w);
    }

    auto* left = new QWidget;
    auto* lv = new QVBoxLayout(left);
    lv->addWidget(display);
    lv->addWidget(fitting);
    lv->addWidget(fluctuation);
    lv->addWidget(BuildAnalysisSettings());
    lv->addWidget(BuildReleaseSettings());
    lv->addLayout(buttons);
    lv->addStretch();
    auto* right = new QWidget;
    auto* rv = new QVBoxLayout(right);
    rv->addLayout(nav);
    rv->addWidget(picture_, 3);
    rv->addWidget(cursorLabel_);
    rv->addWidget(timeLock_);
    rv->addWidget(hint);
    rv->addWidget(report_);
    rv->addWidget(grid_, 2);
    auto* split = new QSplitter;
    split->addWidget(left);
    split->addWidget(right);
    split->setStretchFactor(1, 1);
    setCentralWidget(split);

    connect(start_, &QPushButton::clicked, this, &GroupAnalysisWindow::StartDisplay);
    connect(fit_, &QPushButton::clicked, this, [this] {
        if (fitting_) jobs_.Stop();
        else StartFitting();
    });
    connect(compare, &QPushButton::clicked, this, [this] { Action("menu_CompareFits")->trigger(); });
    connect(useLast, &QPushButton::clicked, this, [this] {
        if (lastFits_.empty()) return;
        UseLastFit(settings_, lastFits_.back().values);
        useGuess_->setChecked(true);
    });
    connect(fitRange_, &QComboBox::currentTextChanged, this, [this](const QString& t) {
        if (t == Q(texts::kFitRangeCustom))
            dialogs_.Message(std::string(texts::kSetRangeCaption), std::string(texts::kSetRangeText));
    });
    connect(picture_, &TracePicture::CursorsMoved, this, &GroupAnalysisWindow::UpdateCursorLabel);
    connect(every_, &QComboBox::currentTextChanged, this,
            [this](const QString& t) { picture_->SetDecimation(WholeEntryOr(t.toStdString(), 1, 1, 1000000)); });
    auto gainOffset = [this] {
        picture_->SetGainOffset(NumberEntryOr(Entry(gain_), 1, 1e-9, 1e9), NumberEntryOr(Entry(offset_), 0, -1e300, 1e300));
    };
    connect(gain_, &QComboBox::currentTextChanged, this, gainOffset);
    connect(offset_, &QComboBox::currentTextChanged, this, gainOffset);
}

void GroupAnalysisWindow::ReadControls() {
    GroupAnalysisSettings& s = settings_;
    s.useGroups = byGroup_->isChecked();
    s.groupNumber = WholeEntryOr(Entry(group_), s.groupNumber, 0, 255);
    s.analysisType = type_->currentText().toStdString();
    s.alignment = alignment_->currentText().toStdString();
    s.blocksToAnalyse = NumberEntryOr(Entry(blocks_), s.blocksToAnalyse, 0, 1e9);
    s.displayEveryPoint = WholeEntryOr(Entry(every_), s.displayEveryPoint, 1, 1000000);
    ReadNumber(gain_->currentText(), s.displayGain);
    ReadNumber(offset_->currentText(), s.displayOffset);
    s.adjustBaseline = baseline_->isChecked();
    s.fitRange = fitRange_->currentText().toStdString();
    s.exponentials = WholeEntryOr(Entry(exponentials_), s.exponentials, 1, 3);
    s.maxIterations = WholeEntryOr(Entry(maxIter_), s.maxIterations, 1, 100000000);
    s.riseRange = rise_->currentIndex();
    s.includeOffset = includeOffset_->isChecked();
    s.fixAmplitude = fixAmplitude_->isChecked();
    s.useGuess = useGuess_->isChecked();
    s.fitMethod = method_->currentText().toStdString();
    s.restartSearch = restart_->isChecked();
    s.amplitudeBins = WholeEntryOr(Entry(amplitudeBins_), s.amplitudeBins, 1, 1000000);
    s.averageTraces = WholeEntryOr(Entry(averageTraces_), s.averageTraces, 0, 1000000);
    s.subtractBaselineVariance = subtractBaseVar_->isChecked();
    s.nonStationaryOffset = fluctuationOffset_->isChecked();
    ReadAnalysisControls();
    ReadReleaseControls();
}

void GroupAnalysisWindow::WriteControls() {
    const GroupAnalysisSettings& s = settings_;
    (s.useGroups ? byGroup_ : episodes_)->setChecked(true);
    group_->setCurrentText(QString::number(s.groupNumber));
    type_->setCurrentText(QString::fromStdString(s.analysisType));
    alignment_->setCurrentText(QString::fromStdString(s.alignment));
    blocks_->setCurrentText(QString::fromStdString(ShortestText(s.blocksToAnalyse)));
    every_->setCurrentText(QString::number(s.displayEveryPoint));
    gain_->setCurrentText(QString::fromStdString(ShortestText(s.displayGain)));
    offset_->setCurrentText(QString::fromStdString(ShortestText(s.displayOffset)));
    baseline_->setChecked(s.adjustBaseline);
    fitRange_->blockSignals(true);
    fitRange_->setCurrentText(QString::fromStdString(s.fitRange));
    fitRange_->blockSignals(false);
    exponentials_->setCurrentText(QString::number(s.exponentials));
    maxIter_->setCurrentText(QString::number(s.maxIterations));
    rise_->setCurrentIndex(std::clamp(s.riseRange, 0, 2));
    includeOffset_->setChecked(s.includeOffset);
    fixAmplitude_->setChecked(s.fixAmplitude);
    useGuess_->setChecked(s.useGuess);
    method_->setCurrentText(Q(FitMethodName(FitMethodFromName(s.fitMethod))));
    restart_->setChecked(s.restartSearch);
    amplitudeBins_->setCurrentText(QString::number(s.amplitudeBins));
    averageTraces_->setCurrentText(QString::number(s.averageTraces));
    subtractBaseVar_->setChecked(s.subtractBaselineVariance);
    fluctuationOffset_->setChecked(s.nonStationaryOffset);
    WriteAnalysisControls();
    WriteReleaseControls();
}

void GroupAnalysisWindow::UpdateCursorLabel() {
    auto f = [](double v) { return QString::fromStdString(FixedOrSignificant(v, 3)); };
    const int32_t c1 = picture_->Cursor(0), c2 = picture_->Cursor(1);
    cursorLabel_->setText("x1:" + f(set_.TimeMs(c1)) + "  y1:" + f(picture_->ValueAt(c1)) + "    x2:" +
                          f(set_.TimeMs(c2)) + "  y2:" + f(picture_->ValueAt(c2)));
}

// The keys work wherever the focus is in the window, except while typing in
// a text field, which takes its letters first.
void GroupAnalysisWindow::BuildKeys() {
    struct Key { const char* name; Qt::Key key; std::function<void()> run; };
    for (const Key& k : {Key{"key_first", Qt::Key_A, [this] { MoveTo(0); }},
                         Key{"key_previous", Qt::Key_S, [this] { MoveTo(current_ - 1); }},
                         Key{"key_next", Qt::Key_D, [this] { MoveTo(current_ + 1); }},
                         Key{"key_last", Qt::Key_F, [this] { MoveTo(set_.count); }},
                         Key{"key_jump", Qt::Key_Y, [this] { JumpToTrace(); }}}) {
        auto* a = new QAction(this);
        a->setObjectName(k.name);
        a->setShortcut(QKeySequence(k.key));
        a->setShortcutContext(Qt::WindowShortcut);
        connect(a, &QAction::triggered, this, k.run);
        addAction(a);
        actions_[k.name] = a;
    }
    Action("menu_trace_remove")->setShortcut(QKeySequence(Qt::Key_K));
    Action("menu_trace_regroup")->setShortcut(QKeySequence(Qt::Key_U));
}

}  // namespace vess::group
