#include "statistics/array_entry.h"

#include <charconv>
#include <cmath>
#include <string>
#include <vector>

namespace vess {

std::optional<double> ParseTypedValue(std::string_view text) {
    std::string digits;
    for (char c : text)
        if (c != ',' && c != ' ' && c != '\t') digits += c;
    if (digits.empty()) return std::nullopt;
    double value = 0;
    const char* end = digits.data() + digits.size();
    const auto [ptr, ec] = std::from_chars(digits.data(), end, value);
    if (ec != std::errc() || ptr != end || !std::isfinite(value)) return std::nullopt;
    return value;
}

void SetArrayElement(DataArray& array, int32_t index, float value) {
    if (index < 1) return;
    if (index > array.UpperBound()) {
        const std::vector<float> zeros(std::size_t(index - array.UpperBound()), 0.0f);
        array.Append(zeros);
    }
    array[index] = value;
}

}  // namespace vess
