// A trace given as text for a fit: a header line, then one "time,value"
// line per point (commas, tabs, semicolons or blanks between the two).
#pragma once

#include <istream>
#include <optional>
#include <string>
#include <vector>

namespace vess::group {

struct TextTrace {
    std::vector<double> x, y;
};

// The points, or std::nullopt with error saying which line is wrong or
// that fewer than two points were given. Blank lines are skipped.
std::optional<TextTrace> ReadTextTrace(std::istream& in, std::string& error);

}  // namespace vess::group
