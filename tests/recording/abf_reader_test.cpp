// Real recordings in ../shared/data against the values listed for them in
// ../shared/data/README.md (rows copied field for field; one row per kind of file).
#include <cmath>

#include <gtest/gtest.h>

#include "recording/recording.h"
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

// The listed values are floats printed to 5 decimals.
double Tolerance(double v) { return 1e-4 + 1e-6 * std::fabs(v); }

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

std::string RowName(const ::testing::TestParamInfo<KnownChannel>& info) {
    const std::filesystem::path file(info.param.file);
    std::string name = file.stem().string();
    if (name == "Simulation") name = file.parent_path().filename().string() + "_" + name;
    for (char& c : name)
        if (!std::isalnum(static_cast<unsigned char>(c))) c = '_';
    return name + "_ch" + std::to_string(info.param.channel);
}

INSTANTIATE_TEST_SUITE_P(SharedData, RealRecording, ::testing::ValuesIn(kKnown), RowName);

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

}  // namespace
}  // namespace vess
