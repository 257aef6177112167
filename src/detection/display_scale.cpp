// Display gain and offset steps of the trace view (declared in navigation.h).
#include <algorithm>
#include <cmath>

#include "detection/navigation.h"
#include "recording/rounding.h"

namespace vess {

namespace {

// The gain ladder: ten steps a decade, each about 25 % above the one before.
// Values are built from whole hundredths so that they print as short decimals
// ("1.25", "0.16") and a step up and a step down return exactly where they began.
constexpr int kMantissaHundredths[10] = {100, 125, 160, 200, 250, 320, 400, 500, 640, 800};
constexpr int kMinRung = -20;  // 0.01
constexpr int kMaxRung = 30;   // 1000

double Rung(int k) {
    const int decade = k >= 0 ? k / 10 : -((-k + 9) / 10);
    const int m = kMantissaHundredths[k - decade * 10];
    const int exponent = decade - 2;  // value = m x 10^exponent
    if (exponent >= 0) return m * std::pow(10.0, exponent);
    return m / std::pow(10.0, -exponent);  // one rounding of exact integers
}

// Smallest rung above gain (IncreaseGain) or largest rung below it.
double NextRung(double gain, bool up) {
    constexpr double kTolerance = 1e-9;
    if (up) {
        for (int k = kMinRung; k <= kMaxRung; ++k)
            if (Rung(k) > gain * (1 + kTolerance)) return Rung(k);
        return Rung(kMaxRung);
    }
    for (int k = kMaxRung; k >= kMinRung; --k)
        if (Rung(k) < gain * (1 - kTolerance)) return Rung(k);
    return Rung(kMinRung);
}

}  // namespace

DisplayScale StepDisplay(const DisplayScale& scale, DisplayStep step, double fullSpanCounts) {
    DisplayScale out = scale;
    const double gain = scale.gain > 0 && std::isfinite(scale.gain) ? scale.gain : 1.0;
    out.gain = gain;
    const int64_t offsetStep = std::max<int64_t>(1, RoundEven(fullSpanCounts / gain / 10.0));
    switch (step) {
        case DisplayStep::IncreaseGain: out.gain = NextRung(gain, true); break;
        case DisplayStep::DecreaseGain: out.gain = NextRung(gain, false); break;
        case DisplayStep::IncreaseOffset:
            out.offsetCounts = RoundClamp32(double(scale.offsetCounts) + double(offsetStep));
            break;
        case DisplayStep::DecreaseOffset:
            out.offsetCounts = RoundClamp32(double(scale.offsetCounts) - double(offsetStep));
            break;
    }
    return out;
}

VisibleCounts VisibleRange(const DisplayScale& scale, double centreCounts, double fullSpanCounts) {
    const double gain = scale.gain > 0 && std::isfinite(scale.gain) ? scale.gain : 1.0;
    const double half = fullSpanCounts / 2.0 / gain;
    const double centre = centreCounts - scale.offsetCounts;
    return {centre - half, centre + half};
}

DisplayScale DisplayScaleFromSettings(const Settings& settings) {
    DisplayScale scale;
    const double gain = settings.displayGain;
    if (std::isfinite(gain) && gain > 0) scale.gain = std::clamp(gain, kMinDisplayGain, kMaxDisplayGain);
    scale.offsetCounts = settings.displayOffsetCounts;
    return scale;
}

void StoreDisplayScale(Settings& settings, const DisplayScale& scale) {
    settings.displayGain = scale.gain;
    settings.displayOffsetCounts = scale.offsetCounts;
}

}  // namespace vess
