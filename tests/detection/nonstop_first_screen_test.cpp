// Non-stop analysis started on a screen that nothing has analysed: the run
// covers that screen too, so a run over a freshly opened recording finds
// what the whole-file detection of the command line finds; on a screen that
// was analysed, or that holds events, it starts with the next screen.
#include <gtest/gtest.h>

#include "detection/screen_commands.h"
#include "detection/whole_file.h"
#include "recording/open_recording.h"
#include "recording/scripted_dialogs.h"
#include "recording/settings_file.h"
#include "recording/synth.h"
#include "trace_helpers.h"

namespace vess {
namespace {

using test::AddEvent;
using test::DoubleExp;

void OpenFresh(Workspace& ws, const std::filesystem::path& path) {
    ScriptedDialogs dialogs;
    ASSERT_TRUE(OpenDataFile(ws, path, dialogs)) << path;
}

// Non-stop from block 0 of a freshly opened file equals the whole-file run,
// for the threshold detection and for the deconvolution of a new
// installation.
TEST(NonStopFromFreshRecording, EqualsWholeFileDetection) {
    test::TempDir dir;
    SynthOptions options;
    options.seconds = 10;
    options.seed = 5;
    const std::filesystem::path synthetic = dir / "synthetic.abf";
    ASSERT_EQ(WriteSynthetic(synthetic, Synthesise(options)), "");
    std::vector<std::filesystem::path> files{synthetic};
    if (!test::SharedData().empty())
        files.push_back(test::SharedData() / "abf1" / "171116sh_0020_saved.abf");
    for (const Settings& settings : {Settings{}, NewInstallationSettings()}) {
        for (const auto& path : files) {
            Workspace stepped, whole;
            stepped.settings = whole.settings = settings;
            OpenFresh(stepped, path);
            OpenFresh(whole, path);
            ScriptedDialogs dialogs;
            NonStopAnalysis run(stepped, dialogs);
            run.RunToEnd();
            EXPECT_EQ(run.GetProgress().screensDone, run.GetProgress().screensTotal);
            DetectWholeFile(whole, dialogs);
            EXPECT_GT(stepped.events.Count(), 10) << path;
            EXPECT_EQ(stepped.events.Records(), whole.events.Records())
                << path << " method " << int(settings.method.method);
        }
    }
}

// One event on each screen of 4 blocks (peaks at 521 + 1024 k); where the
// run starts decides whether the shown screen is analysed first.
TEST(NonStopFromFreshRecording, AnalysesTheShownScreenOnlyWhenNothingRanThere) {
    std::vector<int16_t> trace(40 * 256, 0);
    for (int onset = 500; onset + 400 < int(trace.size()); onset += 1024)
        AddEvent(trace, onset, DoubleExp{10, 60, 400});
    test::TraceFile file(trace);
    struct Case {
        const char* what;
        void (*prepare)(Workspace&, Dialogs&);
        int64_t screensTotal;
        int32_t firstPeak;  // of the events the run found
    };
    const Case cases[] = {
        {"fresh, on screen 3", [](Workspace& ws, Dialogs&) { ws.screenStartBlock = 12; }, 7, 3 * 1024 + 521},
        {"screen 3 analysed by F9",
         [](Workspace& ws, Dialogs& d) {
             ws.screenStartBlock = 12;
             AnalyzeCurrentScreen(ws, d);
             ws.events.Clear();  // the run's own events only
         },
         6, 4 * 1024 + 521},
        {"an event of the table on screen 3",
         [](Workspace& ws, Dialogs&) {
             ws.screenStartBlock = 12;
             EventRecord r;
             r.sampleIndex = 12 * 256 + 100;
             ws.events.Append(r);
         },
         6, 4 * 1024 + 521},
        {"analysis ran over screen 3 at another screen length",
         [](Workspace& ws, Dialogs&) {
             ws.analysedBlocks.Add(8, 5);  // blocks 8..12
             ws.screenStartBlock = 12;
         },
         6, 4 * 1024 + 521},
    };
    for (const Case& c : cases) {
        Workspace ws;
        OpenFresh(ws, file.rec->Path());
        ws.params() = test::TestParams();
        ScriptedDialogs dialogs;
        c.prepare(ws, dialogs);
        const int32_t before = ws.events.Count();
        NonStopAnalysis run(ws, dialogs);
        EXPECT_EQ(run.GetProgress().screensTotal, c.screensTotal) << c.what;
        run.RunToEnd();
        ASSERT_GT(ws.events.Count(), before) << c.what;
        EXPECT_EQ(ws.events[before + 1].sampleIndex, c.firstPeak) << c.what;
    }
}

TEST(AnalysedBlocks, MergesTouchingRangesAndFindsOverlaps) {
    AnalysedBlocks a;
    a.Add(4, 4);
    a.Add(12, 4);
    a.Add(8, 4);  // joins both neighbours
    EXPECT_EQ(a.RangeCount(), 1u);
    a.Add(30, 2);
    EXPECT_EQ(a.RangeCount(), 2u);
    const struct {
        int32_t first, count;
        bool any;
    } probes[] = {{0, 4, false}, {0, 5, true}, {15, 1, true}, {16, 14, false},
                  {29, 2, true}, {31, 1, true}, {32, 8, false}, {10, 0, false}};
    for (const auto& p : probes) EXPECT_EQ(a.AnyIn(p.first, p.count), p.any) << p.first << "+" << p.count;
}

}  // namespace
}  // namespace vess
