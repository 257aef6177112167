#include <gtest/gtest.h>

#include "statistics/array_entry.h"

namespace vess {
namespace {

TEST(ParseTypedValue, ReadsWhatTheGridShowsAndRefusesText) {
    EXPECT_EQ(ParseTypedValue("1,234.500"), 1234.5);  // the grid's "#,##0.000" read back
    EXPECT_EQ(ParseTypedValue(" -0.25 "), -0.25);
    EXPECT_EQ(ParseTypedValue("2e3"), 2000.0);
    EXPECT_FALSE(ParseTypedValue("").has_value());
    EXPECT_FALSE(ParseTypedValue("abc").has_value());
    EXPECT_FALSE(ParseTypedValue("1.5x").has_value());
    EXPECT_FALSE(ParseTypedValue("nan").has_value());
}

TEST(SetArrayElement, OverwritesInsideAndGrowsWithZerosPastTheEnd) {
    DataArray a;  // cleared: upper bound 1, element 1 = 0
    SetArrayElement(a, 1, 5.0f);
    EXPECT_EQ(a.UpperBound(), 1);
    EXPECT_EQ(a[1], 5.0f);
    // Row 4 of a one-element array: elements 2 and 3 appear as 0.
    SetArrayElement(a, 4, 7.0f);
    EXPECT_EQ(a.UpperBound(), 4);
    EXPECT_EQ(a[2], 0.0f);
    EXPECT_EQ(a[3], 0.0f);
    EXPECT_EQ(a[4], 7.0f);
    SetArrayElement(a, 0, 9.0f);  // element 0 is not a value
    EXPECT_EQ(a.UpperBound(), 4);
    EXPECT_EQ(a[0], 0.0f);
}

}  // namespace
}  // namespace vess
