#include "batch/ui/batch_window.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QFileDialog>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QSpinBox>
#include <QStyledItemDelegate>
#include <QTableWidget>
#include <QVBoxLayout>

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <set>
#include <thread>

#include "batch/texts.h"
#include "recording/file_io.h"
#include "recording/method_settings.h"
#include "recording/save_path.h"

namespace vess {
namespace {

namespace t = batch_texts;

QString Q(std::string_view s) { return QString::fromUtf8(s.data(), qsizetype(s.size())); }

// Paints a cell's percentage (its display value) as a progress bar.
class ProgressDelegate : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;
    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override {
        QStyleOptionProgressBar bar;
        bar.rect = option.rect.adjusted(2, 2, -2, -2);
        bar.minimum = 0;
        bar.maximum = 100;
        bar.progress = index.data(Qt::DisplayRole).toInt();
        bar.text = QString::number(bar.progress) + "%";
        bar.textVisible = true;
        bar.state = option.state | QStyle::State_Horizontal;
        QApplication::style()->drawControl(QStyle::CE_ProgressBar, &bar, painter);
    }
};

QString Number(double value, const char* format) {
    return std::isfinite(value) ? QString::fromStdString(fmt::format(fmt::runtime(format), value))
                                : QString();
}

}  // namespace

BatchWindow::BatchWindow(Workspace& ws, Dialogs& dialogs, QWidget* parent)
    : QWidget(parent), ws_(ws), dialogs_(dialogs) {
    setObjectName("BatchWindow");
    setWindowTitle(Q(t::kWindowTitle));
    BuildForm();
    UpdateButtons();
}

BatchWindow::~BatchWindow() {
    stop_ = true;
    JoinRunner();
}

