#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "recording/file_io.h"
#include "statistics/array_text.h"
#include "stats_fixture.h"

namespace vess {
namespace {

// A file of several read chunks reports its share read as it goes, ending
// at the whole file, and a stop asked after the first chunk reads no further.
TEST(ArrayImportJob, ReportsProgressAndStopsWhenAsked) {
    test::TempDir dir;
    std::vector<float> many(70000, 1.5f);
    DataArray a1, a2;
    a1.Assign(many);
    ASSERT_EQ(WriteFileAtomic(dir / "a.txt", ArraysAtfText("cell.abf", a1, a2)), "");

    std::vector<double> shares;
    const JobProgress record = [&shares](double done, const std::string&) {
        shares.push_back(done);
        return true;
    };
    ASSERT_TRUE(ReadArraysAtf(dir / "a.txt", nullptr, record));
    ASSERT_GT(shares.size(), 2u);
    EXPECT_TRUE(std::is_sorted(shares.begin(), shares.end()));
    EXPECT_LT(shares.front(), 0.5);
    EXPECT_DOUBLE_EQ(shares.back(), 1.0);

    int calls = 0;
    const JobProgress stopAtOnce = [&calls](double, const std::string&) { return ++calls < 1; };
    EXPECT_FALSE(ReadArraysAtf(dir / "a.txt", nullptr, stopAtOnce));
    EXPECT_EQ(calls, 1);
}

}  // namespace
}  // namespace vess
