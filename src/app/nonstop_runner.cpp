#include "app/nonstop_runner.h"

namespace vess {
namespace {
constexpr qint64 kSliceMs = 15;        // analysis per timer tick
constexpr qint64 kReportEveryMs = 50;  // at most 20 redraws a second
}  // namespace

NonStopRunner::NonStopRunner(Workspace& ws) : ws_(ws) {
    timer_.setInterval(0);
    connect(&timer_, &QTimer::timeout, this, &NonStopRunner::Tick);
}

NonStopRunner::~NonStopRunner() = default;

void NonStopRunner::Start(Dialogs& dialogs) {
    if (run_) return;
    run_ = std::make_unique<NonStopAnalysis>(ws_);
    dialogs_ = &dialogs;
    last_ = run_->GetProgress();
    sinceReport_.start();
    timer_.start();
}

void NonStopRunner::Stop() {
    if (!run_) return;
    run_->Stop();
    Finish();
}

NonStopAnalysis::Progress NonStopRunner::GetProgress() const {
    return run_ ? run_->GetProgress() : last_;
}

void NonStopRunner::Tick() {
    if (!run_) return;
    QElapsedTimer slice;
    slice.start();
    bool more = true;
    const int32_t foundBefore = run_->GetProgress().eventsFound;
    while (more && slice.elapsed() < kSliceMs) more = run_->Step();
    if (const int32_t stored = run_->GetProgress().eventsFound - foundBefore; stored > 0)
        emit EventsStored(stored);
    if (!more) {
        Finish();
        return;
    }
    if (sinceReport_.elapsed() >= kReportEveryMs) {
        sinceReport_.restart();
        last_ = run_->GetProgress();
        emit Progress(false);
    }
}

void NonStopRunner::Finish() {
    timer_.stop();
    last_ = run_->GetProgress();
    const CommandResult status = run_->LastAnalysis().status;
    run_.reset();
    ShowFailure(*dialogs_, status);
    emit Progress(true);
}

}  // namespace vess
