// Work spread over threads: results taken in order whatever order the
// workers finish in, a bounded number waiting, a stop or a failure ending
// the run; and the readers the workers share (a recording, copies of the
// detection criterion) giving on several threads what they give on one.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <numeric>
#include <stdexcept>
#include <thread>

#include "detection/method_filter.h"
#include "detection/ordered_work.h"
#include "support/test_recording.h"

namespace vess {
namespace {

struct PiecesRun {
    std::vector<int64_t> taken;
    int64_t computed = 0;
    int64_t mostAhead = 0;  // pieces begun beyond the last one taken
};

// Pieces of uneven cost, so that later pieces often finish first.
PiecesRun RunPieces(int64_t count, int workers, int64_t ahead, int64_t stopAt, int64_t failAt) {
    PiecesRun run;
    std::atomic<int64_t> computed = 0, takenCount = 0, mostAhead = 0;
    auto compute = [&](int, int64_t i) {
        if (i == failAt) throw std::runtime_error("piece failed");
        const int64_t begun = i + 1 - takenCount.load();
        int64_t seen = mostAhead.load();
        while (begun > seen && !mostAhead.compare_exchange_weak(seen, begun)) {}
        std::this_thread::sleep_for(std::chrono::microseconds((count - i) % 4 * 300));
        ++computed;
        return i * 10;
    };
    auto take = [&](int64_t i, int64_t value) {
        EXPECT_EQ(value, i * 10);
        run.taken.push_back(i);
        ++takenCount;
        return i != stopAt;
    };
    ComputeInOrder(count, workers, ahead, compute, take);
    run.computed = computed;
    run.mostAhead = mostAhead;
    return run;
}

TEST(OrderedWork, TakesInOrderBoundedAndStops) {
    // Workers, pieces waiting at most, the piece whose taking stops the run (-1: none).
    for (const auto& [workers, ahead, stopAt] : {std::tuple(1, 2, -1), {3, 4, -1}, {4, 4, -1}, {3, 4, 5}, {2, 2, 0}}) {
        SCOPED_TRACE(testing::Message() << workers << " workers, stop at " << stopAt);
        const int64_t count = 40;
        const PiecesRun run = RunPieces(count, workers, ahead, stopAt, -1);
        std::vector<int64_t> expected(std::size_t(stopAt < 0 ? count : stopAt + 1));
        std::iota(expected.begin(), expected.end(), 0);
        EXPECT_EQ(run.taken, expected);
        // The count taken here lags the one the workers see by at most one.
        EXPECT_LE(run.mostAhead, ahead + 1);
        // After a stop no piece is begun beyond those already waiting.
        EXPECT_LE(run.computed, int64_t(expected.size()) + ahead);
    }
}

TEST(OrderedWork, FailureReachesTheCaller) {
    for (const int workers : {1, 3}) {
        PiecesRun run;
        EXPECT_THROW(run = RunPieces(20, workers, 4, -1, 7), std::runtime_error) << workers;
    }
}

// Every sample tells its index, so a read served from another thread's
// buffer shows.
int16_t SampleAt(int64_t i) { return int16_t((i * 7919) % 65536 - 32768); }

TEST(OrderedWork, ThreadsReadOneRecordingAndComputeOnCopies) {
    test::TempDir dir;
    const int64_t points = 400000;
    std::vector<int16_t> samples(static_cast<std::size_t>(points));
    for (int64_t i = 0; i < points; ++i) samples[std::size_t(i)] = SampleAt(i);
    const auto rec = test::MakeRecording(dir / "index.abf", samples);
    ASSERT_TRUE(rec);
    const MethodFilter original({.method = DetectionMethod::Deconvolution}, rec->IntervalUs(), -1);
    const std::vector<double> expected = original.Compute(*rec, 1000, 50000);
    std::atomic<int> wrongSamples = 0, wrongCriteria = 0;
    std::vector<std::jthread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&, t] {
            const MethodFilter mine(original);
            std::vector<int16_t> out;
            for (int round = 0; round < 400; ++round) {
                const int64_t first = (t * 97 + round * 1231) % (points - 9000);
                out.resize(std::size_t(1000 + (round % 8) * 1000));
                rec->ReadSamples(first, out);
                for (std::size_t k = 0; k < out.size(); ++k)
                    if (out[k] != SampleAt(first + int64_t(k))) ++wrongSamples;
                if (round % 100 == 0 && mine.Compute(*rec, 1000, 50000) != expected) ++wrongCriteria;
            }
        });
    }
    threads.clear();
    EXPECT_EQ(std::tuple(wrongSamples.load(), wrongCriteria.load()), std::tuple(0, 0));
}

}  // namespace
}  // namespace vess
