#include "statistics/result_table.h"

#include <algorithm>
#include <cmath>

#include <fmt/format.h>

#include "recording/number_text.h"

namespace vess {

std::string FormatNumber(double value, int decimals, bool thousands) {
    if (std::isnan(value)) return "NaN";
    if (std::isinf(value)) return value > 0 ? "Infinity" : "-Infinity";
    std::string text = FixedOrSignificant(value, decimals);
    if (text.find_first_not_of("-0.") == std::string::npos && text[0] == '-') text.erase(0, 1);  // no "-0.000"
    if (!thousands || text.find('e') != std::string::npos) return text;
    const std::size_t start = text[0] == '-' ? 1 : 0;
    const std::size_t point = std::min(text.find('.'), text.size());
    std::string grouped = text.substr(0, start);
    for (std::size_t i = start; i < point; ++i) {
        grouped += text[i];
        const std::size_t left = point - i - 1;  // digits still to come
        if (left > 0 && left % 3 == 0) grouped += ',';
    }
    return grouped + text.substr(point);
}

std::string FormatPValue(double p) {
    if (!(p > 0) || p >= 1e-4) return p == 0 ? "< 1e-323" : FormatNumber(p, 8, false);
    return fmt::format("{:.2g}", p);
}

}  // namespace vess
