// The job runner on its own: a job's result is applied where the windows
// live, a failure is reported instead, a stopped job says so through its
// callback, and a job whose window has gone applies nothing.
#include <limits>
#include <stdexcept>
#include <thread>

#include "app/gui_fixture.h"
#include "app/job_runner.h"

namespace vess::test {
namespace {

// Work of `steps` steps that ends early when its callback says stop; a job
// of unbounded steps runs until it is stopped, so no test depends on how
// fast the work goes.
Job CountingJob(int steps, std::thread::id* workThread, int* applied, bool* sawStop) {
    return MakeJob(
        "Counting",
        [steps, workThread, sawStop](const JobProgress& progress) {
            *workThread = std::this_thread::get_id();
            int done = 0;
            for (; done < steps; ++done) {
                if (!progress(0.5, "step")) {
                    *sawStop = true;
                    break;
                }
                if (steps == std::numeric_limits<int>::max()) std::this_thread::sleep_for(std::chrono::milliseconds(1));
            }
            return done;
        },
        [applied](int done) { *applied = done; });
}

TEST(JobRunner, AppliesOnTheWindowsThreadStopsAndReportsFailures) {
    constexpr int kUntilStopped = std::numeric_limits<int>::max();
    ScriptedDialogs dialogs;
    JobRunner runner(dialogs);
    QObject owner;
    std::thread::id workThread;
    int applied = -1;
    bool sawStop = false;

    // Run to the end: applied here, the work elsewhere, one job at a time.
    ASSERT_TRUE(runner.Start(CountingJob(1000, &workThread, &applied, &sawStop), &owner));
    EXPECT_TRUE(runner.Running());
    EXPECT_FALSE(runner.Start(CountingJob(1000, &workThread, &applied, &sawStop), &owner));
    ASSERT_TRUE(WaitFor([&] { return !runner.Running(); }, 20000));
    EXPECT_EQ(applied, 1000);
    EXPECT_FALSE(sawStop);
    EXPECT_NE(workThread, std::this_thread::get_id());

    // Stop: the callback answers false and the partial result is applied.
    ASSERT_TRUE(runner.Start(CountingJob(kUntilStopped, &workThread, &applied, &sawStop), &owner));
    runner.StopButton()->click();
    ASSERT_TRUE(WaitFor([&] { return !runner.Running(); }, 20000));
    EXPECT_TRUE(sawStop);
    EXPECT_LT(applied, kUntilStopped);

    // A job whose owner goes is stopped and applies nothing.
    applied = -1;
    auto gone = std::make_unique<QObject>();
    ASSERT_TRUE(runner.Start(CountingJob(kUntilStopped, &workThread, &applied, &sawStop), gone.get()));
    gone.reset();
    ASSERT_TRUE(WaitFor([&] { return !runner.Running(); }, 20000));
    EXPECT_EQ(applied, -1);

    // A failing job is reported under its title.
    ASSERT_TRUE(runner.Start(MakeJob(
                                 "Failing", [](const JobProgress&) -> int { throw std::runtime_error("disk gone"); },
                                 [&applied](int) { applied = 1; }),
                             &owner));
    ASSERT_TRUE(WaitFor([&] { return !runner.Running(); }, 20000));
    EXPECT_EQ(applied, -1);
    ASSERT_EQ(dialogs.Messages().size(), 1u);
    EXPECT_EQ(dialogs.Messages()[0].caption, "Failing");
    EXPECT_EQ(dialogs.Messages()[0].text, "disk gone");
}

}  // namespace
}  // namespace vess::test
