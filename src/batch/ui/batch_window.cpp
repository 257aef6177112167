#include "batch/ui/batch_window.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QSpinBox>
#include <QStyledItemDelegate>
#include <QTableWidget>
#include <QTimer>
#include <QVBoxLayout>

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <atomic>
#include <mutex>
#include <set>

#include "app/job_runner.h"
#include "batch/texts.h"
#include "recording/file_io.h"
#include "recording/method_settings.h"
#include "recording/save_path.h"
#include "recording/texts.h"

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

// What a run's threads leave for the window: each recording's percentage and
// the rows finished since the window last looked.
struct BatchWindow::Live {
    std::mutex mutex;
    std::vector<int> percent;
    std::vector<std::pair<std::size_t, BatchRow>> finished;
    std::size_t done = 0;
};

BatchWindow::BatchWindow(Workspace& ws, Dialogs& dialogs, JobRunner& jobs, QWidget* parent)
    : QWidget(parent), ws_(ws), dialogs_(dialogs), jobs_(jobs) {
    setObjectName("BatchWindow");
    setWindowTitle(Q(t::kWindowTitle));
    BuildForm();
    poll_ = new QTimer(this);
    poll_->setInterval(100);
    connect(poll_, &QTimer::timeout, this, &BatchWindow::ShowLive);
    connect(&jobs_, &JobRunner::RunningChanged, this, [this](bool running) {
        if (!running) running_ = false;  // also when the run failed
        UpdateButtons();
    });
    UpdateButtons();
}

// A closed window's run is stopped by the runner, its rows dropped.
BatchWindow::~BatchWindow() = default;

