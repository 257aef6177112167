// The accuracy check's answer: what was checked, a table of recall and false
// detections per amplitude bin, and the amplitude from which recall reaches
// 90 %. The plot of the same bins goes to the graph windows.
//
// A check is a job of the program's job runner over a copy of the channel,
// with a progress bar and a Stop button here too; the table keeps the last finished check
// until the next one ends. Closing the window stops a check.
#pragma once

#include <QDialog>

#include "detection/accuracy_check.h"

class QLabel;
class QProgressBar;
class QPushButton;
class QTableWidget;

namespace vess {

class JobRunner;

class AccuracyWindow : public QDialog {
    Q_OBJECT
public:
    explicit AccuracyWindow(JobRunner& jobs, QWidget* parent = nullptr);
    ~AccuracyWindow() override;

    // Starts a check of input; false (nothing started) while a job runs.
    bool Start(AccuracyInput input);
    // A check of this window is running.
    bool Running() const { return running_; }
    // Asks a running check to stop; its table is not shown.
    void Stop();
    void Show(const AccuracyReport& report);

    const QTableWidget* Table() const { return table_; }
    const QProgressBar* Progress() const { return progress_; }
    QPushButton* StopButton() const { return stop_; }
    QString Summary() const;
    QString Status() const;

signals:
    // A check that ran to its end, after its table is shown.
    void Finished(const vess::AccuracyReport& report);

protected:
    void done(int result) override;

private:
    void EndRun();
    void OnRunEnded(const AccuracyReport& report);

    JobRunner& jobs_;
    bool running_ = false;
    QLabel* summary_;
    QLabel* recall90_;
    QLabel* status_;
    QTableWidget* table_;
    QProgressBar* progress_;
    QPushButton* stop_;
};

}  // namespace vess
