// Unit conversions and the three-step gain, on values worked out by hand.
#include <gtest/gtest.h>

#include "recording/abf_layout.h"
#include "recording/abf_writer.h"
#include "recording/file_io.h"
#include "recording/le_bytes.h"
#include "recording/recording.h"
#include "support/read_back.h"
#include "support/test_recording.h"

namespace vess {
namespace {

std::vector<int16_t> Ramp(int n) {
    std::vector<int16_t> v(std::size_t(n), 0);
    for (int i = 0; i < n; ++i) v[std::size_t(i)] = int16_t(i);
    return v;
}

TEST(Conversions, CountsAndUnitsWithTiesToEvenAndClamping) {
    test::TempDir dir;
    // 4 counts a unit (pA), no offset, 50 us a point.
    auto rec = test::MakeRecording(dir / "c.abf", Ramp(10), 50.0, 4.0f);
    EXPECT_FLOAT_EQ(rec->Bit2pA2(-3), -0.75f);
    EXPECT_FLOAT_EQ(rec->Bit2pA(10), 2.5f);
    // {level, counts}: halves of a count round to the even neighbour, the
    // 16-bit range clamps rather than wraps.
    const std::pair<float, int16_t> toCounts[] = {
        {2.5f, 10},   {0.125f, 0},       {0.375f, 2},     {0.625f, 2},     {-0.375f, -2}, {0.1876f, 1},
        {8192.0f, 32767}, {1e30f, 32767}, {-8192.0f, -32768}, {-1e30f, -32768}};
    for (const auto& [level, counts] : toCounts) EXPECT_EQ(rec->pA2Bit(level), counts) << level;
    EXPECT_FLOAT_EQ(rec->Bit2msec(3), 0.15f);  // 3 x 50 us
    EXPECT_FLOAT_EQ(rec->Bit2msec(-256), -12.8f);
    // 2^31 - 1 points: the product needs 64-bit arithmetic (107374182.35 ms).
    EXPECT_FLOAT_EQ(rec->Bit2msec(2147483647), 107374182.35f);
}

TEST(Conversions, OffsetAppliesToLevelsOnly) {
    test::TempDir dir;
    AbfWriteLayout abfLayout = test::MakeAbfLayout(20.0, 2.0f);
    abfLayout.channels[0].signalOffset = 1.0f;
    abfLayout.channels[0].instrumentOffset = 0.5f;
    const auto samples = Ramp(4);
    ASSERT_EQ(WriteAbf(dir / "o.abf", abfLayout, samples), "");
    auto rec = Recording::Open(dir / "o.abf", nullptr);
    ASSERT_TRUE(rec);
    EXPECT_FLOAT_EQ(rec->Offset(), 1.5f);
    EXPECT_FLOAT_EQ(rec->Bit2pA(4), 3.5f);   // 4 / 2 + 1.5
    EXPECT_FLOAT_EQ(rec->Bit2pA2(4), 2.0f);  // a difference carries no offset
    EXPECT_EQ(rec->pA2Bit(3.5f), 4);
    EXPECT_EQ(rec->pA2Bit(1.5f), 0);
}

// A two-channel file (ADC 0 and ADC 1, base gain 1 x 0.5 x 2 = 1) whose
// version and additional-gain fields a test then sets.
class AdditionalGain : public ::testing::Test {
protected:
    std::vector<uint8_t> bytes;
    void SetUp() override {
        AbfWriteLayout abfLayout = test::MakeAbfLayout(50.0);
        const AbfChannelLayout c{.programmableGain = 1.0f, .instrumentScaleFactor = 0.5f, .signalGain = 2.0f};
        abfLayout.channels = {c, c};
        bytes = BuildAbfHeader(abfLayout, 4);
        bytes.resize(bytes.size() + 16, 0);
    }
    template <class T>
    void Set(std::size_t offset, T value) { le::Put<T>(std::span<uint8_t>(bytes), offset, value); }
    float GainOf(int channel) {
        AbfError error{};
        auto rec = Recording::FromBytes(bytes, "g.abf", &error);
        EXPECT_TRUE(rec) << int(error);
        if (!rec) return -1;
        rec->SetChannel(uint8_t(channel));
        return rec->Gain();
    }
};

// Before 1.65 the autosample ADC's gain, from 1.65 each channel's telegraph gain; only with
// autosample on and a gain above 0. A 1.83 file without extended header keeps the autosample gain.
TEST_F(AdditionalGain, FollowsTheVersionAndTheAutosampleFields) {
    struct Case {
        const char* name;
        float version;
        int16_t enable, adcNum;
        float autosampleGain, telegraph0, telegraph1;
        int32_t dataBlock;
        float gain0, gain1;
    };
    const Case cases[] = {
        {"1.64: the autosample ADC's", 1.64f, 1, 1, 3, 0, 7, 0, 1, 3},
        {"1.64, autosample off", 1.64f, 0, 1, 3, 0, 7, 0, 1, 1},
        {"1.64, a gain of 0", 1.64f, 1, 1, 0, 0, 7, 0, 1, 1},
        {"1.65: each channel's telegraph", 1.65f, 1, 1, 3, 5, 7, 0, 5, 7},
        {"1.65, autosample off", 1.65f, 0, 1, 3, 5, 7, 0, 1, 1},
        {"1.83 without extended header", 1.83f, 1, 0, 2, 9, 9, 4, 2, 1},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        SetUp();
        Set<float>(abf::kFileVersionNumber, c.version);
        Set<int16_t>(abf::kAutosampleEnable, c.enable);
        Set<int16_t>(abf::kAutosampleADCNum, c.adcNum);
        Set<float>(abf::kAutosampleAdditGain, c.autosampleGain);
        Set<float>(abf::kTelegraphAdditGain + 0, c.telegraph0);
        Set<float>(abf::kTelegraphAdditGain + 4, c.telegraph1);
        if (c.dataBlock) Set<int32_t>(abf::kDataSectionPtr, c.dataBlock);
        EXPECT_FLOAT_EQ(GainOf(0), c.gain0);
        if (!c.dataBlock) { EXPECT_FLOAT_EQ(GainOf(1), c.gain1); }
    }
}

// The writer's files read back through the reader (checked against the real recordings).
TEST(AbfWriter, ThreeChannelsRoundTripThroughTheReader) {
    test::TempDir dir;
    AbfWriteLayout abfLayout = test::MakeAbfLayout(30.0, 2.0f);  // 10 us a sample in the stream
    const AbfChannelLayout mv{.name = "Vm", .units = "mV", .instrumentScaleFactor = 0.01f, .instrumentOffset = -0.5f,
                              .signalOffset = 1.5f};
    abfLayout.channels.push_back(mv);
    abfLayout.channels.push_back(mv);
    abfLayout.comment = "round trip";
    // 700 frames: not a whole number of 256-point blocks.
    std::vector<int16_t> samples;
    for (int i = 0; i < 700; ++i)
        for (int v : {i - 350, -32768 + i, 32767 - i}) samples.push_back(int16_t(v));
    ASSERT_EQ(WriteAbf(dir / "three.abf", abfLayout, samples), "");

    auto rec = test::OpenFile(dir / "three.abf");
    ASSERT_TRUE(rec);
    EXPECT_EQ(rec->ChannelCount(), 3);
    EXPECT_DOUBLE_EQ(rec->IntervalUs(), 30.0);
    EXPECT_EQ(rec->PointsPerChannel(), 700);
    EXPECT_EQ(rec->BlockCount(), 3);  // 700 / 256 = 2.73 rounds to 3
    EXPECT_EQ(rec->Header().fileComment.substr(0, 10), "round trip");
    EXPECT_EQ(rec->Units(), "pA");
    EXPECT_FLOAT_EQ(rec->Bit2pA(-350), -175.0f);  // 2 counts a unit
    rec->SetChannel(1);
    EXPECT_EQ(rec->Units(), "mV");
    EXPECT_FLOAT_EQ(rec->Offset(), 1.0f);
    for (uint8_t c = 0; c < 3; ++c) {
        rec->SetChannel(c);
        std::vector<int16_t> back(700);
        rec->ReadSamples(0, back);
        for (std::size_t i = 0; i < back.size(); ++i)
            ASSERT_EQ(back[i], samples[3 * i + c]) << "channel " << int(c) << " point " << i;
    }
}

TEST(AbfWriter, RefusesImpossibleRequestsAndLeavesTheTargetAlone) {
    test::TempDir dir;
    const auto file = dir / "keep.abf";
    const std::vector<int16_t> samples{1, 2, 3, 4};
    ASSERT_EQ(WriteAbf(file, test::MakeAbfLayout(50), samples), "");
    const auto before = ReadFileBytes(file);
    AbfWriteLayout none = test::MakeAbfLayout(50), two = none, seventeen = none;
    none.channels.clear();
    two.channels.resize(2);
    seventeen.channels.resize(17);
    EXPECT_NE(WriteAbf(file, none, samples), "");
    EXPECT_NE(WriteAbf(file, two, std::vector<int16_t>{1, 2, 3}), "");  // not whole frames
    EXPECT_NE(WriteAbf(file, seventeen, std::vector<int16_t>(17)), "");
    EXPECT_NE(WriteAbf(file, test::MakeAbfLayout(0), samples), "");
    EXPECT_NE(WriteAbf(dir / "no-such-folder" / "x.abf", test::MakeAbfLayout(50), samples), "");
    EXPECT_EQ(ReadFileBytes(file), before);
    EXPECT_FALSE(std::filesystem::exists(dir / "keep.abf.tmp"));
}

}  // namespace
}  // namespace vess
