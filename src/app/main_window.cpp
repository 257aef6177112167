#include "app/main_window.h"

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QFileInfo>
#include <QGridLayout>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QScrollBar>
#include <QSettings>
#include <QSplitter>
#include <QTimer>
#include <QStatusBar>
#include <QTableView>
#include <QToolTip>
#include <QVBoxLayout>

#include "app/job_runner.h"
#include "app/nonstop_runner.h"
#include "detection/navigation.h"
#include "detection/ui/event_sound.h"
#include "detection/ui/overview_strip.h"
#include "detection/ui/parameter_panel.h"
#include "detection/ui/texts.h"
#include "detection/ui/trace_view.h"
#include "recording/event_grid_format.h"
#include "recording/event_file.h"
#include "recording/open_recording.h"
#include "recording/screen.h"
#include "recording/settings_file.h"
#include "recording/texts.h"
#include "recording/ui/event_grid_model.h"
#include "recording/ui/file_browser.h"

namespace vess {

MainWindow::MainWindow(Workspace& ws, Dialogs& dialogs, QWidget* parent)
    : QMainWindow(parent), ws_(ws), dialogs_(dialogs), nonStop_(std::make_unique<NonStopRunner>(ws)),
      sound_(std::make_unique<EventSound>()) {
    setObjectName("frmMain");
    setWindowTitle("Vessantorium");
    setAcceptDrops(true);
    BuildLayout();
    BuildMenus();
    connect(nonStop_.get(), &NonStopRunner::Progress, this, &MainWindow::OnNonStopProgress);
    connect(nonStop_.get(), &NonStopRunner::EventsStored, this,
            [this](int count) { sound_->Stored(count, ws_.settings.soundOn); });
    qApp->installEventFilter(this);

    // Start folder: the data folder of the settings when it exists, else home.
    const QString dataDir = QString::fromStdString(ws_.settings.dataFolder);
    files_->SetFolder(!dataDir.isEmpty() && QDir(dataDir).exists() ? dataDir : QDir::homePath());
    RestoreGeometry();
    RefreshAll();
}

MainWindow::~MainWindow() = default;

void MainWindow::BuildLayout() {
    files_ = new FileBrowser(this);
    connect(files_, &FileBrowser::FileChosen, this, &MainWindow::OnFileChosen);
    connect(files_, &FileBrowser::FolderChanged, this, [this](const QString& folder) {
        ws_.settings.dataFolder = QDir::toNativeSeparators(folder).toStdString();
    });

    trace_ = new TraceView(this);
    connect(trace_, &TraceView::TraceClicked, this, &MainWindow::OnTraceClicked);
    connect(trace_, &TraceView::PointerMoved, this, [this](double ms, double level) {
        statusPointer_->setText(QString("%1 ms, %2 %3")
                                    .arg(ms, 0, 'f', 2)
                                    .arg(level, 0, 'f', 2)
                                    .arg(ws_.recording ? QString::fromStdString(ws_.recording->Units())
                                                       : QString()));
    });
    overview_ = new OverviewStrip(this);
    connect(overview_, &OverviewStrip::SampleChosen, this, &MainWindow::OnOverviewSample);
    scroll_ = new QScrollBar(Qt::Horizontal, this);
    scroll_->setObjectName("HScroll1");
    scroll_->setToolTip(tr("Screens of the recording"));
    connect(scroll_, &QScrollBar::valueChanged, this, &MainWindow::OnScroll);
    cursorLabel_ = new QLabel(this);
    cursorLabel_->setObjectName("lbCursor");
    cursorLabel_->setTextInteractionFlags(Qt::TextSelectableByMouse);
    connect(trace_, &TraceView::CursorReadoutChanged, cursorLabel_, &QLabel::setText);

    gridModel_ = new EventGridModel(ws_, this);
    grid_ = new QTableView(this);
    grid_->setObjectName("TDBGrid1");
    grid_->setModel(gridModel_);
    grid_->setSelectionBehavior(QAbstractItemView::SelectRows);
    grid_->setSelectionMode(QAbstractItemView::ExtendedSelection);
    grid_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    grid_->setAlternatingRowColors(true);
    grid_->verticalHeader()->setDefaultSectionSize(grid_->fontMetrics().height() + 6);
    grid_->verticalHeader()->hide();
    grid_->horizontalHeader()->setDefaultSectionSize(84);
    // A click on a column title sorts the table by that column (undoable).
    grid_->horizontalHeader()->setSectionsClickable(true);
    grid_->horizontalHeader()->setToolTip(tr("Click a column title to sort the events by it"));
    connect(grid_->horizontalHeader(), &QHeaderView::sectionClicked, this,
            &MainWindow::OnGridHeaderClicked);
    grid_->setContextMenuPolicy(Qt::ActionsContextMenu);
    connect(grid_->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
            [this](const QModelIndex& current) { OnGridRowChosen(current.row()); });

    params_ = new ParameterPanel(this);
    connect(params_, &ParameterPanel::ParametersEdited, this, &MainWindow::OnParametersEdited);
    connect(params_, &ParameterPanel::NumberPointsPeakChosen, this, &MainWindow::OnNumberPointsPeak);
    connect(params_, &ParameterPanel::SoundToggled, this, [this](bool on) { ws_.settings.soundOn = on; });
    connect(params_, &ParameterPanel::BlocksPerScreenChosen, this, &MainWindow::OnBlocksPerScreen);
    // After Enter in a box the letter keys act on the trace again.
    connect(params_, &ParameterPanel::EditingDone, this, [this] { trace_->setFocus(Qt::OtherFocusReason); });
    connect(params_, &ParameterPanel::MethodChosen, this, &MainWindow::OnMethodChosen);
    connect(params_, &ParameterPanel::MethodParametersEdited, this, &MainWindow::OnMethodParametersEdited);

    // Buttons; the actions behind them are made in BuildMenus.
    auto* buttons = new QWidget(this);
    auto* grid = new QGridLayout(buttons);
    grid->setContentsMargins(0, 0, 0, 0);
    const char* captions[] = {"Analyze", "Next window", "Non-stop", "Stop", "Reset",
                              "Save settings", "Save settings"};
    for (int i = 0; i < 7; ++i) {
        auto* b = new QPushButton(tr(captions[i]), buttons);
        b->setObjectName(QString("Command%1").arg(i + 1));
        b->setFocusPolicy(Qt::NoFocus);
        buttons_.push_back(b);
    }
    buttons_[6]->hide();  // Command7 duplicates Command6; kept for its name
    for (int i = 0; i < 6; ++i) grid->addWidget(buttons_[std::size_t(i)], i / 2, i % 2);
    groupNav_ = new QComboBox(buttons);
    groupNav_->setObjectName("cbGpNav");
    for (const std::string& item : GroupNavigationItems())
        groupNav_->addItem(QString::fromStdString(item));
    groupNav_->setToolTip(tr("Group followed by the grouped-event jumps (1 2 3 4)"));
    connect(groupNav_, &QComboBox::activated, this, [this](int item) { ws_.settings.navigationGroup = item; });
    grid->addWidget(new QLabel(tr("Navigate group"), buttons), 3, 0);
    grid->addWidget(groupNav_, 3, 1);
    progress_ = new QProgressBar(buttons);
    progress_->setObjectName("pbNonStop");
    progress_->setTextVisible(true);
    ResetProgress();
    grid->addWidget(progress_, 4, 0, 1, 2);

    auto* left = new QWidget(this);
    auto* leftLayout = new QVBoxLayout(left);
    leftLayout->setContentsMargins(4, 4, 4, 4);
    leftSplit_ = new QSplitter(Qt::Vertical, left);
    leftSplit_->setObjectName("splitLeft");
    leftSplit_->addWidget(files_);
    auto* controls = new QWidget(leftSplit_);
    auto* controlsLayout = new QVBoxLayout(controls);
    controlsLayout->setContentsMargins(0, 0, 0, 0);
    controlsLayout->addWidget(params_);
    controlsLayout->addWidget(buttons);
    controlsLayout->addStretch();
    leftSplit_->addWidget(controls);
    leftSplit_->setStretchFactor(0, 1);
    leftLayout->addWidget(leftSplit_);

    auto* traceBox = new QWidget(this);
    auto* traceLayout = new QVBoxLayout(traceBox);
    traceLayout->setContentsMargins(0, 0, 0, 0);
    traceLayout->setSpacing(2);
    traceLayout->addWidget(trace_, 1);
    traceLayout->addWidget(overview_);
    traceLayout->addWidget(scroll_);
    traceLayout->addWidget(cursorLabel_);

    rightSplit_ = new QSplitter(Qt::Vertical, this);
    rightSplit_->setObjectName("splitRight");
    rightSplit_->addWidget(traceBox);
    rightSplit_->addWidget(grid_);
    rightSplit_->setStretchFactor(0, 3);
    rightSplit_->setStretchFactor(1, 2);

    mainSplit_ = new QSplitter(Qt::Horizontal, this);
    mainSplit_->setObjectName("splitMain");
    mainSplit_->addWidget(left);
    mainSplit_->addWidget(rightSplit_);
    mainSplit_->setStretchFactor(1, 1);
    mainSplit_->setSizes({330, 950});
    setCentralWidget(mainSplit_);

    statusFile_ = new QLabel(this);
    statusChannel_ = new QLabel(this);
    statusScreen_ = new QLabel(this);
    statusPointer_ = new QLabel(this);
    statusEvents_ = new QLabel(this);
    statusFile_->setObjectName("lbFile");
    statusPointer_->setObjectName("lbPointer");
    statusScreen_->setObjectName("lbScreen");
    statusEvents_->setObjectName("lbEvents");
    statusBar()->addWidget(statusFile_, 2);
    for (QLabel* l : {statusChannel_, statusScreen_, statusPointer_, statusEvents_})
        statusBar()->addWidget(l, 1);
    // Names and numbers, never markup (a file may be named "<b>.abf").
    for (QLabel* l : {statusFile_, statusChannel_, statusScreen_, statusPointer_, statusEvents_})
        l->setTextFormat(Qt::PlainText);
    jobs_ = new JobRunner(dialogs_, this);
    statusBar()->addPermanentWidget(jobs_);
    BuildFilterIndicator();
    connect(jobs_, &JobRunner::RunningChanged, this, &MainWindow::RefreshActions);
    resize(1280, 820);
}

void MainWindow::RestoreGeometry() {
    QSettings s("Vessantorium", "Workbench");
    if (s.contains("geometry")) restoreGeometry(s.value("geometry").toByteArray());
    for (QSplitter* sp : {leftSplit_, rightSplit_, mainSplit_})
        if (s.contains(sp->objectName())) sp->restoreState(s.value(sp->objectName()).toByteArray());
}

void MainWindow::SaveGeometry() {
    QSettings s("Vessantorium", "Workbench");
    s.setValue("geometry", saveGeometry());
    for (QSplitter* sp : {leftSplit_, rightSplit_, mainSplit_}) s.setValue(sp->objectName(), sp->saveState());
}

QAction* MainWindow::Action(const QString& objectName) const {
    const auto it = actions_.find(objectName);
    return it == actions_.end() ? nullptr : it->second;
}

QComboBox* MainWindow::PointsAtPeakBox() const { return params_->PointsAtPeakBox(); }
bool MainWindow::NonStopRunning() const { return nonStop_->Running(); }
bool MainWindow::Busy() const { return NonStopRunning() || jobs_->Running(); }

// ---- Redrawing ---------------------------------------------------------------

void MainWindow::RefreshAll() {
    RebuildScreen();
    params_->Show(ws_.settings, ws_.recording ? ws_.recording->Units() : std::string(),
                  ws_.recording ? ws_.recording->IntervalUs() : 0.0);
    groupNav_->setCurrentIndex(GroupNavigationFilter(ws_.settings));
    RefreshGrid();
    RefreshTrace();
    RefreshStatus();
    RefreshActions();
}

// Whether a screen is the one the workspace shows, read from the samples the
// user chose to see (the filtered copy or the recording).
bool MainWindow::IsScreenToShow(const Screen& screen) const {
    return screen.Valid() && &screen.Rec() == ws_.recording.get() && screen.StartBlock() == ws_.screenStartBlock &&
           screen.BlocksPerScreen() == ws_.BlocksPerScreen() &&
           screen.Filtered() == (ws_.showFiltered && ws_.recording->HasFiltered());
}

void MainWindow::ForgetScreen() {
    trace_->SetScreen(nullptr);
    screen_.reset();
    overview_->SetRecording(nullptr);
}

void MainWindow::RebuildScreen() {
    if (!ws_.recording) {
        if (screen_) ForgetScreen();
        return;
    }
    if (screen_ && IsScreenToShow(*screen_)) return;
    // The screen shows what the user chose to see; every other read goes
    // on from what detection reads.
    ws_.recording->ReadFiltered(ws_.showFiltered);
    auto screen = std::make_unique<Screen>(*ws_.recording, ws_.screenStartBlock, ws_.BlocksPerScreen());
    ws_.recording->ReadFiltered(ws_.settings.detectOnFiltered);
    ShowScreenRead(std::move(screen));
}

void MainWindow::OfferScreen(Screen&& screen) {
    if (!ws_.recording || !IsScreenToShow(screen) || (screen_ && IsScreenToShow(*screen_))) return;
    ShowScreenRead(std::make_unique<Screen>(std::move(screen)));
}

void MainWindow::ShowScreenRead(std::unique_ptr<Screen> screen) {
    // Opening a file lets go of the screen first and refits the frame itself.
    const bool newRecording = screen_ && &screen_->Rec() != &screen->Rec();
    screen_ = std::move(screen);
    if (newRecording) trace_->ResetScale();
    trace_->SetScreen(screen_.get());
    // After the redraw that is under way, not inside it.
    if (!screen_->Complete()) QTimer::singleShot(0, this, &MainWindow::ReportReadFaultOnce);
}

void MainWindow::ReportReadFaultOnce() {
    if (ReportReadFault(ws_, dialogs_, [this] { return ShowFailure(dialogs_, SaveEventFileCommand(ws_, dialogs_)); }))
        RefreshStatus();
}

void MainWindow::RefreshTrace() {
    RebuildScreen();
    trace_->SetEvents(&ws_.events, &ws_.params());
    trace_->SetSelectedEvent(ws_.selectedEvent);
    trace_->SetDisplay(DisplayScaleFromSettings(ws_.settings), ws_.settings.lockBaseline);
    const ScreenGeometry g = GeometryOf(ws_);
    if (overview_->SetRecording(ws_.recording.get())) ReadOverview();
    overview_->SetEvents(&ws_.events, ws_.selectedEvent);
    overview_->SetScreen(int64_t(ws_.screenStartBlock) * kBlockPoints,
                         int64_t(g.blocksPerScreen) * kBlockPoints);
    const QSignalBlocker block(scroll_);
    if (g.HasRecording()) {
        scroll_->setEnabled(true);
        scroll_->setRange(0, g.LastScreenStart() / g.blocksPerScreen);
        scroll_->setPageStep(1);
        scroll_->setValue(ws_.screenStartBlock / g.blocksPerScreen);
    } else {
        scroll_->setEnabled(false);
        scroll_->setRange(0, 0);
    }
}

void MainWindow::ResetProgress() {
    progress_->setRange(0, 100);
    progress_->setValue(0);
    progress_->setFormat(tr("Ready"));
}

void MainWindow::RefreshGrid() {
    gridModel_->Sync();
    if (fitColumns_) {
        FitGridColumns();
        fitColumns_ = false;
    }
    ShowSelection();
}

// Columns wide enough for their captions (the units change with the file) and
// for the widest value the column can hold in this recording.
void MainWindow::FitGridColumns() {
    const QFontMetrics header(grid_->horizontalHeader()->font());
    const QFontMetrics cells(grid_->font());
    for (int c = 0; c < gridModel_->columnCount(); ++c) {
        const QString caption = gridModel_->headerData(c, Qt::Horizontal, Qt::DisplayRole).toString();
        const QString widest = QString::fromStdString(EventColumnWidestText(ws_.recording.get(), c));
        grid_->setColumnWidth(c, std::max({48, header.horizontalAdvance(caption) + 22,
                                           cells.horizontalAdvance(widest) + 14}));
    }
}

void MainWindow::ShowSelection() {
    syncingSelection_ = true;
    const int row = ws_.selectedEvent - 1;
    if (row >= 0 && row < gridModel_->rowCount()) {
        const QModelIndex index = gridModel_->index(row, 0);
        const bool moved = grid_->currentIndex().row() != row;
        if (moved)
            grid_->selectionModel()->setCurrentIndex(
                index, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
        // A shown grid scrolls to its new current row by itself; a row kept
        // is brought back into view unless nothing moved since it was.
        const GridView view = GridViewNow(row);
        if ((!moved && view != gridShown_) || !grid_->hasAutoScroll() || !grid_->isVisible())
            grid_->scrollTo(index);
        gridShown_ = GridViewNow(row);
    } else {
        if (grid_->currentIndex().isValid()) grid_->selectionModel()->clear();
        gridShown_ = {};
    }
    trace_->SetSelectedEvent(ws_.selectedEvent);
    overview_->SetSelectedEvent(ws_.selectedEvent);
    syncingSelection_ = false;
}

MainWindow::GridView MainWindow::GridViewNow(int row) const {
    return {row, gridModel_->rowCount(), grid_->verticalScrollBar()->value(),
            grid_->horizontalScrollBar()->value(), grid_->viewport()->size()};
}

void MainWindow::AfterEdit(bool changed) {
    if (changed) gridModel_->ContentChanged();
    RefreshGrid();
    RefreshTrace();
    RefreshStatus();
    RefreshActions();
}

std::vector<int32_t> MainWindow::SelectedRows() const {
    std::vector<int32_t> rows;
    for (const QModelIndex& i : grid_->selectionModel()->selectedRows()) rows.push_back(i.row() + 1);
    std::sort(rows.begin(), rows.end());
    return rows;
}

// ---- Tool-tips -----------------------------------------------------------------

bool MainWindow::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::ToolTip && !ws_.settings.showToolTips) return true;
    return QMainWindow::eventFilter(watched, event);
}

}  // namespace vess
