// Rounding and clamping shared by every measurement and conversion.
//
// Every conversion of a real value to an integer rounds to the nearest
// integer with ties to even. std::nearbyint does exactly that in the default
// floating-point environment; std::round (ties away from zero) must not be
// used anywhere a value is "rounded".
#pragma once

#include <cmath>
#include <cstdint>
#include <limits>

namespace vess {

// Nearest integer, ties to even, as a 64-bit value. Non-finite input gives 0;
// values outside the 64-bit range saturate.
inline int64_t RoundEven(double x) {
    if (!std::isfinite(x)) return 0;
    constexpr double kMax = 9.2233720368547748e18;
    if (x >= kMax) return std::numeric_limits<int64_t>::max();
    if (x <= -kMax) return std::numeric_limits<int64_t>::min();
    return static_cast<int64_t>(std::nearbyint(x));
}

// Nearest integer, ties to even, clamped to -32768..32767.
inline int16_t RoundClamp16(double x) {
    if (std::isnan(x)) return 0;
    if (x >= 32767.0) return 32767;
    if (x <= -32768.0) return -32768;
    return static_cast<int16_t>(std::nearbyint(x));
}

// Nearest integer, ties to even, clamped to the 32-bit signed range.
inline int32_t RoundClamp32(double x) {
    if (std::isnan(x)) return 0;
    if (x >= 2147483647.0) return 2147483647;
    if (x <= -2147483648.0) return -2147483647 - 1;
    return static_cast<int32_t>(std::nearbyint(x));
}

inline int16_t Clamp16(int64_t v) {
    if (v > 32767) return 32767;
    if (v < -32768) return -32768;
    return static_cast<int16_t>(v);
}

}  // namespace vess
