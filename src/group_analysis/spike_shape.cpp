#include "group_analysis/spike_shape.h"

#include <algorithm>
#include <charconv>

namespace vess::group {

namespace {

constexpr Colour kThresholdColour{0, 150, 0}, kPeakColour{200, 0, 0}, kWidthColour{0, 90, 200},
    kAhpColour{150, 0, 150};

double Parse(std::string_view s) {
    double v = 0;
    const auto r = std::from_chars(s.data(), s.data() + s.size(), v);
    return r.ec == std::errc() ? v : kNotMeasured;
}

// Where the trace sits at `level` on the way up to the peak (the last
// crossing before it) and on the way down (the first after it).
std::pair<double, double> WidthCrossings(std::span<const double> y, std::size_t from, std::size_t peak,
                                         std::size_t to, double level) {
    const auto up = Crossing(y, peak, from, level, false);
    const auto down = Crossing(y, peak, to, level, false);
    return {up ? *up : kNotMeasured, down ? *down : kNotMeasured};
}

}  // namespace

void SetRiseRange(SpikeShapeSettings& s, int riseIndex) {
    const double low = 0.1 + 0.1 * std::clamp(riseIndex, 0, 2);
    s.riseLow = low;
    s.riseHigh = 1 - low;
}

bool SetDecayPercent(SpikeShapeSettings& s, std::string_view text) {
    const auto dash = text.find('-');
    if (dash == std::string_view::npos) return false;
    std::string_view second = text.substr(dash + 1);
    if (!second.empty() && second.back() == '%') second.remove_suffix(1);
    const double a = Parse(text.substr(0, dash)), b = Parse(second);
    if (!Measured(a) || !Measured(b) || a <= b || b < 0 || a > 100) return false;
    s.decayFrom = a / 100;
    s.decayTo = b / 100;
    return true;
}

SpikeShape MeasureSpike(const SampledTrace& trace, const SpikeShapeSettings& settings, std::size_t from,
                        std::size_t to) {
    if (trace.Size() < 3) return {};
    to = std::min(to, trace.Size() - 1);
    from = std::min(from, to);
    const auto dvdt = Derivative(trace.y, trace.intervalMs);
    return MeasureSpikeAt(trace, dvdt, settings, from, ArgMax(trace.y, from, to), to);
}

SpikeShape MeasureSpikeAt(const SampledTrace& trace, const std::vector<double>& dvdt,
                          const SpikeShapeSettings& settings, std::size_t from, std::size_t peak,
                          std::size_t to) {
    SpikeShape s;
    const std::span<const double> y(trace.y);
    s.peak = y[peak];
    s.peakTime = trace.TimeAt(double(peak));
    // Threshold: going back from the fastest point of the upstroke, the
    // first sample of the run where dV/dt stays at or above the rate,
    // interpolated between that sample and the one before it.
    const std::size_t fastest = ArgMax(dvdt, from, peak);
    s.maxRise = dvdt[fastest];
    if (dvdt[fastest] < settings.thresholdRate) return s;
    std::size_t i = fastest;
    while (i > from && dvdt[i - 1] >= settings.thresholdRate) --i;
    double at = double(i);
    if (i > from) at = double(i - 1) + (settings.thresholdRate - dvdt[i - 1]) / (dvdt[i] - dvdt[i - 1]);
    s.thresholdIndex = at;
    s.threshold = trace.ValueAt(at);
    s.thresholdTime = trace.TimeAt(at);
    s.amplitude = s.peak - s.threshold;
    const auto thresholdSample = std::size_t(at);
    s.baseline = Mean(y, from, from + std::max<std::size_t>(1, (thresholdSample - from) / 2));
    s.amplitudeFromBaseline = s.peak - s.baseline;

    const auto level = [&](double fraction) { return s.threshold + fraction * s.amplitude; };
    const auto low = WidthCrossings(y, thresholdSample, peak, to, level(settings.riseLow)).first;
    const auto high = WidthCrossings(y, thresholdSample, peak, to, level(settings.riseHigh)).first;
    if (Measured(low) && Measured(high)) s.rise = (high - low) * trace.intervalMs;
    const auto [halfUp, halfDown] = WidthCrossings(y, thresholdSample, peak, to, level(0.5));
    s.halfRiseTime = Measured(halfUp) ? trace.TimeAt(halfUp) : kNotMeasured;
    s.halfDecayTime = Measured(halfDown) ? trace.TimeAt(halfDown) : kNotMeasured;
    s.halfWidth = (halfDown - halfUp) * trace.intervalMs;
    if (settings.widthAboveThreshold < s.amplitude) {
        const auto [up, down] =
            WidthCrossings(y, thresholdSample, peak, to, s.threshold + settings.widthAboveThreshold);
        s.width = (down - up) * trace.intervalMs;
    }
    const auto decayA = Crossing(y, peak, to, level(settings.decayFrom), false);
    const auto decayB = Crossing(y, peak, to, level(settings.decayTo), false);
    if (decayA && decayB) s.decay = (*decayB - *decayA) * trace.intervalMs;

    // AHP: the lowest point after the spike has come back down through its
    // threshold, measured against the threshold or the baseline.
    s.ahpReference = settings.useThresholdBaseline ? s.threshold : s.baseline;
    const auto below = Crossing(y, peak, to, s.ahpReference, false);
    const auto back = Crossing(y, peak, to, s.threshold, false);
    const std::size_t decayEnd = back ? std::size_t(std::ceil(*back)) : to;
    s.maxDecay = dvdt[ArgMin(dvdt, peak, std::min(decayEnd, to))];
    if (!below) return s;
    const std::size_t minimum = ArgMin(y, std::size_t(std::ceil(*below)), to);
    if (y[minimum] >= s.ahpReference) return s;
    s.ahpMinimum = y[minimum];
    s.ahpPeak = s.ahpReference - y[minimum];
    s.ahpTime = trace.TimeAt(double(minimum));
    const auto returns = Crossing(y, minimum, to, s.ahpReference, true);
    s.ahpArea = AreaBeyond(trace, *below, returns ? *returns : double(to), s.ahpReference, -1);
    return s;
}

std::vector<double> SpikeShapeValues(const SpikeShape& s) {
    return {s.threshold, s.thresholdTime, s.peak, s.peakTime, s.amplitude, s.amplitudeFromBaseline,
            s.baseline, s.rise, s.halfWidth, s.width, s.maxRise, s.maxDecay, s.decay, s.ahpPeak,
            s.ahpTime, s.ahpArea};
}

std::vector<PlotSeries> SpikeMarkers(const SpikeShape& s) {
    std::vector<PlotSeries> out;
    out.push_back(Markers("Peak", {s.peakTime}, {s.peak}, kPeakColour));
    if (!Measured(s.threshold)) return out;
    out.push_back(Markers("Threshold", {s.thresholdTime}, {s.threshold}, kThresholdColour));
    if (Measured(s.halfWidth)) {
        const double half = s.threshold + s.amplitude / 2;
        out.push_back(Segment("Half-width", s.halfRiseTime, half, s.halfDecayTime, half, kWidthColour));
    }
    if (Measured(s.ahpPeak)) out.push_back(Markers("AHP", {s.ahpTime}, {s.ahpMinimum}, kAhpColour));
    return out;
}

}  // namespace vess::group
