// Unit conversions and the three-step gain, on values worked out by hand.
#include <gtest/gtest.h>

#include "recording/abf_layout.h"
#include "recording/abf_writer.h"
#include "recording/le_bytes.h"
#include "recording/recording.h"
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
    EXPECT_FLOAT_EQ(rec->Bit2pA2(10), 2.5f);
    EXPECT_FLOAT_EQ(rec->Bit2pA2(-3), -0.75f);
    EXPECT_FLOAT_EQ(rec->Bit2pA(10), 2.5f);
    EXPECT_EQ(rec->pA2Bit(2.5f), 10);
    // Halves of a count round to the even neighbour: 0.5 -> 0, 1.5 -> 2, 2.5 -> 2, -1.5 -> -2.
    EXPECT_EQ(rec->pA2Bit(0.125f), 0);
    EXPECT_EQ(rec->pA2Bit(0.375f), 2);
    EXPECT_EQ(rec->pA2Bit(0.625f), 2);
    EXPECT_EQ(rec->pA2Bit(-0.375f), -2);
    EXPECT_EQ(rec->pA2Bit(0.1876f), 1);  // 0.7504 counts
    // Levels beyond the 16-bit range clamp rather than wrap.
    EXPECT_EQ(rec->pA2Bit(8191.75f), 32767);
    EXPECT_EQ(rec->pA2Bit(8192.0f), 32767);
    EXPECT_EQ(rec->pA2Bit(1e30f), 32767);
    EXPECT_EQ(rec->pA2Bit(-8192.0f), -32768);
    EXPECT_EQ(rec->pA2Bit(-1e30f), -32768);
    // Points to ms: 3 x 50 us = 0.15 ms; a whole 256-point block is 12.8 ms.
    EXPECT_FLOAT_EQ(rec->Bit2msec(3), 0.15f);
    EXPECT_FLOAT_EQ(rec->Bit2msec(256), 12.8f);
    EXPECT_FLOAT_EQ(rec->Bit2msec(-256), -12.8f);
    // 2^31 - 1 points: the product needs 64-bit arithmetic (107374182.35 ms).
    EXPECT_FLOAT_EQ(rec->Bit2msec(2147483647), 107374182.35f);
}

TEST(Conversions, OffsetAppliesToLevelsOnly) {
    test::TempDir dir;
    AbfWriteSpec writeSpec = test::MakeSpec(20.0, 2.0f);
    writeSpec.channels[0].signalOffset = 1.0f;
    writeSpec.channels[0].instrumentOffset = 0.5f;
    const auto samples = Ramp(4);
    ASSERT_EQ(WriteAbf(dir / "o.abf", writeSpec, samples), "");
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
        AbfWriteSpec writeSpec = test::MakeSpec(50.0);
        AbfChannelSpec c;
        c.programmableGain = 1.0f;
        c.instrumentScaleFactor = 0.5f;
        c.signalGain = 2.0f;
        writeSpec.channels = {c, c};
        bytes = BuildAbfHeader(writeSpec, 4);
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

TEST_F(AdditionalGain, OldFilesUseTheAutosampleFields) {
    Set<float>(abf::kFileVersionNumber, 1.64f);
    Set<int16_t>(abf::kAutosampleEnable, 1);
    Set<int16_t>(abf::kAutosampleADCNum, 1);
    Set<float>(abf::kAutosampleAdditGain, 3.0f);
    Set<float>(abf::kTelegraphAdditGain + 4, 7.0f);  // ignored before 1.65
    EXPECT_FLOAT_EQ(GainOf(0), 1.0f);  // the gain belongs to ADC 1
    EXPECT_FLOAT_EQ(GainOf(1), 3.0f);
    Set<int16_t>(abf::kAutosampleEnable, 0);
    EXPECT_FLOAT_EQ(GainOf(1), 1.0f);  // autosample off
    Set<int16_t>(abf::kAutosampleEnable, 1);
    Set<float>(abf::kAutosampleAdditGain, 0.0f);
    EXPECT_FLOAT_EQ(GainOf(1), 1.0f);  // a gain of 0 is not applied
}

TEST_F(AdditionalGain, From165OnTheTelegraphGainOfTheChannelsAdcApplies) {
    Set<float>(abf::kFileVersionNumber, 1.65f);
    Set<int16_t>(abf::kAutosampleEnable, 1);
    Set<int16_t>(abf::kAutosampleADCNum, 1);
    Set<float>(abf::kAutosampleAdditGain, 3.0f);
    Set<float>(abf::kTelegraphAdditGain + 0, 5.0f);
    Set<float>(abf::kTelegraphAdditGain + 4, 7.0f);
    EXPECT_FLOAT_EQ(GainOf(0), 5.0f);
    EXPECT_FLOAT_EQ(GainOf(1), 7.0f);
    Set<int16_t>(abf::kAutosampleEnable, 0);
    EXPECT_FLOAT_EQ(GainOf(0), 1.0f);  // still only with autosample enabled
}

TEST_F(AdditionalGain, AVersion165FileWithoutItsExtendedHeaderKeepsTheAutosampleGain) {
    // Data right after a 2048-byte header: the bytes at 4576 are samples.
    Set<float>(abf::kFileVersionNumber, 1.83f);
    Set<int32_t>(abf::kDataSectionPtr, 4);
    Set<int16_t>(abf::kAutosampleEnable, 1);
    Set<int16_t>(abf::kAutosampleADCNum, 0);
    Set<float>(abf::kAutosampleAdditGain, 2.0f);
    Set<float>(abf::kTelegraphAdditGain, 9.0f);
    EXPECT_FLOAT_EQ(GainOf(0), 2.0f);
}

}  // namespace
}  // namespace vess
