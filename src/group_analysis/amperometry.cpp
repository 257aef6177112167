#include "group_analysis/amperometry.h"

#include <algorithm>
#include <charconv>

namespace vess::group {

namespace {

constexpr Colour kPeakColour{200, 0, 0}, kRiseColour{0, 150, 0}, kWidthColour{0, 90, 200},
    kFootColour{150, 0, 150};

double Parse(std::string_view s) {
    while (!s.empty() && s.front() == ' ') s.remove_prefix(1);
    double v = 0;
    const auto r = std::from_chars(s.data(), s.data() + s.size(), v);
    return r.ec == std::errc() ? v : kNotMeasured;
}

// "a-b" with optional '%' and trailing words; fractions a/100 > b/100 or
// a/100 < b/100 as `descending` asks.
bool ParseRange(std::string_view text, bool descending, double& first, double& second) {
    const auto dash = text.find('-');
    if (dash == std::string_view::npos) return false;
    const double a = Parse(text.substr(0, dash)), b = Parse(text.substr(dash + 1));
    if (!Measured(a) || !Measured(b) || a < 0 || b < 0 || a > 100 || b > 100) return false;
    if (descending ? a <= b : a >= b) return false;
    first = a / 100, second = b / 100;
    return true;
}

// The foot: going back from the low point of the rise, where the trace
// leaves the line of the upstroke and lies above it (the line through the
// two rise points, extended down). No foot when the trace stays on or below
// that line down to the baseline, or when its mean current is within
// three SDs of the baseline noise.
void MeasureFoot(const SampledTrace& t, double start, double low, double high, double noiseSd, AmperoSpike& s) {
    const double slope = (t.ValueAt(high) - t.ValueAt(low)) / (high - low);
    const auto above = [&](double i) { return t.ValueAt(i) - (t.ValueAt(low) + slope * (i - low)); };
    const double tolerance = 0.01 * s.imax;
    auto i = std::size_t(std::floor(low));
    while (double(i) > start && above(double(i)) <= tolerance) --i;
    if (double(i) <= start + 1) return;
    // The upstroke begins where the excess falls to zero after sample i.
    const double a = above(double(i)), b = above(double(i + 1));
    const double end = b < 0 ? double(i) + a / (a - b) : double(i + 1);
    if (end - start < 2) return;
    s.footEndTime = t.TimeAt(end);
    s.footDuration = (end - start) * t.intervalMs;
    s.footCharge = AreaBeyond(t, start, end, s.baseline, 1) / 1000;
    s.footAmplitude = s.footCharge * 1000 / s.footDuration;
    // A foot within the baseline noise is not told apart from it.
    if (s.footAmplitude <= 3 * noiseSd) s.footEndTime = s.footDuration = s.footAmplitude = s.footCharge = kNotMeasured;
}

}  // namespace

bool SetAmperoRise(AmperoSettings& s, std::string_view text) {
    return ParseRange(text, false, s.riseLow, s.riseHigh);
}

bool SetAmperoDecay(AmperoSettings& s, std::string_view text) {
    return ParseRange(text, true, s.decayFrom, s.decayTo);
}

double MoleculesFromCharge(double chargePc, double electrons) {
    return chargePc * 1e-12 / (electrons * kElementaryCharge);
}

AmperoSpike MeasureAmperoSpike(const SampledTrace& t, const AmperoSettings& settings) {
    AmperoSpike s;
    const std::span<const double> y(t.y);
    if (t.Size() < 5) return s;
    const std::size_t last = t.Size() - 1, peak = ArgMax(y, 0, last);
    const auto quiet = std::max<std::size_t>(
        1, std::min(peak, std::size_t(settings.baselineFraction * double(t.Size()))));
    s.baseline = Mean(y, 0, quiet);
    double variance = 0;
    for (std::size_t i = 0; i < quiet; ++i) variance += (y[i] - s.baseline) * (y[i] - s.baseline);
    const double noiseSd = std::sqrt(variance / double(quiet));
    s.imax = y[peak] - s.baseline;
    s.peakTime = t.TimeAt(double(peak));
    if (!(s.imax > 0)) return s;
    const auto level = [&](double f) { return s.baseline + f * s.imax; };

    const auto start = Crossing(y, peak, 0, s.baseline, false);
    const auto end = Crossing(y, peak, last, s.baseline, false);
    const double a = start ? *start : 0.0, b = end ? *end : double(last);
    s.startTime = start ? t.TimeAt(a) : kNotMeasured;
    s.endTime = end ? t.TimeAt(b) : kNotMeasured;
    if (start) s.timeToPeak = s.peakTime - s.startTime;

    const auto low = Crossing(y, peak, 0, level(settings.riseLow), false);
    const auto high = Crossing(y, peak, 0, level(settings.riseHigh), false);
    if (low && high && *high > *low) {
        s.riseLowTime = t.TimeAt(*low), s.riseHighTime = t.TimeAt(*high);
        s.riseLowLevel = level(settings.riseLow), s.riseHighLevel = level(settings.riseHigh);
        s.rise = (*high - *low) * t.intervalMs;
        s.riseSlope = (settings.riseHigh - settings.riseLow) * s.imax / s.rise;
        if (start) MeasureFoot(t, a, *low, *high, noiseSd, s);
    }
    const auto up = Crossing(y, peak, 0, level(0.5), false), down = Crossing(y, peak, last, level(0.5), false);
    if (up && down) {
        s.halfUpTime = t.TimeAt(*up), s.halfDownTime = t.TimeAt(*down);
        s.halfWidth = (*down - *up) * t.intervalMs;
    }
    const auto d0 = Crossing(y, peak, last, level(settings.decayFrom), false);
    const auto d1 = Crossing(y, peak, last, level(settings.decayTo), false);
    if (d0 && d1) s.decay = (*d1 - *d0) * t.intervalMs;
    // Units x ms: pA x ms is fC, hence / 1000 for pC. A spike cut off by the
    // stretch is not measured.
    if (start && end) {
        s.charge = AreaBeyond(t, a, b, s.baseline, 1) / 1000;
        s.molecules = MoleculesFromCharge(s.charge, settings.electrons);
    }
    return s;
}

std::vector<double> AmperoValues(const AmperoSpike& s) {
    return {s.baseline, s.imax, s.peakTime, s.timeToPeak, s.rise, s.riseSlope, s.halfWidth, s.decay,
            s.charge, s.molecules, s.footDuration, s.footAmplitude, s.footCharge};
}

std::vector<PlotSeries> AmperoMarkers(const AmperoSpike& s) {
    std::vector<PlotSeries> out;
    if (!Measured(s.imax)) return out;
    out.push_back(Markers("Imax", {s.peakTime}, {s.baseline + s.imax}, kPeakColour));
    if (Measured(s.startTime) && Measured(s.endTime))
        out.push_back(Segment("Baseline", s.startTime, s.baseline, s.endTime, s.baseline, kFootColour));
    if (Measured(s.rise))
        out.push_back(Segment("Rise", s.riseLowTime, s.riseLowLevel, s.riseHighTime, s.riseHighLevel, kRiseColour));
    if (Measured(s.halfWidth)) {
        const double half = s.baseline + s.imax / 2;
        out.push_back(Segment("Half-width", s.halfUpTime, half, s.halfDownTime, half, kWidthColour));
    }
    if (Measured(s.footEndTime))
        out.push_back(Markers("Foot end", {s.footEndTime}, {s.baseline + s.footAmplitude}, kFootColour));
    return out;
}

}  // namespace vess::group
