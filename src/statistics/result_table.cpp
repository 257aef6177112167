#include "statistics/result_table.h"

#include <cmath>

#include <fmt/format.h>

namespace vess {

std::string FormatNumber(double value, int decimals, bool thousands) {
    if (std::isnan(value)) return "NaN";
    if (std::isinf(value)) return value > 0 ? "Infinity" : "-Infinity";
    std::string text = fmt::format("{:.{}f}", value, decimals);
    if (text.find_first_not_of("-0.") == std::string::npos && text[0] == '-') text.erase(0, 1);  // no "-0.000"
    if (!thousands) return text;
    const std::size_t start = text[0] == '-' ? 1 : 0;
    std::size_t point = text.find('.');
    if (point == std::string::npos) point = text.size();
    for (std::size_t i = point; i > start + 3; i -= 3) text.insert(i - 3, ",");
    return text;
}

}  // namespace vess
