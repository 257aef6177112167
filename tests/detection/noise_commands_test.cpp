// RMS noise and the baseline and threshold command.
#include <gtest/gtest.h>

#include <cmath>

#include "detection/noise_commands.h"
#include "detection/screen_commands.h"
#include "recording/scripted_dialogs.h"
#include "trace_helpers.h"

namespace vess {
namespace {

using test::AddEvent;
using test::DoubleExp;

// -500 counts with a square wave of +-10 (RMS 10), an event on the first
// screen, two counts a unit: levels and RMS in halves.
struct NoiseFixture : test::TraceWorkspace {
    static std::vector<int16_t> Trace() {
        std::vector<int16_t> t(4096);
        for (std::size_t i = 0; i < t.size(); ++i) t[i] = int16_t(i % 2 == 0 ? -490 : -510);
        AddEvent(t, 600, DoubleExp{10, 100, 1000});
        return t;
    }
    NoiseFixture() : TraceWorkspace(Trace(), 2.0f) { ws.params().ThresholdAmplitude = 100; }
};

TEST(ScreenNoise, StoredEventsAreLeftOut) {
    NoiseFixture f;
    const Screen screen(*f.ws.recording, 0, f.ws.BlocksPerScreen());
    const NoiseMeasure withEvent = MeasureScreenNoise(screen, f.ws.events);
    ASSERT_TRUE(withEvent.valid);
    EXPECT_EQ(withEvent.points, screen.WindowLen());
    EXPECT_GT(withEvent.rmsUnits, 20.0);  // the event dominates

    ScriptedDialogs dialogs;
    f.ws.params().DecayPercent = 0.01f;  // the decay point near the end of the tail
    AnalyzeCurrentScreen(f.ws, dialogs);
    ASSERT_EQ(f.ws.events.Count(), 1);
    const NoiseMeasure quiet = MeasureScreenNoise(screen, f.ws.events);
    ASSERT_TRUE(quiet.valid);
    // Left out from the event start to the screen's end (the decay point lies beyond).
    EXPECT_EQ(quiet.pointsExcluded, 1024 - (f.ws.events[1].sampleIndex - f.ws.events[1].riseTime));
    EXPECT_NEAR(quiet.rmsUnits, 5.0, 1.5);
    EXPECT_NEAR(quiet.baselineUnits, -250.0, 5.0);

    // A screen without events: exactly the square wave.
    const Screen last(*f.ws.recording, 12, f.ws.BlocksPerScreen());
    const NoiseMeasure flat = MeasureScreenNoise(last, f.ws.events);
    EXPECT_DOUBLE_EQ(flat.rmsUnits, 5.0);
    EXPECT_DOUBLE_EQ(flat.baselineUnits, -250.0);
}

// 1948 samples: the last screen holds 924, the square wave and then 300; by
// hand the RMS about their mean 310/924 is sqrt((923 x 100 + 90000) / 924 -
// mean^2) = 14.04 (padded to 1024 points with the last sample it read 89.9).
TEST(ScreenNoise, OnlyRecordedSamplesAreMeasured) {
    std::vector<int16_t> t(1948);
    for (std::size_t i = 0; i < t.size(); ++i) t[i] = int16_t(i % 2 == 0 ? 10 : -10);
    t.back() = 300;
    test::TraceFile file(t);
    ASSERT_EQ(file.rec->BlockCount(), 8);
    const NoiseMeasure m = MeasureScreenNoise(Screen(*file.rec, 4, 4), EventTable{});
    ASSERT_TRUE(m.valid);
    EXPECT_EQ(m.points, 924);
    const double mean = 310.0 / 924.0;
    EXPECT_NEAR(m.rmsUnits, std::sqrt((923 * 100.0 + 90000.0) / 924.0 - mean * mean), 1e-9);
}

TEST(NoiseCommands, ShowTheRmsAndSetTheThresholdInTheChannelsUnits) {
    NoiseFixture f;
    f.ws.screenStartBlock = 12;
    ScriptedDialogs dialogs;
    const NoiseMeasure m = ShowRmsNoise(f.ws, dialogs);
    EXPECT_DOUBLE_EQ(m.rmsUnits, 5.0);
    ASSERT_EQ(dialogs.Messages().size(), 1u);
    EXPECT_EQ(dialogs.Messages()[0].caption, "RMS Noise");
    EXPECT_NE(dialogs.Messages()[0].text.find("RMS noise: 5.000"), std::string::npos)
        << dialogs.Messages()[0].text;
    EXPECT_TRUE(f.ws.events.Empty());

    // Baseline and Threshold sets the threshold only on yes.
    dialogs.AnswerYesNo(false).AnswerYesNo(true);
    const BaselineThresholdResult no = BaselineThreshold(f.ws, dialogs);
    EXPECT_FLOAT_EQ(no.suggestedThreshold, float(kThresholdNoiseMultiple * 5.0));
    EXPECT_FALSE(no.applied);
    EXPECT_EQ(f.ws.params().ThresholdAmplitude, 100.0f);

    const BaselineThresholdResult yes = BaselineThreshold(f.ws, dialogs);
    EXPECT_TRUE(yes.applied);
    EXPECT_EQ(f.ws.params().ThresholdAmplitude, yes.suggestedThreshold);
    const auto& question = dialogs.Transcript().back();
    EXPECT_EQ(question.caption, "Baseline and Threshold");
    EXPECT_NE(question.text.find("Baseline: -250.000"), std::string::npos) << question.text;
    EXPECT_FALSE(f.ws.history.CanUndo());
}

}  // namespace
}  // namespace vess
