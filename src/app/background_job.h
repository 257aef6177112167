// A light runner for work the user does not wait for (the overview of a
// recording): one job at a time on a worker thread, with no progress bar,
// no Stop button and no effect on which commands are enabled. Starting a
// job cancels the one running, whose result is then dropped; a result is
// applied on the windows' thread.
#pragma once

#include <QFutureWatcher>
#include <QObject>

#include <memory>
#include <utility>
#include <vector>

#include "recording/job.h"

namespace vess {

class BackgroundJob : public QObject {
    Q_OBJECT
public:
    explicit BackgroundJob(QObject* parent = nullptr);
    // Jobs still running are cancelled and awaited; nothing is applied.
    ~BackgroundJob() override;

    void Start(Job job);
    // The running job stops as soon as it can; its result is dropped.
    void Cancel();
    bool Running() const { return current_.watcher != nullptr; }
    // Blocks until the running job ends and applies its result at once (for
    // tests and benchmarks, which need the result at a known moment).
    void Wait();

signals:
    // After a result was applied.
    void Applied();

private:
    using Watcher = QFutureWatcher<JobApply>;
    struct InFlight {
        Watcher* watcher = nullptr;
        std::shared_ptr<JobState> state;
    };
    void Finish(Watcher* watcher);

    InFlight current_;
    std::vector<InFlight> inFlight_;  // the current job and cancelled ones still ending
};

}  // namespace vess
