#include "detection/measurements.h"

#include <algorithm>
#include <limits>

#include "recording/rounding.h"

namespace vess {
namespace {

// The excess of the sample at i over the baseline and the decay under it.
double Excess(const Screen& screen, const EventShape& e, int64_t i) {
    return double(e.direction) * (SampleLess(screen, e.under, i) - double(e.baseline));
}

// The sample value whose excess equals fraction x amplitude.
double LevelValue(const EventShape& e, double fraction) {
    return double(e.baseline) + double(e.direction) * fraction * double(e.amplitudeCounts);
}

// First index walking back from the peak (not beyond the start) whose excess is
// strictly below the level; nullopt-like -1 sentinel replaced by the start.
struct RisingStop {
    int64_t index;
    bool found;
};

RisingStop WalkBack(const Screen& screen, const EventShape& e, double fraction) {
    const double level = fraction * double(e.amplitudeCounts);
    // Without a decay under the event every excess is a whole count, read
    // straight from the screen's memory when the walk stays in it.
    if (const int16_t* p = e.under.amplitude == 0 ? screen.Samples(e.start, e.peak - e.start + 1) : nullptr) {
        for (int64_t i = e.peak; i >= e.start; --i)
            if (e.direction * (int32_t(p[i - e.start]) - e.baseline) < level) return {i, true};
        return {e.start, false};
    }
    for (int64_t i = e.peak; i >= e.start; --i)
        if (Excess(screen, e, i) < level) return {i, true};
    return {e.start, false};
}

// Linear interpolation between index i (beyond the level) and its neighbour on
// the peak side (i + side); returns the position where the level is crossed.
double Interpolate(const Screen& screen, const DecayUnder& under, int64_t i, int side,
                   double levelValue) {
    const double yi = SampleLess(screen, under, i);
    const double yn = SampleLess(screen, under, i + side);
    if (yn == yi) return double(i);
    return double(i) + double(side) * (levelValue - yi) / (yn - yi);
}

}  // namespace

DataSpan RecordedSpan(const Screen& screen) {
    const int64_t origin = screen.AbsoluteIndex(0);
    return {-origin, screen.Rec().PointsPerChannel() - 1 - origin};
}

int64_t HalfWidthReach(const Screen& screen, int64_t peak) {
    const int64_t w = screen.WindowLen();
    // Screen of the peak, rounded down also for indices before the window.
    const int64_t peakScreen = peak >= 0 ? peak / w : -((-peak + w - 1) / w);
    return std::min((peakScreen + 2) * w - 1, RecordedSpan(screen).last);
}

double RisingCrossing(const Screen& screen, const EventShape& e, double fraction) {
    const RisingStop stop = WalkBack(screen, e, fraction);
    if (!stop.found) return double(stop.index);
    return Interpolate(screen, e.under, stop.index, +1, LevelValue(e, fraction));
}

std::optional<double> FallingCrossing(const Screen& screen, const EventShape& e,
                                      double fraction) {
    const double level = fraction * double(e.amplitudeCounts);
    int64_t i = e.peak;
    if (const int16_t* p = e.under.amplitude == 0 ? screen.Samples(e.peak, e.decayLimit - e.peak + 1) : nullptr)
        while (i <= e.decayLimit && !(e.direction * (int32_t(p[i - e.peak]) - e.baseline) < level)) ++i;
    for (; i <= e.decayLimit; ++i)
        if (Excess(screen, e, i) < level)
            return Interpolate(screen, e.under, i, -1, LevelValue(e, fraction));
    return std::nullopt;
}

float Detect1090Rise(const Screen& screen, const EventShape& e) {
    const double x90 = RisingCrossing(screen, e, 0.9);
    const double x10 = RisingCrossing(screen, e, 0.1);
    return static_cast<float>((x90 - x10) * screen.Rec().IntervalUs() / 1000.0);
}

int16_t Detect50RiseTime(const Screen& screen, const EventShape& e) {
    return Clamp16(e.peak - WalkBack(screen, e, 0.5).index);
}

float DetectHalfWidth(const Screen& screen, const EventShape& e, int16_t rise50Points) {
    const int64_t i = e.peak - rise50Points;
    const double level = 0.5 * double(e.amplitudeCounts);
    const double left = Excess(screen, e, i) < level
                            ? Interpolate(screen, e.under, i, +1, LevelValue(e, 0.5))
                            : double(i);
    const std::optional<double> right = FallingCrossing(screen, e, 0.5);
    if (!right) return std::numeric_limits<float>::quiet_NaN();
    return static_cast<float>((*right - left) * screen.Rec().IntervalUs() / 1000.0);
}

float Slope1090(int16_t direction, float amplitudeUnits, float rise1090Ms) {
    if (rise1090Ms == 0.0f) return 0.0f;
    return static_cast<float>(double(direction) * double(amplitudeUnits) * 0.8 /
                              double(rise1090Ms));
}

}  // namespace vess
