// A measurement that could not be made: shown blank, left out of statistics.
#pragma once

#include <cmath>
#include <limits>

namespace vess::group {

inline constexpr double kNotMeasured = std::numeric_limits<double>::quiet_NaN();
inline bool Measured(double v) { return std::isfinite(v); }

}  // namespace vess::group
