#include "app/job_runner.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QTimer>
#include <QtConcurrent/QtConcurrentRun>

#include <exception>

#include "recording/dialogs.h"

namespace vess {

JobRunner::JobRunner(Dialogs& dialogs, QWidget* parent) : QWidget(parent), dialogs_(dialogs) {
    setObjectName("jobRunner");
    note_ = new QLabel(this);
    note_->setObjectName("lbJobNote");
    bar_ = new QProgressBar(this);
    bar_->setObjectName("pbJob");
    bar_->setRange(0, 1000);
    bar_->setTextVisible(false);
    bar_->setMaximumWidth(200);
    stop_ = new QPushButton(tr("Stop"), this);
    stop_->setObjectName("cmdStopJob");
    connect(stop_, &QPushButton::clicked, this, &JobRunner::Stop);
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(note_, 1);
    layout->addWidget(bar_);
    layout->addWidget(stop_);
    poll_ = new QTimer(this);
    poll_->setInterval(50);
    connect(poll_, &QTimer::timeout, this, &JobRunner::ShowProgress);
    connect(&watcher_, &QFutureWatcherBase::finished, this, &JobRunner::OnEnded);
    hide();
}

JobRunner::~JobRunner() {
    if (state_) state_->Cancel();
    watcher_.disconnect(this);
    watcher_.waitForFinished();
}

bool JobRunner::Start(Job job, QObject* owner) {
    if (Running()) return false;
    state_ = std::make_shared<JobState>();
    title_ = job.title;
    owner_ = owner;
    // The thread holds the state and the job; it never touches a window.
    watcher_.setFuture(QtConcurrent::run([state = state_, job = std::move(job)]() -> Outcome {
        try {
            return {job.work(state->Callback()), {}};
        } catch (const std::exception& e) {
            // Reported where the windows live; nothing of the job is applied.
            return {nullptr, e.what()};
        }
    }));
    // A job whose window goes is stopped; its result has nowhere to go.
    ownerGone_ = connect(owner, &QObject::destroyed, this, &JobRunner::Stop);
    note_->setText(QString::fromStdString(title_));
    bar_->setValue(0);
    stop_->setEnabled(true);
    show();
    poll_->start();
    emit RunningChanged(true);
    return true;
}

void JobRunner::Stop() {
    if (!state_) return;
    state_->Cancel();
    stop_->setEnabled(false);
}

void JobRunner::ShowProgress() {
    if (!state_) return;
    const auto [done, note] = state_->Latest();
    bar_->setValue(int(done * 1000));
    emit Progressed(done);
    if (!note.empty()) note_->setText(QString::fromStdString(title_ + ": " + note));
}

void JobRunner::OnEnded() {
    poll_->stop();
    disconnect(ownerGone_);
    state_.reset();
    hide();
    const Outcome outcome = watcher_.result();
    if (!outcome.failure.empty()) dialogs_.Message(title_, outcome.failure);
    else if (outcome.apply && owner_) outcome.apply();
    emit RunningChanged(false);
}

}  // namespace vess
