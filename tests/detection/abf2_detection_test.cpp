// Detection reads an ABF 2 recording as it reads the same recording saved as
// ABF 1.x: 171116sh_0020 (ABF 2, 0.122 pA a count) and its re-saved ABF 1
// twin (0.0305 pA a count) hold the same currents, so the events found with
// the same suggested parameters lie at the same points with the same sizes.
#include <cmath>
#include <map>

#include <gtest/gtest.h>

#include "detection/whole_file.h"
#include "recording/parameter_file.h"
#include "recording/scripted_dialogs.h"
#include "support/test_recording.h"

namespace vess {
namespace {

std::unique_ptr<Workspace> DetectedOn(const std::string& file) {
    auto ws = std::make_unique<Workspace>();
    ws->recording = Recording::Open(test::SharedData() / file, nullptr);
    if (!ws->recording) return ws;
    ScriptedDialogs dialogs;
    SuggestParameters(*ws, dialogs, 1, [] { return true; });
    DetectWholeFile(*ws, dialogs);
    return ws;
}

// With the suggested parameters 761 (ABF 2) and 764 (ABF 1) events are found
// and 757 lie at the same sample; the rest sit at the area or amplitude
// threshold, where the finer counts of the twin tip the decision.
TEST(Abf2Detection, EventsAgreeWithTheAbfOneTwin) {
    VESS_REQUIRE_SHARED_DATA();
    const auto two = DetectedOn("abf2/171116sh_0020.abf");
    const auto one = DetectedOn("abf1/171116sh_0020_saved.abf");
    ASSERT_TRUE(two->recording && one->recording);
    ASSERT_GT(two->events.Count(), 100);  // spontaneous currents throughout the 70 s
    const Recording& r2 = *two->recording;
    const Recording& r1 = *one->recording;
    std::map<int32_t, const EventRecord*> twin;
    for (const EventRecord& b : one->events.Records()) twin[b.sampleIndex] = &b;
    // A level differs by at most one count of the coarser file; an amplitude
    // is the difference of two levels.
    const double count = std::fabs(r2.Bit2pA2(1));
    int matched = 0;
    for (const EventRecord& a : two->events.Records()) {
        const auto it = twin.find(a.sampleIndex);
        if (it == twin.end()) continue;
        ++matched;
        const EventRecord& b = *it->second;
        EXPECT_FLOAT_EQ(a.time, b.time);
        EXPECT_NEAR(r2.Bit2pA2(a.amplitude), r1.Bit2pA2(b.amplitude), 2 * count) << a.sampleIndex;
        EXPECT_NEAR(r2.Bit2pA(a.baseline), r1.Bit2pA(b.baseline), count) << a.sampleIndex;
    }
    EXPECT_GE(matched, two->events.Count() * 99 / 100);
    EXPECT_GE(matched, one->events.Count() * 99 / 100);
}

}  // namespace
}  // namespace vess
