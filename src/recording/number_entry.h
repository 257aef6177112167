// Reading a number typed into an input box.
#pragma once

#include <cmath>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>

namespace vess {

// The whole entry as a finite number, blanks around it allowed; nothing for
// an empty entry or one with anything else in it ("12abc", "nan").
inline std::optional<double> ParseNumberEntry(std::string_view entry) {
    const auto first = entry.find_first_not_of(" \t");
    if (first == std::string_view::npos) return std::nullopt;
    const auto last = entry.find_last_not_of(" \t");
    const std::string text(entry.substr(first, last - first + 1));
    char* end = nullptr;
    const double value = std::strtod(text.c_str(), &end);
    if (end != text.c_str() + text.size() || !std::isfinite(value)) return std::nullopt;
    return value;
}

}  // namespace vess
