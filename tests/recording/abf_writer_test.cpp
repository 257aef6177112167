// The writer's files read back through our own reader, sample for sample and
// scale for scale, and a second write of what was read is byte-identical.
#include <fstream>
#include <iterator>

#include <gtest/gtest.h>

#include "recording/abf_layout.h"
#include "recording/abf_writer.h"
#include "recording/recording.h"
#include "support/test_recording.h"

namespace vess {
namespace {

std::vector<uint8_t> ReadAll(const std::filesystem::path& p) {
    std::ifstream f(p, std::ios::binary);
    return {std::istreambuf_iterator<char>(f), std::istreambuf_iterator<char>()};
}

TEST(AbfWriter, ThreeChannelsRoundTripThroughTheReader) {
    test::TempDir dir;
    AbfWriteSpec writeSpec = test::MakeSpec(30.0, 2.0f);  // 10 us a sample in the stream
    AbfChannelSpec mv;
    mv.name = "Vm";
    mv.units = "mV";
    mv.instrumentScaleFactor = 0.01f;
    mv.signalOffset = 1.5f;
    mv.instrumentOffset = -0.5f;
    writeSpec.channels.push_back(mv);
    writeSpec.channels.push_back(mv);
    writeSpec.comment = "round trip";
    // 700 frames: not a whole number of 256-point blocks.
    std::vector<int16_t> samples;
    for (int i = 0; i < 700; ++i) {
        samples.push_back(int16_t(i - 350));
        samples.push_back(int16_t(-32768 + i));
        samples.push_back(int16_t(32767 - i));
    }
    const auto file = dir / "three.abf";
    ASSERT_EQ(WriteAbf(file, writeSpec, samples), "");

    AbfError error{};
    auto rec = Recording::Open(file, &error);
    ASSERT_TRUE(rec) << int(error);
    EXPECT_EQ(rec->ChannelCount(), 3);
    EXPECT_DOUBLE_EQ(rec->IntervalUs(), 30.0);
    EXPECT_EQ(rec->PointsPerChannel(), 700);
    EXPECT_EQ(rec->BlockCount(), 3);  // 700 / 256 = 2.73 rounds to 3
    EXPECT_EQ(rec->Header().fileComment.substr(0, 10), "round trip");
    EXPECT_EQ(rec->Units(), "pA");
    EXPECT_FLOAT_EQ(rec->Bit2pA(-350), -175.0f);  // 2 counts a unit
    for (int i : {0, 1, 255, 256, 699}) EXPECT_EQ(rec->Sample(i), int16_t(i - 350)) << i;

    rec->SetChannel(1);
    EXPECT_EQ(rec->Units(), "mV");
    EXPECT_FLOAT_EQ(rec->Offset(), 1.0f);
    for (int i : {0, 300, 699}) EXPECT_EQ(rec->Sample(i), int16_t(-32768 + i)) << i;
    rec->SetChannel(2);
    std::vector<int16_t> block(256);
    rec->ReadSamples(256, block);
    for (int k = 0; k < 256; ++k) ASSERT_EQ(block[std::size_t(k)], int16_t(32767 - 256 - k));
}

TEST(AbfWriter, RewritingWhatWasReadIsByteIdentical) {
    test::TempDir dir;
    const std::vector<int16_t> samples{5, -7, 300, -32768, 32767, 0, 1, 2, 3};
    const auto first = dir / "a.abf";
    auto rec = test::MakeRecording(first, samples, 25.0, 4.0f);

    std::vector<int16_t> back(samples.size());
    rec->ReadSamples(0, back);
    AbfWriteSpec writeSpec = test::MakeSpec(rec->IntervalUs(), 4.0f);
    const auto second = dir / "b.abf";
    ASSERT_EQ(WriteAbf(second, writeSpec, back), "");
    const auto a = ReadAll(first), b = ReadAll(second);
    ASSERT_EQ(a.size(), abf::kExtendedHeaderBytes + samples.size() * 2);
    EXPECT_TRUE(a == b);
}

TEST(AbfWriter, RefusesImpossibleRequestsAndLeavesTheTargetAlone) {
    test::TempDir dir;
    const auto file = dir / "keep.abf";
    const std::vector<int16_t> samples{1, 2, 3, 4};
    ASSERT_EQ(WriteAbf(file, test::MakeSpec(50), samples), "");
    const auto before = ReadAll(file);

    AbfWriteSpec none = test::MakeSpec(50);
    none.channels.clear();
    EXPECT_NE(WriteAbf(file, none, samples), "");
    AbfWriteSpec two = test::MakeSpec(50);
    two.channels.resize(2);
    EXPECT_NE(WriteAbf(file, two, std::vector<int16_t>{1, 2, 3}), "");  // not whole frames
    AbfWriteSpec seventeen = test::MakeSpec(50);
    seventeen.channels.resize(17);
    EXPECT_NE(WriteAbf(file, seventeen, std::vector<int16_t>(17)), "");
    EXPECT_NE(WriteAbf(file, test::MakeSpec(0), samples), "");
    EXPECT_NE(WriteAbf(dir / "no-such-folder" / "x.abf", test::MakeSpec(50), samples), "");
    EXPECT_TRUE(ReadAll(file) == before);
    EXPECT_FALSE(std::filesystem::exists(dir / "keep.abf.tmp"));
}

}  // namespace
}  // namespace vess