void BatchWindow::BuildForm() {
    auto* addFiles = new QPushButton(Q(t::kAddFiles));
    auto* addFolder = new QPushButton(Q(t::kAddFolder));
    auto* clear = new QPushButton(Q(t::kClear));
    addFiles->setObjectName("addFiles");
    addFolder->setObjectName("addFolder");
    clear->setObjectName("clearFiles");
    connect(addFiles, &QPushButton::clicked, this, [this] {
        const QStringList names = QFileDialog::getOpenFileNames(
            this, Q(t::kAddFiles), QString::fromStdString(ws_.settings.DataDir), Q(t::kRecordingFilter));
        std::vector<std::filesystem::path> paths;
        for (const QString& n : names) paths.emplace_back(n.toStdString());
        AddRecordings(paths);
    });
    connect(addFolder, &QPushButton::clicked, this, [this] {
        const QString folder = QFileDialog::getExistingDirectory(
            this, Q(t::kAddFolder), QString::fromStdString(ws_.settings.DataDir));
        if (!folder.isEmpty()) AddRecordings({folder.toStdString()});
    });
    connect(clear, &QPushButton::clicked, this, [this] {
        files_.clear();
        ShowFiles();
    });

    channel_ = new QSpinBox;
    channel_->setObjectName("channel");
    channel_->setRange(0, kMaxChannels - 1);
    source_box_ = new QComboBox;
    source_box_->setObjectName("settingsSource");
    source_box_->addItems({Q(t::kCurrentSettings), Q(t::kSettingsFile), Q(t::kParameterFile)});
    source_file_ = new QLabel;
    auto* chooseSource = new QPushButton(Q(t::kChoose));
    chooseSource->setObjectName("chooseSettings");
    connect(source_box_, &QComboBox::activated, this, [this](int i) {
        source_ = SettingsSource(i);
        sourceFile_.clear();
        if (source_ != SettingsSource::Current) ChooseSettingsFile();
        UpdateButtons();
    });
    connect(chooseSource, &QPushButton::clicked, this, &BatchWindow::ChooseSettingsFile);
    method_ = new QComboBox;
    method_->setObjectName("method");
    for (DetectionMethod m : {DetectionMethod::Threshold, DetectionMethod::Deconvolution,
                              DetectionMethod::Template})
        method_->addItem(Q(MethodName(m)));
    method_->setCurrentIndex(int(ws_.settings.method.method));
    out_dir_ = new QLabel(Q(t::kBesideRecordings));
    out_dir_->setObjectName("outputFolder");
    auto* chooseOut = new QPushButton(Q(t::kChoose));
    connect(chooseOut, &QPushButton::clicked, this, [this] {
        const QString folder = QFileDialog::getExistingDirectory(this, Q(t::kOutputFolder));
        if (!folder.isEmpty()) SetOutputFolder(folder.toStdString());
    });
    jobs_ = new QSpinBox;
    jobs_->setObjectName("jobs");
    jobs_->setRange(1, 256);
    jobs_->setValue(WorkerCount(0, 256));

    auto* form = new QFormLayout;
    form->setFieldGrowthPolicy(QFormLayout::FieldsStayAtSizeHint);
    auto* sourceRow = new QHBoxLayout;
    sourceRow->addWidget(source_box_);
    sourceRow->addWidget(source_file_);
    sourceRow->addWidget(chooseSource);
    auto* outRow = new QHBoxLayout;
    outRow->addWidget(out_dir_);
    outRow->addWidget(chooseOut);
    form->addRow(Q(t::kChannel), channel_);
    form->addRow(Q(t::kSettings), sourceRow);
    form->addRow(Q(t::kMethod), method_);
    form->addRow(Q(t::kOutputFolder), outRow);
    form->addRow(Q(t::kJobs), jobs_);
    overwrite_ = new QCheckBox(Q(t::kOverwrite));
    overwrite_->setObjectName("overwrite");
    overwrite_->setToolTip("Unticked, a recording whose event file exists is skipped and the file kept");
    form->addRow(QString(), overwrite_);

    table_ = new QTableWidget(0, int(t::kSummaryColumns.size()) + 1);
    table_->setObjectName("summary");
    QStringList headers{Q(t::kProgress)};
    for (std::string_view c : t::kSummaryColumns) headers << Q(c);
    table_->setHorizontalHeaderLabels(headers);
    table_->setItemDelegateForColumn(kProgressColumn, new ProgressDelegate(table_));
    table_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    table_->horizontalHeader()->setStretchLastSection(true);
    table_->verticalHeader()->hide();

    overall_ = new QProgressBar;
    overall_->setObjectName("overallProgress");
    run_ = new QPushButton(Q(t::kRun));
    run_->setObjectName("run");
    stop_button_ = new QPushButton(Q(t::kStop));
    stop_button_->setObjectName("stop");
    save_ = new QPushButton(Q(t::kSaveSummary));
    save_->setObjectName("saveSummary");
    connect(run_, &QPushButton::clicked, this, &BatchWindow::Run);
    connect(stop_button_, &QPushButton::clicked, this, &BatchWindow::Stop);
    connect(save_, &QPushButton::clicked, this, &BatchWindow::SaveSummary);

    auto* fileButtons = new QHBoxLayout;
    fileButtons->addWidget(addFiles);
    fileButtons->addWidget(addFolder);
    fileButtons->addWidget(clear);
    fileButtons->addStretch();
    auto* runButtons = new QHBoxLayout;
    runButtons->addWidget(run_);
    runButtons->addWidget(stop_button_);
    runButtons->addWidget(overall_, 1);
    runButtons->addWidget(save_);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(fileButtons);
    layout->addLayout(form);
    layout->addWidget(table_, 1);
    layout->addLayout(runButtons);
    resize(980, 480);
}

void BatchWindow::AddRecordings(const std::vector<std::filesystem::path>& paths) {
    std::vector<std::filesystem::path> all = files_;
    all.insert(all.end(), paths.begin(), paths.end());
    files_ = ExpandRecordings(all);
    ShowFiles();
}

void BatchWindow::SetOutputFolder(const std::filesystem::path& folder) {
    outDir_ = folder;
    out_dir_->setText(folder.empty() ? Q(t::kBesideRecordings) : QString::fromStdString(folder.string()));
}

void BatchWindow::SetSettingsSource(SettingsSource source, const std::filesystem::path& file) {
    source_ = source;
    sourceFile_ = file;
    source_box_->setCurrentIndex(int(source));
    source_file_->setText(QString::fromStdString(file.filename().string()));
    UpdateButtons();
}

void BatchWindow::ChooseSettingsFile() {
    const bool set = source_ == SettingsSource::SettingsFile;
    const FileDialogRequest request{std::string(t::kSettings),
                                    set ? "Settings File (*.SET)" : "Parameter File (*.PAR)",
                                    set ? "SET" : "PAR", {}};
    if (const auto path = ChooseOpenPath(dialogs_, request)) SetSettingsSource(source_, *path);
}

void BatchWindow::ShowFiles() {
    rows_.clear();
    table_->setRowCount(int(files_.size()));
    for (std::size_t i = 0; i < files_.size(); ++i) {
        BatchRow row;
        row.file = files_[i];
        ShowRow(i, row);
        SetProgress(i, 0);
    }
    overall_->setValue(0);
    table_->resizeColumnsToContents();
    UpdateButtons();
}