void BatchWindow::BuildForm() {
    auto* addFiles = addFiles_ = new QPushButton(Q(t::kAddFiles));
    auto* addFolder = addFolder_ = new QPushButton(Q(t::kAddFolder));
    auto* clear = clear_ = new QPushButton(Q(t::kClear));
    addFiles->setObjectName("addFiles");
    addFolder->setObjectName("addFolder");
    clear->setObjectName("clearFiles");
    connect(addFiles, &QPushButton::clicked, this, [this] {
        const FileDialogRequest request{std::string(t::kAddFiles), std::string(texts::kAbfFileFilter),
                                        std::string(texts::kAbfFileExtension), ws_.settings.dataFolder};
        const auto names = dialogs_.OpenFiles(request);
        if (!names) return;
        AddRecordings({names->begin(), names->end()});
    });
    connect(addFolder, &QPushButton::clicked, this, [this] {
        if (const auto folder = dialogs_.ChooseFolder({std::string(t::kAddFolder), ws_.settings.dataFolder}))
            AddRecordings({*folder});
    });
    connect(clear, &QPushButton::clicked, this, [this] {
        if (jobs_.Running()) return;
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
    chooseOut->setObjectName("chooseOutputFolder");
    connect(chooseOut, &QPushButton::clicked, this, [this] {
        if (const auto folder = dialogs_.ChooseFolder({std::string(t::kOutputFolder), outDir_.string()}))
            SetOutputFolder(*folder);
    });
    jobs_box_ = new QSpinBox;
    jobs_box_->setObjectName("jobs");
    jobs_box_->setRange(1, 256);
    jobs_box_->setValue(WorkerCount(0, 256));

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
    form->addRow(Q(t::kJobs), jobs_box_);
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
    if (jobs_.Running()) return;
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
                                    std::string(set ? texts::kCustomSettingsFilter : texts::kParameterFileFilter),
                                    std::string(set ? texts::kCustomSettingsExtension : texts::kParameterFileExtension),
                                    {}};
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
    const bool anyJob = jobs_.Running();
    const bool sourceReady = source_ == SettingsSource::Current || !sourceFile_.empty();
    run_->setEnabled(!anyJob && !files_.empty() && sourceReady);
    for (QPushButton* b : {addFiles_, addFolder_, clear_}) b->setEnabled(!anyJob);
    stop_button_->setEnabled(running);
    save_->setEnabled(!running && !rows_.empty());
}

void BatchWindow::Run() {
    if (jobs_.Running()) return;
    if (files_.empty()) {
        dialogs_.Message(std::string(t::kNoFilesCaption), std::string(t::kNoFilesText));
        return;
    }
    BatchSetup setup;
    setup.settings = ws_.settings;
    if (!ShowFailure(dialogs_, ApplySettingsSource(source_, sourceFile_, setup.settings))) return;
    setup.settings.method.method = DetectionMethod(method_->currentIndex());
    setup.channel = channel_->value();
    setup.jobs = jobs_box_->value();
    setup.overwrite = overwrite_->isChecked();
    ShowFiles();
    rows_.assign(files_.size(), BatchRow{});
    for (std::size_t i = 0; i < files_.size(); ++i) rows_[i].file = files_[i];
    shownPercent_.assign(files_.size(), 0);
    overall_->setRange(0, int(files_.size()));
    live_ = std::make_shared<Live>();
    live_->percent.assign(files_.size(), 0);
    Job job = MakeJob(
        std::string(t::kWindowTitle),
        [items = PlanBatch(files_, outDir_), setup, live = live_](const JobProgress& progress) {
            std::atomic<bool> stop{false};
            const double count = double(items.size());
            BatchCallbacks callbacks;
            callbacks.fileProgress = [&](std::size_t i, int percent) {
                std::size_t done = 0;
                {
                    const std::lock_guard lock(live->mutex);
                    live->percent[i] = percent;
                    done = live->done;
                }
                if (!progress(double(done) / count, items[i].file.filename().string())) stop = true;
            };
            callbacks.fileDone = [&](std::size_t i, const BatchRow& row, std::size_t done) {
                {
                    const std::lock_guard lock(live->mutex);
                    if (row.analysed) live->percent[i] = 100;
                    live->finished.emplace_back(i, row);
                    live->done = done;
                }
                if (!progress(double(done) / count, row.file.filename().string())) stop = true;
            };
            return RunBatch(items, setup, callbacks, stop);
        },
        [this](std::vector<BatchRow> rows) { Finished(std::move(rows)); });
    if (!jobs_.Start(std::move(job), this)) return;
    running_ = true;
    poll_->start();
    UpdateButtons();
}

void BatchWindow::Stop() {
    if (running_) jobs_.Stop();
}

void BatchWindow::ShowLive() {
    if (!live_) return;
    std::vector<int> percent;
    std::vector<std::pair<std::size_t, BatchRow>> finished;
    std::size_t done = 0;
    {
        const std::lock_guard lock(live_->mutex);
        percent = live_->percent;
        finished.swap(live_->finished);
        done = live_->done;
    }
    for (std::size_t i = 0; i < percent.size() && i < shownPercent_.size(); ++i)
        if (percent[i] != shownPercent_[i]) SetProgress(i, shownPercent_[i] = percent[i]);
    for (auto& [i, row] : finished) {
        ShowRow(i, row);
        rows_[i] = std::move(row);
    }
    overall_->setValue(int(done));
}

void BatchWindow::Finished(std::vector<BatchRow> rows) {
    poll_->stop();
    ShowLive();
    live_.reset();
    running_ = false;
    rows_ = std::move(rows);
    table_->resizeColumnsToContents();
    UpdateButtons();
}

bool BatchWindow::SaveSummary() {
    const auto path = ChooseSavePath(dialogs_,
                                     {std::string(t::kSaveSummary), std::string(t::kSummaryFilter),
                                      std::string(t::kSummaryExtension), "summary.csv"},
                                     ExistingFile::AskReplace);
    return path && ShowFailure(dialogs_, WriteResult(WriteFileAtomic(*path, SummaryCsv(rows_))));
}

}  // namespace vess
