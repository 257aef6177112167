// Results as the data analysis window's grid (Grid1) and the column
// statistics window show them: labelled rows of formatted cells, each with
// the full-precision numbers behind it for copying and for `vess stats --json`.
#pragma once

#include <string>
#include <vector>

namespace vess {

struct ResultRow {
    std::string label;
    std::vector<std::string> cells;   // as shown, one per value column
    std::vector<double> values;       // the numbers behind the cells
};

struct ResultTable {
    std::string title;
    std::vector<std::string> columns; // value column headings (may be empty)
    std::vector<ResultRow> rows;
    // What was left out of the numbers ("3 values that were not measured
    // were left out"), shown under the rows; empty when nothing was.
    std::string note;

    const ResultRow* Find(const std::string& label) const {
        for (const auto& r : rows)
            if (r.label == label) return &r;
        return nullptr;
    }
};

// Number formats of the grids: "#,##0.000" is FormatNumber(x, 3, true),
// "0.00000000" FormatNumber(x, 8, false), "##0.000" FormatNumber(x, 3, false),
// "#,##0" FormatNumber(x, 0, true). NaN and infinities print as "NaN",
// "Infinity" and "-Infinity".
std::string FormatNumber(double value, int decimals, bool thousands);

// A p-value: eight decimals down to 1e-4 ("0.00283289"), significant digits
// below ("3.2e-12"), never a row of zeros; "< 1e-323" when it underflowed to
// 0 (below the smallest double). NaN as FormatNumber.
std::string FormatPValue(double p);

}  // namespace vess
