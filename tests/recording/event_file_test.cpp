// The event and parameter file formats: fields at their offsets, byte-exact
// round trips, damaged files and the records of older versions.
#include <gtest/gtest.h>

#include <random>

#include "recording/event_file.h"
#include "recording/le_bytes.h"
#include "recording/parameter_file.h"
#include "recording/random_events.h"

namespace vess {
namespace {

std::vector<uint8_t> RandomBytes(std::size_t n, unsigned seed) {
    std::mt19937 rng(seed);
    std::vector<uint8_t> b(n);
    for (auto& x : b) x = uint8_t(rng());
    return b;
}

TEST(EventFileFormat, FieldsAtTheirOffsetsAndHeaderCopyKeptElsewhere) {
    const auto header = RandomBytes(2048, 1);
    const auto records = RandomRecords(3, 2);
    const auto file = BuildEventFile(header, SomeParams(), records, "cell1.abf");
    ASSERT_EQ(file.size(), 2048u + 3 * 76);
    EXPECT_EQ(le::GetText(file, 294, 16), "Vessantorium 5.0");
    EXPECT_EQ(le::Get<float>(file, 1954), 21.25f);
    EXPECT_EQ(le::Get<int16_t>(file, 1958), 1);
    EXPECT_EQ(le::Get<int16_t>(file, 1960), 3);
    EXPECT_EQ(le::Get<int32_t>(file, 1986), 3);
    EXPECT_EQ(le::Get<float>(file, 1990), 7.5f);
    EXPECT_EQ(le::Get<int32_t>(file, 1994), 12345);
    EXPECT_EQ(le::Get<int32_t>(file, 1998), 4321);
    EXPECT_EQ(le::Get<int32_t>(file, 2002), 30000);
    EXPECT_EQ(le::Get<float>(file, 2006), 0.37f);
    EXPECT_EQ(le::Get<int32_t>(file, 2010), 500);
    EXPECT_EQ(le::GetText(file, 2014, 34), "cell1.abf" + std::string(25, ' '));
    // Bytes that no field covers are the header's.
    for (std::size_t i : {0u, 293u, 310u, 1953u, 1962u, 1985u}) EXPECT_EQ(file[i], header[i]) << "offset " << i;
    std::vector<uint8_t> second(76);
    WriteEventRecord(records[1], second);
    EXPECT_TRUE(std::equal(second.begin(), second.end(), file.begin() + 2048 + 76));
    // Read back, and written again from what was read (its own header copy): the same bytes.
    const auto read = ParseEventFile(file);
    ASSERT_TRUE(read.Ok());
    EXPECT_EQ(read.version, EventFileVersion::Current);
    EXPECT_EQ(read.records, records);
    EXPECT_EQ(read.params, SomeParams());
    EXPECT_EQ(read.storedName, "cell1.abf");
    EXPECT_EQ(read.eventCount, 3);
    EXPECT_EQ(BuildEventFile(read.header, read.params, read.records, read.storedName), file);
}

// An extended header is written whole under the records; its long comment takes the
// 56-character comment unless that one is blank (as in the sample recordings).
TEST(EventFileFormat, ExtendedHeaderKeepsItsTailAndGetsTheLongComment) {
    auto header = RandomBytes(6144, 6);
    le::PutText(header, 310, 56, "bath applied drug");
    const auto records = RandomRecords(2, 7);
    const auto file = BuildEventFile(header, SomeParams(), records, "e.abf");
    ASSERT_EQ(file.size(), 6144u);
    EXPECT_EQ(le::GetText(file, 5154, 128), "bath applied drug" + std::string(128 - 17, ' '));
    EXPECT_EQ(file[6000], header[6000]);
    EXPECT_EQ(file[2048 + 2 * 76], header[2048 + 2 * 76]);
    EXPECT_EQ(ParseEventFile(file).records, records);
    // Enough records to run past the extended header make the file longer.
    EXPECT_EQ(BuildEventFile(header, SomeParams(), RandomRecords(100, 8), "e.abf").size(), 2048u + 100 * 76);
    le::PutText(header, 5154, 128, "long comment typed in the acquisition program");
    for (char blank : {' ', '\0'}) {
        std::fill_n(header.begin() + 310, 56, uint8_t(blank));
        EXPECT_EQ(le::GetText(BuildEventFile(header, SomeParams(), {}, "e.abf"), 5154, 128),
                  le::GetText(header, 5154, 128));
    }
}

TEST(EventFileFormat, DamagedFilesAreRefusedWithoutReadingPastTheEnd) {
    const auto good = BuildEventFile(RandomBytes(2048, 10), SomeParams(), RandomRecords(4, 11), "d");
    EXPECT_EQ(ParseEventFile(std::span(good).first(2047)).problem, EventFileProblem::TooShort);
    EXPECT_EQ(ParseEventFile({}).problem, EventFileProblem::TooShort);
    // One byte short of the last record.
    EXPECT_EQ(ParseEventFile(std::span(good).first(good.size() - 1)).problem, EventFileProblem::BadCount);
    for (int32_t count : {-1, 5, 0x7fffffff, int32_t(0x80000000)}) {
        auto bad = good;
        le::Put(bad, 1986, count);
        const auto read = ParseEventFile(bad);
        EXPECT_EQ(read.problem, EventFileProblem::BadCount) << count;
        EXPECT_TRUE(read.records.empty());
        EXPECT_NE(DescribeProblem(read), "");
    }
}

TEST(EventFileFormat, Version3RecordsAreTheFirst24BytesOfTheCurrentLayout) {
    std::vector<uint8_t> full(76);
    WriteEventRecord(RandomRecords(1, 12)[0], full);
    std::array<uint8_t, 24> rec{};
    std::copy_n(full.begin(), 24, rec.begin());
    const auto read = ParseEventFile(OldEventFile("Vessantorium 3.0", {rec}, -1, 2));
    ASSERT_TRUE(read.Ok());
    EXPECT_EQ(read.version, EventFileVersion::V3);
    ASSERT_EQ(read.records.size(), 1u);
    // Past the 24 bytes: defaults, but for the header's peak direction.
    std::vector<uint8_t> expected(76);
    WriteEventRecord(EventRecord{.peakDirection = -1}, expected);
    std::copy_n(full.begin(), 24, expected.begin());
    EXPECT_EQ(read.records[0], ReadEventRecord(expected));
}

TEST(EventFileFormat, OldestRecordsAreWidenedFieldByField) {
    std::array<uint8_t, 24> rec{};
    le::Put(std::span(rec), 0, 12.5f);
    for (auto [offset, value] : {std::pair{4, -300}, {6, 4}, {8, 5}, {10, 6}, {12, -7}})
        le::Put(std::span(rec), std::size_t(offset), int16_t(value));
    le::Put(std::span(rec), 14, 2.25f);
    rec[18] = 200;
    const auto read = ParseEventFile(OldEventFile("Vessantorium 2.1", {rec, rec}, 1, 1));
    ASSERT_TRUE(read.Ok());
    EXPECT_EQ(read.version, EventFileVersion::Oldest);
    ASSERT_EQ(read.records.size(), 2u);
    const EventRecord expected{.time = 12.5f, .amplitude = -300, .noise = 4, .riseTime = 5, .decayTime = 6,
                               .baseline = -7, .area = 2.25f, .group = 200, .peakDirection = 1};
    EXPECT_EQ(read.records[1], expected);
}

// NumberPointsPeak is not written into a parameter file: the header's own
// bytes stay at 1960, and what a header holds there (7 here) is not read.
// Complex peaks are never in a file.
TEST(ParameterFile, LayoutAndByteExactRoundTrip) {
    const auto header = RandomBytes(2048, 13);
    AnalysisParameters custom = SomeParams();
    custom.ComplexPeak = true;
    auto bytes = BuildParameterFile(header, custom, 3, "cell.abf");
    ASSERT_EQ(bytes.size(), 2048u);
    EXPECT_EQ(le::GetText(bytes, 294, 16), "Vessantorium 3.0");
    EXPECT_EQ(le::Get<int32_t>(bytes, 1986), 3);
    EXPECT_EQ(le::GetText(bytes, 2014, 34), "cell.abf" + std::string(26, ' '));
    EXPECT_TRUE(std::equal(header.begin(), header.begin() + 294, bytes.begin()));
    EXPECT_EQ(le::Get<int16_t>(bytes, 1960), le::Get<int16_t>(header, 1960));
    le::Put(std::span<uint8_t>(bytes), 1960, int16_t(7));
    const auto read = ParseParameterFile(bytes, AnalysisParameters{});
    ASSERT_EQ(read.problem, EventFileProblem::None);
    AnalysisParameters expected = SomeParams();
    expected.NumberPointsPeak = 1;  // not in a parameter file: the base's
    EXPECT_EQ(read.params, expected);
    EXPECT_EQ(BuildParameterFile(bytes, read.params, 3, "cell.abf"), bytes);
}

}  // namespace
}  // namespace vess
