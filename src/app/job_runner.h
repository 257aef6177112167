// Runs the program's long jobs, one at a time, on a worker thread: a
// progress bar, the job's note and a Stop button show while one runs, and
// Running() is what every command that conflicts with a job asks before it
// is enabled. A job's result is applied here, on the windows' thread, unless
// the window that started it has gone meanwhile.
#pragma once

#include <QFutureWatcher>
#include <QPointer>
#include <QWidget>

#include <memory>
#include <string>

#include "recording/job.h"

class QLabel;
class QProgressBar;
class QPushButton;
class QTimer;

namespace vess {

class Dialogs;

class JobRunner : public QWidget {
    Q_OBJECT
public:
    explicit JobRunner(Dialogs& dialogs, QWidget* parent = nullptr);
    // A running job is asked to stop and awaited; its result is dropped.
    ~JobRunner() override;

    // Starts job for owner, whose going stops the job and drops its
    // result; false (nothing started) while another job runs.
    bool Start(Job job, QObject* owner);
    bool Running() const { return state_ != nullptr; }
    // Asks the running job to stop; it applies what it has.
    void Stop();

    QProgressBar* Bar() const { return bar_; }
    QPushButton* StopButton() const { return stop_; }

signals:
    // Emitted when a job starts and after a job's result is applied.
    void RunningChanged(bool running);
    // The running job's share done, some 20 times a second.
    void Progressed(double done);

private:
    struct Outcome {
        JobApply apply;
        std::string failure;  // what the work threw
    };
    void ShowProgress();
    void OnEnded();

    Dialogs& dialogs_;
    std::shared_ptr<JobState> state_;
    std::string title_;
    QPointer<QObject> owner_;
    QMetaObject::Connection ownerGone_;
    QFutureWatcher<Outcome> watcher_;
    QLabel* note_;
    QProgressBar* bar_;
    QPushButton* stop_;
    QTimer* poll_;
};

}  // namespace vess
