#include "app/background_job.h"

#include <QtConcurrent/QtConcurrentRun>

#include <algorithm>
#include <exception>

namespace vess {

BackgroundJob::BackgroundJob(QObject* parent) : QObject(parent) {}

BackgroundJob::~BackgroundJob() {
    for (const InFlight& f : inFlight_) f.state->Cancel();
    for (const InFlight& f : inFlight_) {
        f.watcher->disconnect(this);
        f.watcher->waitForFinished();
    }
}

void BackgroundJob::Start(Job job) {
    Cancel();
    auto state = std::make_shared<JobState>();
    auto* watcher = new Watcher(this);
    current_ = {watcher, state};
    inFlight_.push_back(current_);
    connect(watcher, &QFutureWatcherBase::finished, this, [this, watcher] { Finish(watcher); });
    // The thread holds the state and the job; it never touches a window.
    watcher->setFuture(QtConcurrent::run([state, job = std::move(job)]() -> JobApply {
        try {
            return job.work(state->Callback());
        } catch (const std::exception&) {
            return nullptr;  // nothing to show; the work is only a view
        }
    }));
}

void BackgroundJob::Cancel() {
    if (current_.state) current_.state->Cancel();
    current_ = {};
}

void BackgroundJob::Wait() {
    if (!current_.watcher) return;
    current_.watcher->waitForFinished();
    Finish(current_.watcher);
}

void BackgroundJob::Finish(Watcher* watcher) {
    const auto it = std::find_if(inFlight_.begin(), inFlight_.end(),
                                 [watcher](const InFlight& f) { return f.watcher == watcher; });
    if (it == inFlight_.end()) return;  // already finished by Wait
    const InFlight done = *it;
    inFlight_.erase(it);
    done.watcher->deleteLater();
    if (current_.watcher != watcher) return;  // cancelled: its result is dropped
    current_ = {};
    if (done.state->Cancelled()) return;
    if (const JobApply apply = done.watcher->result()) {
        apply();
        emit Applied();
    }
}

}  // namespace vess
