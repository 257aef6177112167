// The batch window: recordings to analyse, the channel, where the settings
// come from, the method and the event files' folder; Run, Stop, a progress
// bar per recording and overall, and the summary table saved as CSV. The
// run works on its own thread and reports back through queued calls, so the
// window stays responsive.
#pragma once

#include <QWidget>

#include <filesystem>
#include <memory>
#include <vector>

#include "batch/batch_run.h"
#include "recording/dialogs.h"
#include "recording/workspace.h"

class QComboBox;
class QCheckBox;
class QLabel;
class QProgressBar;
class QPushButton;
class QSpinBox;
class QTableWidget;
class QTimer;

namespace vess {

class JobRunner;

class BatchWindow : public QWidget {
    Q_OBJECT
public:
    // Column of the table that shows each recording's progress; the summary
    // columns follow it.
    static constexpr int kProgressColumn = 0;

    BatchWindow(Workspace& ws, Dialogs& dialogs, JobRunner& jobs, QWidget* parent = nullptr);
    ~BatchWindow() override;

    // Files as they are and the recordings inside folders, kept sorted;
    // nothing while a job runs.
    void AddRecordings(const std::vector<std::filesystem::path>& paths);
    void SetOutputFolder(const std::filesystem::path& folder);  // empty: beside each recording
    void SetSettingsSource(SettingsSource source, const std::filesystem::path& file = {});
    // A run of this window is going.
    bool Running() const { return running_; }
    const std::vector<BatchRow>& Rows() const { return rows_; }
    QTableWidget* Table() const { return table_; }

    void Run();
    void Stop();
    bool SaveSummary();

private:
    void BuildForm();
    void ShowFiles();
    void ShowRow(std::size_t index, const BatchRow& row);
    void SetProgress(std::size_t index, int percent);
    void ShowLive();
    void Finished(std::vector<BatchRow> rows);
    void UpdateButtons();
    void ChooseSettingsFile();

    struct Live;
    Workspace& ws_;
    Dialogs& dialogs_;
    JobRunner& jobs_;
    std::vector<std::filesystem::path> files_;
    std::filesystem::path outDir_;
    SettingsSource source_ = SettingsSource::Current;
    std::filesystem::path sourceFile_;
    std::vector<BatchRow> rows_;
    std::vector<int> shownPercent_;
    std::shared_ptr<Live> live_;
    bool running_ = false;

    QTableWidget* table_ = nullptr;
    QSpinBox* channel_ = nullptr;
    QComboBox* source_box_ = nullptr;
    QLabel* source_file_ = nullptr;
    QComboBox* method_ = nullptr;
    QLabel* out_dir_ = nullptr;
    QSpinBox* jobs_box_ = nullptr;  // worker threads
    QCheckBox* overwrite_ = nullptr;
    QProgressBar* overall_ = nullptr;
    QPushButton* run_ = nullptr;
    QPushButton* stop_button_ = nullptr;
    QPushButton* save_ = nullptr;
    QPushButton* addFiles_ = nullptr;
    QPushButton* addFolder_ = nullptr;
    QPushButton* clear_ = nullptr;
    QTimer* poll_ = nullptr;
};

}  // namespace vess
