// The accuracy check's answer: what was checked, a table of recall and false
// detections per amplitude bin, and the amplitude from which recall reaches
// 90 %. The plot of the same bins goes to the graph windows.
//
// A check runs on a thread of its own over a copy of the channel, with a
// progress bar and a Stop button; the table keeps the last finished check
// until the next one ends. Closing the window stops a check.
#pragma once

#include <QDialog>
#include <QFutureWatcher>
#include <memory>

#include "detection/accuracy_check.h"

class QLabel;
class QProgressBar;
class QPushButton;
class QTableWidget;
class QTimer;

namespace vess {

class AccuracyWindow : public QDialog {
    Q_OBJECT
public:
    explicit AccuracyWindow(QWidget* parent = nullptr);
    ~AccuracyWindow() override;

    // Starts a check of input; false (nothing started) while one runs.
    bool Start(AccuracyInput input);
    bool Running() const;
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
    struct RunState;
    void ShowProgress();
    void OnRunEnded();

    QLabel* summary_;
    QLabel* recall90_;
    QLabel* status_;
    QTableWidget* table_;
    QProgressBar* progress_;
    QPushButton* stop_;
    QTimer* poll_;
    QFutureWatcher<AccuracyReport> watcher_;
    std::shared_ptr<RunState> run_;
};

}  // namespace vess
