// Pieces of work computed on worker threads and taken in their own order on
// the calling thread: whole-file detection computes the criterion of each
// stretch beside the others, and measures the events in file order.
#pragma once

#include <algorithm>
#include <condition_variable>
#include <cstdint>
#include <exception>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

namespace vess {

// Worker threads worth starting for work that can use every core: the cores
// this process may run on (so that a run bound to one core stays on the
// calling thread), at most maxWorkers.
int UsableWorkers(int maxWorkers);

// Calls compute(worker, i) for i = 0 .. count-1 and hands each result to
// take(i, result) on the calling thread in increasing order of i; take returns
// false to stop (no further piece is begun). With more than one worker the
// pieces are computed on that many threads (worker = 0 .. workers-1, each
// worker's calls on one thread of its own), at most ahead results waiting to
// be taken, so memory stays bounded; with one, everything runs on the calling
// thread. An exception thrown by compute is thrown again by this function
// when its piece's turn comes.
template <class Compute, class Take>
void ComputeInOrder(int64_t count, int workers, int64_t ahead, Compute&& compute, Take&& take) {
    if (workers <= 1 || count <= 1) {
        for (int64_t i = 0; i < count; ++i)
            if (!take(i, compute(0, i))) return;
        return;
    }
    using Result = decltype(compute(0, int64_t(0)));
    struct Slot {
        std::optional<Result> value;
        std::exception_ptr error;
    };
    ahead = std::max<int64_t>(ahead, workers);
    std::vector<Slot> slots(static_cast<std::size_t>(ahead));
    std::mutex mutex;
    std::condition_variable changed;
    int64_t next = 0, taken = 0;
    bool stop = false;
    auto work = [&](int worker) {
        for (;;) {
            int64_t i = 0;
            {
                std::unique_lock lock(mutex);
                changed.wait(lock, [&] { return stop || next >= count || next < taken + ahead; });
                if (stop || next >= count) return;
                i = next++;
            }
            Slot done;
            try {
                done.value.emplace(compute(worker, i));
            } catch (...) {
                done.error = std::current_exception();
            }
            {
                const std::lock_guard lock(mutex);
                slots[std::size_t(i % ahead)] = std::move(done);
            }
            changed.notify_all();
        }
    };
    // Stops the workers before they are joined, however this function ends.
    struct StopOnExit {
        std::mutex& mutex;
        std::condition_variable& changed;
        bool& stop;
        ~StopOnExit() {
            {
                const std::lock_guard lock(mutex);
                stop = true;
            }
            changed.notify_all();
        }
    };
    std::vector<std::jthread> threads;
    const StopOnExit stopOnExit{mutex, changed, stop};
    for (int w = 0; w < workers; ++w) threads.emplace_back(work, w);
    for (int64_t i = 0; i < count; ++i) {
        Slot slot;
        {
            std::unique_lock lock(mutex);
            Slot& waiting = slots[std::size_t(i % ahead)];
            changed.wait(lock, [&] { return waiting.value || waiting.error; });
            slot = std::move(waiting);
            waiting = Slot{};
            taken = i + 1;
        }
        changed.notify_all();
        if (slot.error) std::rethrow_exception(slot.error);
        if (!take(i, std::move(*slot.value))) return;
    }
}

}  // namespace vess
