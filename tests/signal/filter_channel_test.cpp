#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "recording/rounding.h"
#include "recording/screen.h"
#include "recording/scripted_dialogs.h"
#include "signal/filter_channel.h"
#include "signal/filter_commands.h"
#include "signal/sos_runner.h"
#include "support/test_recording.h"

namespace vess {
namespace {

FilterChoice LowPass(double cutoffHz, bool zeroPhase) {
    FilterChoice s;
    s.kind = FilterKind::Butterworth;
    s.cutoffHz = cutoffHz;
    s.order = 4;
    s.zeroPhase = zeroPhase;
    return s;
}

// Whole-trace filtering in memory, the definition the block-wise file version reproduces.
std::vector<int16_t> InMemory(const std::vector<int16_t>& raw, const FilterChoice& choice, double fs) {
    const auto sections = DesignFilter(choice, fs).sections;
    std::vector<double> x(raw.begin(), raw.end());
    SosRunner forward(sections);
    forward.SettleAt(x.front());
    forward.Process(x);
    if (choice.zeroPhase) {
        std::reverse(x.begin(), x.end());
        SosRunner backward(sections);
        backward.SettleAt(x.front());
        backward.Process(x);
        std::reverse(x.begin(), x.end());
    }
    std::vector<int16_t> out;
    for (double v : x) out.push_back(RoundClamp16(v));
    return out;
}

std::vector<int16_t> Noisy(std::size_t n) {
    std::vector<int16_t> s(n);
    uint32_t state = 12345;  // fixed-seed LCG
    for (std::size_t i = 0; i < n; ++i) {
        state = state * 1664525u + 1013904223u;
        s[i] = int16_t(-300 + int(state >> 22) % 200 + (i / 5000 % 2) * 2000);
    }
    return s;
}

// 150,000 points span three 65,536-point blocks of the file filter.
TEST(FilterChannel, BlockwiseFileEqualsWholeTraceFilteringCausalAndZeroPhase) {
    test::TempDir dir;
    const std::vector<int16_t> raw = Noisy(150000);
    auto rec = test::MakeRecording(dir / "n.abf", raw, 50);  // 20 kHz
    for (bool zeroPhase : {false, true}) {
        const FilterChoice choice = LowPass(500, zeroPhase);
        ASSERT_TRUE(ApplyFilter(*rec, choice).ok());
        rec->ReadFiltered(true);
        std::vector<int16_t> got(raw.size());
        EXPECT_TRUE(rec->ReadSamples(0, got));
        EXPECT_EQ(got, InMemory(raw, choice, 20000)) << "zero phase " << zeroPhase;
        // A screen in the middle reads the same counts as the whole file.
        const Screen screen(*rec, 300, 4);
        for (int i = -1024; i < 2048; i += 97)
            EXPECT_EQ(screen.GetSampleValue(i), got[std::size_t(300 * 256 + i)]);
        // Switched back, reads give the recorded samples again.
        rec->ReadFiltered(false);
        EXPECT_EQ(rec->Sample(1234), raw[1234]);
        EXPECT_EQ(rec->Sample(-5), raw.front());
    }
}

// Zero phase runs three passes: progress rises to 1, a stop in any pass gives no copy.
TEST(FilterChannel, ZeroPhaseProgressRisesToOneAndStopsInAnyPass) {
    test::TempDir dir;
    auto rec = test::MakeRecording(dir / "n.abf", Noisy(150000), 50);
    std::vector<double> seen;
    const FilteredChannel whole = FilterChannel(*rec, LowPass(500, true), [&](double f) {
        seen.push_back(f);
        return true;
    });
    ASSERT_TRUE(whole.counts) << whole.status.message();
    EXPECT_TRUE(std::is_sorted(seen.begin(), seen.end()));
    EXPECT_DOUBLE_EQ(seen.back(), 1.0);
    for (std::size_t stopAt : {std::size_t(0), seen.size() / 2, seen.size() - 1}) {
        std::size_t calls = 0;
        const FilteredChannel f = FilterChannel(*rec, LowPass(500, true), [&](double) { return calls++ < stopAt; });
        EXPECT_FALSE(f.counts);
        EXPECT_TRUE(f.status.cancelled()) << stopAt;
    }
}

TEST(FilterChannel, OutOfRangeCountsAreClampedAndChannelChangeDropsTheCopy) {
    test::TempDir dir;
    // A full-scale square wave overshoots through an elliptic low-pass.
    std::vector<int16_t> raw(4000);
    for (std::size_t i = 0; i < raw.size(); ++i) raw[i] = (i / 500) % 2 ? 32767 : -32768;
    auto rec = test::MakeRecording(dir / "s.abf", raw, 50);
    FilterChoice choice = LowPass(2000, false);
    choice.kind = FilterKind::Elliptic;
    ASSERT_TRUE(ApplyFilter(*rec, choice).ok());
    rec->ReadFiltered(true);
    std::vector<int16_t> y(raw.size());
    rec->ReadSamples(0, y);
    EXPECT_EQ(*std::max_element(y.begin(), y.end()), 32767);
    EXPECT_EQ(*std::min_element(y.begin(), y.end()), -32768);
    rec->SetChannel(0);
    EXPECT_FALSE(rec->HasFiltered());
    EXPECT_EQ(rec->Sample(700), raw[700]);
}

TEST(FilterCommands, SettingsRoundTripAndDetectionFollowsTheChoice) {
    test::TempDir dir;
    Workspace ws;
    ws.recording = test::MakeRecording(dir / "n.abf", Noisy(3000), 50);
    FilterChoice choice = LowPass(750, true);
    choice.kind = FilterKind::InverseChebyshev;
    choice.pass = FilterPass::High;
    choice.attenuationDb = 45;
    StoreFilterChoice(choice, ws.settings);
    EXPECT_EQ(FilterChoiceFromSettings(ws.settings), choice);

    SetDetectOnFiltered(ws, true);
    EXPECT_FALSE(DetectsOnFiltered(ws));  // nothing applied yet
    ScriptedDialogs dialogs;
    ASSERT_TRUE(ApplyFilterCommand(ws, choice));
    EXPECT_TRUE(DetectsOnFiltered(ws));
    SetDetectOnFiltered(ws, false);
    EXPECT_FALSE(DetectsOnFiltered(ws));
    choice.cutoffHz = 10000;  // fs/2 exactly
    EXPECT_FALSE(ShowFailure(dialogs, ApplyFilterCommand(ws, choice)));
    ASSERT_FALSE(dialogs.Messages().empty());
    EXPECT_NE(dialogs.Messages().back().text.find("10000 Hz cannot be used"), std::string::npos);
    EXPECT_EQ(ws.settings.filterCutoffHz, 750.0);  // the refused value is not stored
}

}  // namespace
}  // namespace vess
