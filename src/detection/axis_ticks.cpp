#include "detection/axis_ticks.h"

#include <algorithm>
#include <cmath>

#include <fmt/format.h>

#include "recording/number_text.h"

namespace vess {

double NiceStep(double range, int wanted) {
    if (!(range > 0) || wanted < 1) return 1;
    const double raw = range / wanted;
    const double p = std::pow(10.0, std::floor(std::log10(raw)));
    for (double m : {1.0, 2.0, 5.0})
        if (raw <= m * p * (1 + 1e-9)) return m * p;
    return 10 * p;
}

std::string TickLabel(double value, double step) {
    const int decimals = step >= 1 ? 0 : std::min(6, int(std::ceil(-std::log10(step) - 1e-9)));
    if (std::abs(value) < step * 1e-6) value = 0;  // no "-0" from rounding noise
    return FixedOrSignificant(value, decimals);
}

namespace {

std::vector<AxisTick> TicksOfStep(double from, double to, double lengthPx, double step,
                                  double reservedEndPx,
                                  const std::function<double(const std::string&)>& textWidthPx) {
    constexpr double kGapPx = 6;
    std::vector<AxisTick> ticks;
    double lastRight = -1e300;
    for (auto k = int64_t(std::ceil(from / step - 1e-9)); double(k) * step <= to * (1 + 1e-12); ++k) {
        AxisTick t;
        t.value = double(k) * step;
        t.position = (t.value - from) / (to - from) * lengthPx;
        const std::string label = TickLabel(t.value, step);
        const double half = textWidthPx(label) / 2;
        const bool fits = t.position - half >= lastRight + kGapPx &&
                          t.position + half <= lengthPx - reservedEndPx - kGapPx;
        if (fits) {
            t.label = label;
            lastRight = t.position + half;
        }
        ticks.push_back(std::move(t));
    }
    return ticks;
}

}  // namespace

std::vector<AxisTick> AxisTicks(double from, double to, double lengthPx, double minSpacingPx,
                                double reservedEndPx,
                                const std::function<double(const std::string&)>& textWidthPx) {
    if (!(to > from) || !(lengthPx > 0)) return {};
    const int wanted = std::max(2, int(lengthPx / std::max(1.0, minSpacingPx)));
    // On a short axis the round step may leave no label where one fits: a
    // finer step is tried then.
    std::vector<AxisTick> ticks;
    for (int finer = 1; finer <= 4; finer *= 2) {
        ticks = TicksOfStep(from, to, lengthPx, NiceStep(to - from, wanted * finer), reservedEndPx,
                            textWidthPx);
        if (std::any_of(ticks.begin(), ticks.end(), [](const AxisTick& t) { return !t.label.empty(); }))
            break;
    }
    return ticks;
}

}  // namespace vess
