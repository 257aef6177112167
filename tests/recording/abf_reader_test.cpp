// Real recordings in ../shared/data against the values listed for them in
// ../shared/data/README.md (rows copied field for field; one row per kind of
// file; of the 16-channel ABF 2 file one channel per unit), the ABF 2 files'
// ABF 1 twins, and built ABF 2 files.
#include <cmath>

#include <gtest/gtest.h>

#include "recording/abf_parse.h"
#include "recording/le_bytes.h"
#include "support/abf2_bytes.h"
#include "support/read_back.h"

namespace vess {
namespace {

struct KnownChannel {
    const char* file;
    float version;
    int channels;
    int channel;
    int adc;
    const char* units;
    double intervalUs;
    int32_t blocks;
    int64_t points;
    float gain;
    float offset;
    int16_t firstCounts[3];
    double firstValues[3];
    double lastValue;
    int tags;
};

const KnownChannel kKnown[] = {
    {"abf1/05210017_vc_abf1.abf", 1.83f, 2, 0, 0, "pA", 50, 1406, 360000, 0.0100000007f, 0.0f, {-4466, -4424, -4445}, {-136.29149, -135.00975, -135.65062}, -109.31396, 0},
    {"abf1/05210017_vc_abf1.abf", 1.83f, 2, 1, 1, "pA", 50, 1406, 360000, 0.000500000024f, 0.0f, {19047, 19045, 19049}, {11625.36523, 11624.14453, 11626.58594}, 11631.46875, 0},
    {"abf1/130618-1-12.abf", 1.30f, 1, 0, 0, "pA", 20, 586, 150000, 0.000998910633f, 0.0f, {-602, -602, -607}, {-188.33015, -188.33015, -189.89436}, -196.77686, 0},
    {"abf1/171116sh_0020_saved.abf", 1.30f, 1, 0, 0, "pA", 50, 5469, 1400000, 0.00999999978f, 0.0f, {2383, 2411, 2431}, {72.72339, 73.57788, 74.18823}, 64.30054, 0},
    {"abf1/18425108_abf1.abf", 1.84f, 2, 1, 1, "mV", 40, 977, 250000, 0.00999999978f, 0.0f, {-2337, -2337, -2339}, {-71.31958, -71.31958, -71.38062}, -70.95337, 0},
    {"abf1/190619B_0003.abf", 1.83f, 2, 0, 0, "mV", 100, 1197, 306400, 0.00500000035f, 0.0f, {-1080, -1085, -1081}, {-65.91796, -66.22314, -65.97900}, -73.97460, 0},
    {"abf1/190619B_0003.abf", 1.83f, 2, 1, 2, "mV", 100, 1197, 306400, 1.0f, 0.0f, {-31, -35, -32}, {-0.00946, -0.01068, -0.00977}, -0.01007, 0},
    {"abf1/19911002-2.abf", 1.84f, 2, 1, 1, "nA", 100, 3548, 908288, 0.00100000005f, 0.0f, {-249, -249, -249}, {-75.98877, -75.98877, -75.98877}, -96.13036, 0},
    {"abf1/2009_01_19_0002_varlen_v18.abf", 1.84f, 2, 0, 12, "V", 50, 114, 29281, 1.0f, 0.0f, {-1, 2, 21}, {-0.00031, 0.00061, 0.00641}, -0.00519, 0},
    {"abf1/2009_01_19_0002_varlen_v18.abf", 1.84f, 2, 1, 13, "V", 50, 114, 29281, 1.0f, 0.0f, {-23, -26, -40}, {-0.00702, -0.00793, -0.01221}, -0.00092, 0},
    {"abf1/File_axon_2.abf", 1.83f, 1, 0, 0, "mV", 1000, 4688, 1200000, 0.00999999978f, 0.0f, {-1647, -1646, -1646}, {-55.28870, -55.25513, -55.25513}, -50.42114, 4},
    {"abf1/File_axon_3.abf", 1.83f, 2, 0, 5, "V", 50, 403, 103220, 1.0f, 0.0f, {-496, -896, -912}, {-0.15500, -0.28000, -0.28500}, -0.28000, 0},
    {"abf1/File_axon_3.abf", 1.83f, 2, 1, 7, "mV", 50, 403, 103220, 0.0399999991f, 0.0f, {-7040, -7040, -7024}, {-55.00000, -55.00000, -54.87500}, -41.12500, 0},
    {"abf1/f1.abf", 1.83f, 4, 0, 0, "pA", 50, 1953, 500000, 0.000500000024f, 0.0f, {-50, -68, -53}, {-30.51758, -41.50390, -32.34863}, -25.63476, 0},
    {"abf1/f1.abf", 1.83f, 4, 2, 2, "mV", 50, 1953, 500000, 9.99999975e-05f, 0.0f, {1016, 1013, 1015}, {3100.58594, 3091.43066, 3097.53418}, 3094.48242, 0},
    {"abf1/multichannelAbf1WithTags.abf", 1.84f, 2, 0, 0, "pA", 50, 1207, 309111, 0.000500000024f, 0.0f, {7, 8, 6}, {4.27246, 4.88281, 3.66211}, -139.77051, 2},
    {"abf1/multichannelAbf1WithTags.abf", 1.84f, 2, 1, 1, "mV", 50, 1207, 309111, 0.0499552526f, 0.00610352f, {-8183, -8183, -8183}, {-49.98370, -49.98370, -49.98370}, -59.97800, 2},
    {"abf1/myokit_abf-v1.abf", 1.65f, 1, 0, 0, "pA", 100, 176, 45000, 0.000500000024f, 0.0f, {49, -48, 4}, {29.90722, -29.29687, 2.44141}, -18.92090, 0},
    {"abf1/pclamp11_4ch_abf1.abf", 1.84f, 4, 0, 0, "pA", 50, 156, 40000, 1.0f, 0.0f, {-786, -81, -1192}, {-0.23987, -0.02472, -0.36377}, -0.75226, 0},
    {"abf1/pclamp11_4ch_abf1.abf", 1.84f, 4, 3, 3, "pA", 50, 156, 40000, 1.0f, 0.0f, {895, -128, -351}, {0.27313, -0.03906, -0.10712}, 0.38391, 0},
    {"events/Sim1/Simulation.abf", 1.83f, 1, 0, 0, "pA", 25, 1547, 396000, 0.049405437f, 0.0f, {-28044, -28266, -28449}, {-173.22688, -174.59816, -175.72855}, -170.15074, 0},
};

// The listed values are floats printed to 5 decimals (fewer where trailing zeros were dropped).
double Tolerance(double v) { return 1e-4 + 1e-6 * std::fabs(v); }

template <class Known>
std::string RowName(const ::testing::TestParamInfo<Known>& info) {
    const std::filesystem::path file(info.param.file);
    std::string name = file.stem().string();
    if (name == "Simulation") name = file.parent_path().filename().string() + "_" + name;
    for (char& c : name)
        if (!std::isalnum(static_cast<unsigned char>(c))) c = '_';
    return name + "_ch" + std::to_string(info.param.channel);
}

class RealRecording : public ::testing::TestWithParam<KnownChannel> {};

TEST_P(RealRecording, MatchesTheListedValues) {
    VESS_REQUIRE_SHARED_DATA();
    const KnownChannel& k = GetParam();
    auto rec = test::OpenShared(k.file);
    ASSERT_TRUE(rec);
    rec->SetChannel(uint8_t(k.channel));

    EXPECT_NEAR(rec->Header().fileVersionNumber, k.version, 1e-3);
    EXPECT_EQ(rec->ChannelCount(), k.channels);
    EXPECT_EQ(rec->Header().adcSamplingSeq[std::size_t(k.channel)], k.adc);
    EXPECT_EQ(rec->Units(), k.units);
    EXPECT_DOUBLE_EQ(rec->IntervalUs(), k.intervalUs);
    EXPECT_EQ(rec->BlockCount(), k.blocks);
    EXPECT_EQ(rec->PointsPerChannel(), k.points);
    EXPECT_FLOAT_EQ(rec->Gain(), k.gain);
    EXPECT_NEAR(rec->Offset(), k.offset, 1e-7);
    for (int i = 0; i < 3; ++i) {
        const int16_t counts = rec->Sample(i);
        EXPECT_EQ(counts, k.firstCounts[i]) << "point " << i;
        EXPECT_NEAR(rec->Bit2pA(counts), k.firstValues[i], Tolerance(k.firstValues[i])) << i;
    }
    const float last = rec->Bit2pA(rec->Sample(k.points - 1));
    EXPECT_NEAR(last, k.lastValue, Tolerance(k.lastValue));
    EXPECT_EQ(int(rec->Tags().size()), k.tags);
    // Past the last point the last sample repeats; before 0 the first.
    EXPECT_EQ(rec->Sample(k.points + 1000), rec->Sample(k.points - 1));
    EXPECT_EQ(rec->Sample(-5), rec->Sample(0));
}

INSTANTIATE_TEST_SUITE_P(SharedData, RealRecording, ::testing::ValuesIn(kKnown), RowName<KnownChannel>);

// Tags as stored in the file's tag section (four 64-byte entries at block 4704).
TEST(RealRecordingTags, FileAxon2TagsAreReadFieldByField) {
    VESS_REQUIRE_SHARED_DATA();
    auto rec = test::OpenShared("abf1/File_axon_2.abf");
    ASSERT_TRUE(rec);
    const auto& tags = rec->Tags();
    ASSERT_EQ(tags.size(), 4u);
    EXPECT_EQ(tags[0].time, 26765);
    EXPECT_EQ(tags[3].time, 625373);
    EXPECT_NE(tags[0].comment.find("start acquisition"), std::string::npos);
    EXPECT_EQ(tags[1].type, 4);
}

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

const KnownAbf2Channel kKnownAbf2[] = {
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

class RealAbf2Recording : public ::testing::TestWithParam<KnownAbf2Channel> {};

TEST_P(RealAbf2Recording, MatchesTheListedValues) {
    VESS_REQUIRE_SHARED_DATA();
    const KnownAbf2Channel& k = GetParam();
    auto rec = test::OpenShared(k.file);
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

INSTANTIATE_TEST_SUITE_P(SharedData, RealAbf2Recording, ::testing::ValuesIn(kKnownAbf2), RowName<KnownAbf2Channel>);

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
        auto a = test::OpenShared(two), b = test::OpenShared(one);
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

// ADC 3 with telegraph on, ADC 1 with its telegraph gain off (not applied);
// an interval that is not a multiple of the channel count.
test::Abf2Layout TwoChannels() {
    const test::Abf2Channel a{{.name = "Imemb", .units = "nA", .programmableGain = 2, .instrumentScaleFactor = 0.5f,
                               .signalGain = 4, .instrumentOffset = 1.5f, .signalOffset = 0.25f,
                               .telegraphAdditGain = 5},
                              3, 1};
    const test::Abf2Channel b{{.name = "Vm", .units = "mV", .instrumentScaleFactor = 0.01f, .telegraphAdditGain = 7},
                              1, 0};
    return {.intervalUs = 33.3f, .channels = {a, b}};
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

// Fixed sweeps every samplesPerSweep / channels points, variable ones by their lengths; a misfit is one sweep.
TEST(SweepStarts, FollowTheSweepLayout) {
    const auto layout = [](int16_t mode, int64_t samplesPerSweep, int64_t sweeps, std::vector<int64_t> lengths = {}) {
        return SweepLayout{.operationMode = mode, .samplesPerSweep = samplesPerSweep, .sweeps = sweeps,
                           .sweepSamples = std::move(lengths), .sweepTimes = {}};
    };
    EXPECT_EQ(FindSweepStarts(layout(5, 8, 3), 2, 12), (std::vector<int64_t>{0, 4, 8}));
    EXPECT_EQ(FindSweepStarts(layout(5, 8, 3), 2, 13), std::vector<int64_t>{0});
    EXPECT_EQ(FindSweepStarts(layout(3, 8, 3), 2, 12), std::vector<int64_t>{0});  // gap-free
    EXPECT_EQ(FindSweepStarts(layout(1, 0, 3, {6, 10, 4}), 2, 10), (std::vector<int64_t>{0, 3, 8}));
    EXPECT_EQ(FindSweepStarts(layout(1, 0, 2, {0, 4}), 2, 10), std::vector<int64_t>{0});
}

}  // namespace
}  // namespace vess
