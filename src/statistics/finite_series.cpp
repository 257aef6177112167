#include "statistics/finite_series.h"

#include <algorithm>
#include <cmath>

#include "statistics/texts.h"

namespace vess {

FiniteSeries FiniteOnly(std::span<const double> values) {
    FiniteSeries s;
    s.values.reserve(values.size());
    for (double v : values)
        if (std::isfinite(v))
            s.values.push_back(v);
        else
            ++s.leftOut;
    return s;
}

FinitePairs FinitePairsOnly(std::span<const double> x, std::span<const double> y) {
    FinitePairs p;
    const std::size_t n = std::min(x.size(), y.size());
    for (std::size_t i = 0; i < n; ++i) {
        if (!std::isfinite(x[i]) || !std::isfinite(y[i])) {
            ++p.leftOut;
            continue;
        }
        p.x.push_back(x[i]);
        p.y.push_back(y[i]);
    }
    return p;
}

std::string LeftOutText(std::size_t count) {
    if (count == 0) return {};
    return count == 1 ? std::string(stats_texts::kOneLeftOutText) : stats_texts::LeftOutText(count);
}

std::string LostPrecisionText(std::span<const double> values) {
    constexpr double kFloatExactLimit = 16777216.0;  // 2^24
    const bool beyond = std::any_of(values.begin(), values.end(),
                                    [](double v) { return std::isfinite(v) && std::fabs(v) > kFloatExactLimit; });
    return beyond ? std::string(stats_texts::kLostPrecisionText) : std::string();
}

std::string JoinNotes(const std::string& first, const std::string& second) {
    if (first.empty() || second.empty()) return first + second;
    return first + "; " + second;
}

}  // namespace vess
