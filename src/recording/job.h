// Long-running work as a job: the work runs away from the window that asked
// for it, over its own copy of everything it reads; it reports through one
// callback (the share done and a line saying what it does), which answers
// false once the user asked it to stop; what it returns is applied on the
// thread of the windows, after the work has ended.
#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

namespace vess {

// done in 0 .. 1; false: stop as soon as the work can.
using JobProgress = std::function<bool(double done, const std::string& note)>;
// What a finished job's result does to the workspace and the windows.
using JobApply = std::function<void()>;

struct Job {
    std::string title;
    std::function<JobApply(const JobProgress&)> work;
};

// A job from work(progress) -> Result, which must own what it reads, and
// apply(Result), run where the windows live.
template <class Work, class Apply>
Job MakeJob(std::string title, Work work, Apply apply) {
    return {std::move(title), [work = std::move(work), apply = std::move(apply)](
                                  const JobProgress& progress) mutable -> JobApply {
                auto result = std::make_shared<decltype(work(progress))>(work(progress));
                return [apply, result] { apply(std::move(*result)); };
            }};
}

// What a runner and a job's thread share: the latest report and the stop
// request. Every member may be called from any thread.
class JobState {
public:
    bool Report(double done, const std::string& note) {
        const std::lock_guard lock(mutex_);
        done_ = done;
        note_ = note;
        return !cancel_.load();
    }
    void Cancel() { cancel_ = true; }
    bool Cancelled() const { return cancel_.load(); }
    std::pair<double, std::string> Latest() const {
        const std::lock_guard lock(mutex_);
        return {done_, note_};
    }
    JobProgress Callback() {
        return [this](double done, const std::string& note) { return Report(done, note); };
    }

private:
    std::atomic<bool> cancel_{false};
    mutable std::mutex mutex_;
    double done_ = 0;
    std::string note_;
};

}  // namespace vess
