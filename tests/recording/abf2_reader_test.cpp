// ABF 2 recordings against ../shared/data/README.md (its ABF 2 table; of the
// 16-channel file one channel per unit), their ABF 1 twins, and built files.
#include <cmath>

#include <gtest/gtest.h>

#include "recording/abf_parse.h"
#include "recording/le_bytes.h"
#include "support/abf2_bytes.h"
#include "support/read_back.h"

namespace vess {
namespace {

struct KnownAbf2Channel {
    const char* file;
    const char* version;
    int sweeps;
    int channels;
    int channel;
    int adc;
    const char* name;
    const char* units;
    double intervalUs;
    int32_t blocks;
    int64_t points;
    float telegraphGain;  // 0 where the telegraph is off
    int16_t firstCounts[3];
    double firstValues[3];
    double lastValue;
};

const KnownAbf2Channel kKnown[] = {
    {"abf2/16d22006_kim_gapfree.abf", "2.0.0.0", 1, 2, 0, 2, "IN 2", "dB", 100, 1887, 483000, 0.0f, {33, 41, 44}, {0.01007, 0.01251, 0.01343}, 0.01099},
    {"abf2/171116sh_0020.abf", "2.6.0.0", 7, 1, 0, 0, "IN 0", "pA", 50, 5469, 1400000, 5.0f, {596, 603, 608}, {72.7539, 73.60839, 74.21875}, 64.33105},
    {"abf2/18425108.abf", "2.9.0.0", 1, 2, 0, 0, "Imemb", "nA", 40, 977, 250000, 0.0f, {26, 25, 27}, {0.07935, 0.07629, 0.0824}, 0.07629},
    {"abf2/18425108.abf", "2.9.0.0", 1, 2, 1, 1, "10_Vm", "mV", 40, 977, 250000, 0.0f, {-2338, -2338, -2340}, {-71.3501, -71.3501, -71.41113}, -70.98389},
    {"abf2/2018_12_09_pCLAMP11_0001.abf", "2.9.0.0", 10, 1, 0, 0, "IN 0", "A", 100, 78, 20000, 0.0f, {-11962, -13008, -12994}, {-3.65051, -3.96973, -3.96545}, -3.51227},
    {"abf2/File_axon_1.abf", "2.0.0.0", 1, 1, 0, 6, "ImRK01G20", "pA", 100, 7472, 1912832, 0.0f, {-717, -720, -725}, {2.18811, 2.19727, 2.21252}, 1.36719},
    {"abf2/SanPy_19114001.abf", "2.0.0.0", 1, 1, 0, 0, "Vmscaled", "mV", 50, 4688, 1200000, 0.5f, {-104, -105, -105}, {-63.47656, -64.08691, -64.08691}, -61.03515},
    {"abf2/pclamp11_4ch.abf", "2.9.0.0", 10, 4, 0, 0, "IN 0", "pA", 50, 156, 40000, 0.0f, {-787, -82, -1193}, {-0.24017, -0.02502, -0.36407}, -0.75256},
    {"abf2/pclamp11_4ch.abf", "2.9.0.0", 10, 4, 3, 3, "IN 3", "pA", 50, 156, 40000, 0.0f, {895, -129, -352}, {0.27313, -0.03937, -0.10742}, 0.38391},
    {"abf2/test_0001.abf", "2.5.0.0", 1, 16, 0, 0, "V1", "mV", 100, 50, 12896, 0.0f, {-8, -8, -9}, {-0.24414, -0.24414, -0.27466}, -0.24414},
    {"abf2/test_0001.abf", "2.5.0.0", 1, 16, 3, 3, "I2", "nA", 100, 50, 12896, 0.0f, {-6, -6, -6}, {-0.18311, -0.18311, -0.18311}, -0.15259},
    {"abf2/test_0001.abf", "2.5.0.0", 1, 16, 7, 7, "IN 7", "V", 100, 50, 12896, 0.0f, {-9, -9, -9}, {-0.00275, -0.00275, -0.00275}, -0.00275},
    {"abf2/test_0001.abf", "2.5.0.0", 1, 16, 15, 15, "Tmp", "C", 100, 50, 12896, 0.0f, {0, 0, 0}, {0.0, 0.0, 0.0}, 0.0},};

// The listed values are printed to 5 decimals (fewer where trailing zeros were dropped).
double Tolerance(double v) { return 1e-4 + 1e-6 * std::fabs(v); }

using test::OpenShared;

class RealAbf2Recording : public ::testing::TestWithParam<KnownAbf2Channel> {};

TEST_P(RealAbf2Recording, MatchesTheListedValues) {
    VESS_REQUIRE_SHARED_DATA();
    const KnownAbf2Channel& k = GetParam();
    auto rec = OpenShared(k.file);
    ASSERT_TRUE(rec);
    rec->SetChannel(uint8_t(k.channel));
    ASSERT_NE(rec->Abf2(), nullptr);
    const Abf2Info& info = *rec->Abf2();

    EXPECT_EQ(info.VersionText(), k.version);
    EXPECT_EQ(rec->ChannelCount(), k.channels);
    EXPECT_EQ(rec->Header().adcSamplingSeq[std::size_t(k.channel)], k.adc);
    EXPECT_EQ(info.channels[std::size_t(k.channel)].name, k.name);
    EXPECT_EQ(rec->Units(), k.units);
    EXPECT_DOUBLE_EQ(rec->IntervalUs(), k.intervalUs);
    EXPECT_EQ(rec->BlockCount(), k.blocks);
    EXPECT_EQ(rec->PointsPerChannel(), k.points);
    const Abf2Channel& ch = info.channels[std::size_t(k.channel)];
    EXPECT_FLOAT_EQ(ch.telegraphEnable ? ch.telegraphAdditGain : 0.0f, k.telegraphGain);
    for (int i = 0; i < 3; ++i) {
        const int16_t counts = rec->Sample(i);
        EXPECT_EQ(counts, k.firstCounts[i]) << "point " << i;
        EXPECT_NEAR(rec->Bit2pA(counts), k.firstValues[i], Tolerance(k.firstValues[i])) << i;
    }
    EXPECT_NEAR(rec->Bit2pA(rec->Sample(k.points - 1)), k.lastValue, Tolerance(k.lastValue));

    // Sweeps of one length follow each other in the trace.
    const auto& starts = rec->SweepStarts();
    ASSERT_EQ(int(starts.size()), k.sweeps);
    for (std::size_t s = 0; s < starts.size(); ++s)
        EXPECT_EQ(starts[s], int64_t(s) * (k.points / k.sweeps)) << "sweep " << s;
}

std::string RowName(const ::testing::TestParamInfo<KnownAbf2Channel>& info) {
    std::string name = std::filesystem::path(info.param.file).stem().string();
    for (char& c : name)
        if (!std::isalnum(static_cast<unsigned char>(c))) c = '_';
    return name + "_ch" + std::to_string(info.param.channel);
}

INSTANTIATE_TEST_SUITE_P(SharedData, RealAbf2Recording, ::testing::ValuesIn(kKnown), RowName);

// ABF 1 twins re-saved from the same recordings: every sample within one count of the coarser file.
TEST(RealAbf2Recording, AbfOneTwinsHoldTheSameSamples) {
    VESS_REQUIRE_SHARED_DATA();
    const std::pair<const char*, const char*> twins[] = {
        {"abf2/171116sh_0020.abf", "abf1/171116sh_0020_saved.abf"},
        {"abf2/18425108.abf", "abf1/18425108_abf1.abf"},
        {"abf2/pclamp11_4ch.abf", "abf1/pclamp11_4ch_abf1.abf"},
    };
    for (const auto& [two, one] : twins) {
        SCOPED_TRACE(two);
        auto a = OpenShared(two), b = OpenShared(one);
        ASSERT_TRUE(a && b);
        ASSERT_EQ(a->ChannelCount(), b->ChannelCount());
        ASSERT_EQ(a->PointsPerChannel(), b->PointsPerChannel());
        EXPECT_EQ(a->IntervalUs(), b->IntervalUs());
        std::vector<int16_t> sa(std::size_t(a->PointsPerChannel())), sb(sa.size());
        for (int c = 0; c < a->ChannelCount(); ++c) {
            a->SetChannel(uint8_t(c));
            b->SetChannel(uint8_t(c));
            EXPECT_EQ(a->Units(), b->Units());
            a->ReadSamples(0, sa);
            b->ReadSamples(0, sb);
            const double count = std::max(std::fabs(a->Bit2pA2(1)), std::fabs(b->Bit2pA2(1)));
            double worst = 0;
            for (std::size_t i = 0; i < sa.size(); ++i)
                worst = std::max(worst, std::fabs(double(a->Bit2pA(sa[i])) - b->Bit2pA(sb[i])));
            EXPECT_LE(worst, count * 1.001) << "channel " << c;
        }
    }
}

test::Abf2Layout TwoChannels() {
    test::Abf2Layout abfLayout;
    abfLayout.intervalUs = 33.3f;  // not a multiple of the channel count
    test::Abf2Channel a;
    a.adcNum = 3;
    a.name = "Imemb";
    a.units = "nA";
    a.programmableGain = 2;
    a.instrumentScaleFactor = 0.5f;
    a.signalGain = 4;
    a.telegraphEnable = 1;
    a.telegraphAdditGain = 5;
    a.instrumentOffset = 1.5f;
    a.signalOffset = 0.25f;
    test::Abf2Channel b;
    b.adcNum = 1;
    b.name = "Vm";
    b.units = "mV";
    b.instrumentScaleFactor = 0.01f;
    b.telegraphAdditGain = 7;  // telegraph off: not applied
    abfLayout.channels = {a, b};
    return abfLayout;
}

// Channel 0: gain 2 x 0.5 x 4 x telegraph 5 = 20, offset 0.25 + 1.5; channel 1:
// 1 x 0.01 x 1 = 0.01 (its telegraph gain of 7 is off), offset 0.
TEST(Abf2Bytes, ChannelsAreScaledByTheirOwnAdcEntry) {
    const std::vector<int16_t> samples{10, -20, 11, -21, 12, -22};
    AbfError error{};
    std::string detail;
    auto rec = Recording::FromBytes(test::Abf2Bytes(TwoChannels(), samples), "two.abf", &error, &detail);
    ASSERT_TRUE(rec) << detail;
    EXPECT_EQ(rec->ChannelCount(), 2);
    EXPECT_EQ(rec->PointsPerChannel(), 3);
    EXPECT_EQ(rec->IntervalUs(), double(33.3f));
    EXPECT_FLOAT_EQ(rec->Gain(), 20.0f);
    EXPECT_FLOAT_EQ(rec->Offset(), 1.75f);
    EXPECT_EQ(rec->Units(), "nA");
    EXPECT_EQ(rec->Sample(2), 12);
    rec->SetChannel(1);
    EXPECT_FLOAT_EQ(rec->Gain(), 0.01f);
    EXPECT_FLOAT_EQ(rec->Offset(), 0.0f);
    EXPECT_EQ(rec->Units(), "mV");
    EXPECT_EQ(rec->Header().adcSamplingSeq[1], 1);
    EXPECT_EQ(rec->Sample(0), -20);
    // 100 counts on channel 1: 100 / 0.01 x 10 / 32768 = 3.0517578 mV.
    EXPECT_NEAR(rec->Bit2pA(100), 3.0517578, 1e-6);
    EXPECT_EQ(rec->SweepStarts(), std::vector<int64_t>{0});
}

// The ABF 1.x header copy that event files carry scales every channel as the ABF 2 file does.
TEST(Abf2Bytes, HeaderCopyIsAnAbfOneHeaderWithTheSameScaling) {
    const std::vector<int16_t> samples{10, -20, 11, -21, 12, -22};
    auto two = Recording::FromBytes(test::Abf2Bytes(TwoChannels(), samples), "two.abf", nullptr);
    ASSERT_TRUE(two);
    std::vector<uint8_t> bytes = two->HeaderBytes();
    ASSERT_EQ(bytes.size(), 6144u);
    for (int16_t s : samples) {
        bytes.resize(bytes.size() + 2);
        le::Put<int16_t>(std::span<uint8_t>(bytes), bytes.size() - 2, s);
    }
    auto one = Recording::FromBytes(bytes, "two.abf", nullptr);
    ASSERT_TRUE(one);
    EXPECT_EQ(one->Header().fileSignature, "ABF ");
    EXPECT_EQ(one->PointsPerChannel(), two->PointsPerChannel());
    EXPECT_NEAR(one->IntervalUs(), two->IntervalUs(), 1e-5);
    for (uint8_t c = 0; c < 2; ++c) {
        one->SetChannel(c);
        two->SetChannel(c);
        EXPECT_FLOAT_EQ(one->Gain(), two->Gain()) << int(c);
        EXPECT_FLOAT_EQ(one->Offset(), two->Offset()) << int(c);
        EXPECT_EQ(one->Units(), two->Units());
        EXPECT_EQ(one->Sample(1), two->Sample(1));
    }
}

SweepLayout Layout(int16_t mode, int64_t samplesPerSweep, int64_t sweeps, std::vector<int64_t> sweepSamples = {}) {
    SweepLayout l;
    l.operationMode = mode;
    l.samplesPerSweep = samplesPerSweep;
    l.sweeps = sweeps;
    l.sweepSamples = std::move(sweepSamples);
    return l;
}

// Fixed sweeps every samplesPerSweep / channels points, variable ones by their lengths; a misfit is one sweep.
TEST(SweepStarts, FollowTheSweepLayout) {
    const SweepLayout fixed = Layout(5, 8, 3);
    EXPECT_EQ(FindSweepStarts(fixed, 2, 12), (std::vector<int64_t>{0, 4, 8}));
    EXPECT_EQ(FindSweepStarts(fixed, 2, 13), std::vector<int64_t>{0});
    const SweepLayout gapFree = Layout(3, 8, 3);
    EXPECT_EQ(FindSweepStarts(gapFree, 2, 12), std::vector<int64_t>{0});
    const SweepLayout variable = Layout(1, 0, 3, {6, 10, 4});
    EXPECT_EQ(FindSweepStarts(variable, 2, 10), (std::vector<int64_t>{0, 3, 8}));
    const SweepLayout broken = Layout(1, 0, 2, {0, 4});
    EXPECT_EQ(FindSweepStarts(broken, 2, 10), std::vector<int64_t>{0});
}

}  // namespace
}  // namespace vess
