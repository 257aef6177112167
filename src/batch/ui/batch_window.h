// The batch window: recordings to analyse, the channel, where the settings
// come from, the method and the event files' folder; Run, Stop, a progress
// bar per recording and overall, and the summary table saved as CSV. The
// run works on its own thread and reports back through queued calls, so the
// window stays responsive.
#pragma once

#include <QWidget>

#include <atomic>
#include <filesystem>
#include <thread>
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

namespace vess {

class BatchWindow : public QWidget {
    Q_OBJECT
public:
    // Column of the table that shows each recording's progress; the summary
    // columns follow it.
    static constexpr int kProgressColumn = 0;

    BatchWindow(Workspace& ws, Dialogs& dialogs, QWidget* parent = nullptr);
    ~BatchWindow() override;

    // Files as they are and the recordings inside folders, kept sorted.
    void AddRecordings(const std::vector<std::filesystem::path>& paths);
    void SetOutputFolder(const std::filesystem::path& folder);  // empty: beside each recording
    void SetSettingsSource(SettingsSource source, const std::filesystem::path& file = {});
    bool Running() const { return runner_.joinable() && !finished_; }
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
    void Finished(std::vector<BatchRow> rows);
    void UpdateButtons();
    void ChooseSettingsFile();
    void JoinRunner();

    Workspace& ws_;
    Dialogs& dialogs_;
    std::vector<std::filesystem::path> files_;
    std::filesystem::path outDir_;
    SettingsSource source_ = SettingsSource::Current;
    std::filesystem::path sourceFile_;
    std::vector<BatchRow> rows_;
    std::size_t done_ = 0;

    std::jthread runner_;
    std::atomic<bool> stop_{false};
    bool finished_ = true;

    QTableWidget* table_ = nullptr;
    QSpinBox* channel_ = nullptr;
    QComboBox* source_box_ = nullptr;
    QLabel* source_file_ = nullptr;
    QComboBox* method_ = nullptr;
    QLabel* out_dir_ = nullptr;
    QSpinBox* jobs_ = nullptr;
    QCheckBox* overwrite_ = nullptr;
    QProgressBar* overall_ = nullptr;
    QPushButton* run_ = nullptr;
    QPushButton* stop_button_ = nullptr;
    QPushButton* save_ = nullptr;
};

}  // namespace vess
