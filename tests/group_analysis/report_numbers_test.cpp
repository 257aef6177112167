// Numbers in the reports and result grids: fixed decimals where they show
// the value, significant digits where a nonzero value would read as zero
// (a channel scaled so that one count is 1e-11 of its unit).
#include <gtest/gtest.h>

#include "group_analysis/decay_fit.h"
#include "group_analysis/results_commands.h"
#include "statistics/result_table.h"

namespace vess {
namespace {

TEST(ReportNumbers, NoNonzeroValueReadsAsZero) {
    struct Case {
        double value;
        std::string grid, statistics, thousands;  // FormatResult, FormatNumber(4, grouped), FormatThousands
    };
    const Case cases[] = {
        {-12345.678, "-12345.678", "-12,345.6780", "-12,345.68"},
        {0.0004, "0.0004", "0.0004", "0.0004"},
        {-2.5e-11, "-2.5e-11", "-2.5e-11", "-2.5e-11"},
        {3.21e-7, "3.21e-07", "3.21e-07", "3.21e-07"},
        {0.0, "0.000", "0.0000", "0.00"},
        {-0.0, "0.000", "0.0000", "0.00"},  // no "-0"
    };
    for (const Case& c : cases) {
        EXPECT_EQ(group::FormatResult(c.value), c.grid) << c.value;
        EXPECT_EQ(FormatNumber(c.value, 4, true), c.statistics) << c.value;
        EXPECT_EQ(group::FormatThousands(c.value), c.thousands) << c.value;
    }
}

}  // namespace
}  // namespace vess
