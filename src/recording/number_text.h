// Numbers as text so that no nonzero value reads as zero: fixed decimals
// where they show the value, significant digits where they would not (a
// channel whose unit is scaled so that one count is 1e-11 of it).
#pragma once

#include <cmath>
#include <string>

#include <fmt/format.h>

namespace vess {

inline std::string FixedOrSignificant(double value, int decimals) {
    if (value == 0) value = 0;  // -0 reads as 0
    std::string text = fmt::format("{:.{}f}", value, decimals);
    if (value == 0 || !std::isfinite(value)) return text;
    if (text.find_first_of("123456789") == std::string::npos) text = fmt::format("{:.4g}", value);
    return text;
}

}  // namespace vess