void BatchWindow::SetProgress(std::size_t index, int percent) {
    auto* item = new QTableWidgetItem;
    item->setData(Qt::DisplayRole, percent);
    table_->setItem(int(index), kProgressColumn, item);
}

void BatchWindow::ShowRow(std::size_t index, const BatchRow& r) {
    const bool opened = std::isfinite(r.durationS);
    const QStringList cells{QString::fromStdString(r.file.filename().string()),
                            QString::number(r.channel),
                            Number(r.durationS, "{:.3f}"),
                            opened ? QString::number(r.events) : QString(),
                            Number(r.frequencyHz, "{:.4f}"),
                            Number(r.medianAmplitude, "{:.5g}"),
                            QString::fromStdString(r.units),
                            Number(r.medianRise1090Ms, "{:.4g}"),
                            Number(r.medianHalfWidthMs, "{:.4g}"),
                            Number(r.medianDecayMs, "{:.4g}"),
                            QString::fromStdString(r.errors)};
    for (int c = 0; c < cells.size(); ++c) {
        auto* item = new QTableWidgetItem(cells[c]);
        if (c == 0) item->setToolTip(QString::fromStdString(r.file.string()));
        if (c == cells.size() - 1) item->setToolTip(cells[c]);
        table_->setItem(int(index), kProgressColumn + 1 + c, item);
    }
}

void BatchWindow::UpdateButtons() {
    const bool running = Running();
    const bool sourceReady = source_ == SettingsSource::Current || !sourceFile_.empty();
    run_->setEnabled(!running && !files_.empty() && sourceReady);
    stop_button_->setEnabled(running);
    save_->setEnabled(!running && !rows_.empty());
}

void BatchWindow::Run() {
    if (Running()) return;
    if (files_.empty()) {
        dialogs_.Message(std::string(t::kNoFilesCaption), std::string(t::kNoFilesText));
        return;
    }
    JoinRunner();
    BatchSetup setup;
    setup.settings = ws_.settings;
    if (std::string problem = ApplySettingsSource(source_, sourceFile_, setup.settings); !problem.empty()) {
        dialogs_.Message(std::string(t::kWindowTitle), problem);
        return;
    }
    setup.settings.method.method = DetectionMethod(method_->currentIndex());
    setup.channel = channel_->value();
    setup.jobs = jobs_->value();
    setup.overwrite = overwrite_->isChecked();
    ShowFiles();
    rows_.assign(files_.size(), BatchRow{});
    for (std::size_t i = 0; i < files_.size(); ++i) rows_[i].file = files_[i];
    done_ = 0;
    overall_->setRange(0, int(files_.size()));
    stop_ = false;
    finished_ = false;
    BatchCallbacks callbacks;
    callbacks.fileProgress = [this](std::size_t i, int percent) {
        QMetaObject::invokeMethod(this, [this, i, percent] { SetProgress(i, percent); }, Qt::QueuedConnection);
    };
    callbacks.fileDone = [this](std::size_t i, const BatchRow& row, std::size_t done) {
        QMetaObject::invokeMethod(this, [this, i, row, done] {
            rows_[i] = row;
            ShowRow(i, row);
            SetProgress(i, row.analysed ? 100 : table_->item(int(i), kProgressColumn)->data(Qt::DisplayRole).toInt());
            overall_->setValue(int(done));
        }, Qt::QueuedConnection);
    };
    const std::vector<BatchItem> items = PlanBatch(files_, outDir_);
    runner_ = std::jthread([this, items, setup, callbacks] {
        std::vector<BatchRow> rows = RunBatch(items, setup, callbacks, stop_);
        QMetaObject::invokeMethod(this, [this, rows = std::move(rows)]() mutable { Finished(std::move(rows)); },
                                  Qt::QueuedConnection);
    });
    UpdateButtons();
}

void BatchWindow::Stop() { stop_ = true; }

void BatchWindow::Finished(std::vector<BatchRow> rows) {
    JoinRunner();
    finished_ = true;
    rows_ = std::move(rows);
    table_->resizeColumnsToContents();
    UpdateButtons();
}

void BatchWindow::JoinRunner() {
    if (runner_.joinable()) runner_.join();
}

bool BatchWindow::SaveSummary() {
    const auto path = ChooseSavePath(dialogs_,
                                     {std::string(t::kSaveSummary), std::string(t::kSummaryFilter),
                                      std::string(t::kSummaryExtension), "summary.csv"},
                                     ExistingFile::AskReplace);
    return path && ReportWrite(dialogs_, WriteFileAtomic(*path, SummaryCsv(rows_)));
}

}  // namespace vess
