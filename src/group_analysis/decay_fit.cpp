#include "group_analysis/decay_fit.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>

#include <fmt/format.h>

#include "group_analysis/texts.h"
#include "recording/number_text.h"
#include "recording/rounding.h"

namespace vess::group {

namespace {

constexpr std::array<std::string_view, 4> kRangeNames = {
    texts::kFitRangePeakToEnd, texts::kFitRange1090, texts::kFitRange2080, texts::kFitRangeCustom};
constexpr std::array<std::string_view, 2> kMethodNames = {texts::kFitMethodLeastSquares,
                                                          texts::kFitMethodSimplex};
constexpr std::array<std::string_view, 3> kRiseNames = {texts::kRise1090, texts::kRise2080,
                                                        texts::kRise3070};
constexpr std::array<std::array<double, 2>, 3> kRiseFractions = {{{0.1, 0.9}, {0.2, 0.8}, {0.3, 0.7}}};

// Walking back from the peak, the first point within fraction f of the
// amplitude of the baseline; 0 when none.
int32_t BackTo(std::span<const int16_t> y, int32_t from, int32_t base, int32_t amplitude, double f) {
    for (int32_t j = from; j >= 0; --j)
        if (std::fabs(double(y[std::size_t(j)]) - base) <= std::fabs(f * amplitude)) return j;
    return 0;
}

// Mean of the first n points, rounded.
int32_t MeanLevel(std::span<const int16_t> y, int32_t n) {
    int64_t sum = 0;
    for (int32_t j = 0; j < n; ++j) sum += y[std::size_t(j)];
    return RoundClamp32(double(sum) / n);
}

// The point furthest from the baseline in the direction of the events, from
// the alignment point on; the earliest wins ties.
int32_t PeakPoint(std::span<const int16_t> y, int32_t from, int32_t baseline, int dir) {
    int32_t peak = from;
    for (int32_t j = from; j < int32_t(y.size()); ++j)
        if ((y[std::size_t(j)] - baseline) * dir > (y[std::size_t(peak)] - baseline) * dir) peak = j;
    return peak;
}

// A measure in ms for the report, or "not measured".
std::string MsOrNotMeasured(double ms) {
    return std::isfinite(ms) ? fmt::format("{:.2f}ms", ms) : std::string(texts::kNotMeasured);
}

}  // namespace

UnitScale UnitScale::Of(const Recording& rec) {
    const AbfHeader& h = rec.Header();
    return {rec.Gain(), h.adcRange, double(h.adcResolution), rec.Offset(), rec.IntervalUs(),
            rec.Units()};
}
double UnitScale::Level(double counts) const {
    return float(counts / gain * range / resolution + offset);
}
double UnitScale::Difference(double counts) const { return float(counts / gain * range / resolution); }

FitRange FitRangeFromName(std::string_view name) {
    const auto it = std::find(kRangeNames.begin(), kRangeNames.end(), name);
    return it == kRangeNames.end() ? FitRange::PeakToEnd : FitRange(it - kRangeNames.begin());
}
std::string_view FitRangeName(FitRange range) { return kRangeNames[std::size_t(range)]; }
FitMethod FitMethodFromName(std::string_view name) {
    return name == texts::kFitMethodSimplex ? FitMethod::Simplex : FitMethod::LeastSquares;
}
std::string_view FitMethodName(FitMethod method) { return kMethodNames[std::size_t(method)]; }
bool IsFitResult(FitStatus status) {
    return status == FitStatus::Optimum || status == FitStatus::NotAssessed;
}
std::string_view RiseRangeName(RiseRange range) { return kRiseNames[std::size_t(range)]; }

std::array<int32_t, 6> FindDecayPoints(std::span<const double> y, int32_t peak, double baseline,
                                       double amplitude) {
    std::array<int32_t, 6> points;
    points.fill(-1);
    for (int32_t j = std::max(peak, 0); j < int32_t(y.size()); ++j)
        for (std::size_t k = 0; k < kDecayFractions.size(); ++k)
            if (points[k] < 0 &&
                std::fabs(y[std::size_t(j)] - baseline) <= std::fabs(kDecayFractions[k] * amplitude))
                points[k] = j;
    return points;
}

PointRange FitRangePoints(FitRange range, int32_t peak, const std::array<int32_t, 6>& d,
                          int32_t last, int32_t customFrom, int32_t customTo) {
    auto at = [&](int level) { return d[std::size_t(level)] < 0 ? last : d[std::size_t(level)]; };
    switch (range) {
        case FitRange::PeakToEnd: return {peak, last};
        case FitRange::Decay1090: return {at(kDecay90), at(kDecay10)};
        case FitRange::Decay2080: return {at(kDecay80), at(kDecay20)};
        case FitRange::Custom: break;
    }
    return {std::clamp(std::min(customFrom, customTo), 0, last),
            std::clamp(std::max(customFrom, customTo), 0, last)};
}

TraceMeasurements MeasureTrace(std::span<const int16_t> y, int32_t prePoints, int peakDirection,
                               RiseRange rise, const UnitScale& scale) {
    TraceMeasurements m;
    m.decayPoints.fill(-1);
    const auto L = int32_t(y.size());
    if (L == 0) return m;
    const int32_t pre = prePoints > 0 && prePoints < L ? prePoints : 0;
    const int dir = peakDirection < 0 ? -1 : 1;
    // The baseline is the mean of the points before the rise: first of the
    // whole stretch before the alignment point, then, as long as that moves
    // it, of the points before the 10 % crossing of the rise, so that the
    // rising phase does not pull the baseline towards the peak.
    int32_t baselineEnd = std::max(pre, 1);
    for (int pass = 0; pass < 20; ++pass) {
        m.baseline = MeanLevel(y, baselineEnd);
        m.peak = PeakPoint(y, pre, m.baseline, dir);
        m.amplitude = y[std::size_t(m.peak)] - m.baseline;
        const int32_t riseStart = std::max(BackTo(y, m.peak, m.baseline, m.amplitude, 0.1), 1);
        if (riseStart >= baselineEnd || pre == 0) break;
        baselineEnd = riseStart;
    }
    const std::vector<double> values(y.begin(), y.end());
    m.decayPoints = FindDecayPoints(values, m.peak, m.baseline, m.amplitude);
    const auto [lo, hi] = kRiseFractions[std::size_t(rise)];
    const int32_t hiPoint = BackTo(y, m.peak, m.baseline, m.amplitude, hi);
    const int32_t loPoint = BackTo(y, hiPoint, m.baseline, m.amplitude, lo);
    m.riseMs = scale.Ms(hiPoint - loPoint);
    // A level the trace never reaches leaves its measure not measured (NaN).
    m.halfWidthMs = m.decay9037Ms = std::numeric_limits<double>::quiet_NaN();
    if (m.decayPoints[kDecay50] >= 0)
        m.halfWidthMs =
            scale.Ms(m.decayPoints[kDecay50] - BackTo(y, m.peak, m.baseline, m.amplitude, 0.5));
    if (m.decayPoints[kDecay90] >= 0 && m.decayPoints[kDecay368] >= 0)
        m.decay9037Ms = scale.Ms(m.decayPoints[kDecay368] - m.decayPoints[kDecay90]);
    double area = 0;
    for (int32_t j = pre; j < L; ++j) area += scale.Difference(y[std::size_t(j)] - m.baseline);
    m.areaUnitsMs = scale.Ms(area);
    return m;
}

std::vector<int32_t> TracesToFit(const TraceSet& set, AnalysisType type, int32_t current) {
    if (set.Empty()) return {};
    if (IsAverageType(type)) return {0};
    if (IsIndividualType(type)) return {std::clamp(current, 0, set.count)};
    std::vector<int32_t> all;
    for (int32_t t = 1; t <= set.count; ++t) all.push_back(t);
    return all;
}

TraceFit FitTrace(const TraceSet& set, int32_t t, int peakDirection, int group,
                  const UnitScale& scale, const FitSettings& settings,
                  const SimplexCallback& progress) {
    TraceFit out;
    out.trace = t;
    const auto y = set.Row(t);
    const int32_t last = set.length - 1;
    out.measured = MeasureTrace(y, set.prePoints, peakDirection, settings.rise, scale);
    const PointRange range = FitRangePoints(settings.range, out.measured.peak,
                                            out.measured.decayPoints, last, settings.customFrom,
                                            settings.customTo);
    out.from = range.from;
    out.to = range.to;
    std::vector<double> xs, ys;
    for (int32_t j = out.from; j <= out.to; ++j) {
        xs.push_back(scale.Ms(j - out.from));
        ys.push_back(scale.Level(y[std::size_t(j)]));
    }
    ExpParameters start = settings.guess;
    if (!ys.empty()) start[6] = settings.model.offset ? ys.back() : 0.0;
    if (!settings.useGuess && !ys.empty()) {
        const double size = ys.front() - start[6];
        const double tau = std::max(scale.Ms(1), scale.Ms(out.to - out.from) / 5);
        constexpr std::array<std::array<double, 3>, 3> kShare = {
            {{1, 0, 0}, {0.7, 0.3, 0}, {0.6, 0.3, 0.1}}};
        for (int k = 0; k < 3; ++k) {
            start[std::size_t(2 * k)] = tau * std::pow(5.0, k);
            start[std::size_t(2 * k + 1)] =
                size * kShare[std::size_t(settings.model.exponentials - 1)][std::size_t(k)];
        }
    }
    if (settings.method == FitMethod::LeastSquares) {
        out.fit = FitExponentialsLeastSquares(
            settings.model, start, xs, ys,
            {.fixAmplitudes = settings.simplex.fixAmplitudes, .trace = t, .startFromGuess = settings.useGuess},
            progress);
    } else {
        SimplexOptions options = settings.simplex;
        options.trace = t;
        out.fit = FitExponentials(settings.model, start, xs, ys, options, progress);
        // The search can wander to time constants below zero: no result.
        if (AssessFit(settings.model, out.fit.parameters, xs, ys) == FitStatus::Failed)
            out.fit.status = FitStatus::Failed;
    }
    if (IsFitResult(out.fit.status))
        for (double x : xs) out.curve.push_back(EvaluateModel(settings.model, out.fit.parameters, x));

    ResultValues& v = out.values;
    const ExpParameters& p = out.fit.parameters;
    v.kind = ResultKind::DecayFit;
    v.trace = t;
    v.eventIndex = t > 0 ? set.eventIndex[std::size_t(t)] : 0;
    v.group = group;
    v.tracesAveraged = t == 0 ? set.count : 1;
    v.exponentials = settings.model.exponentials;
    v.iterations = out.fit.iterations;
    v.restarts = out.fit.restarts;
    v.amplitude = scale.Difference(out.measured.amplitude);
    v.time = scale.Ms(out.measured.peak);
    v.baseline = scale.Level(out.measured.baseline);
    v.rise = out.measured.riseMs;
    v.area = out.measured.areaUnitsMs;
    v.halfWidth = out.measured.halfWidthMs;
    v.decay9037 = out.measured.decay9037Ms;
    // A collapsed or failed fit leaves its parameters out of the results.
    const double kept = IsFitResult(out.fit.status) ? 1.0 : kNotMeasured;
    // Components beyond the model's are not measured either.
    auto component = [&](int k, std::size_t at) { return k < settings.model.exponentials ? kept * p[at] : kNotMeasured; };
    v.tau1 = component(0, 0), v.a1 = component(0, 1), v.tau2 = component(1, 2), v.a2 = component(1, 3);
    v.tau3 = component(2, 4), v.a3 = component(2, 5), v.offset = kept * p[6];
    for (std::size_t j = 0; j < v.standardErrors.size(); ++j) v.standardErrors[j] = kept * out.fit.standardErrors[j];
    v.fitStatus = int32_t(out.fit.status);
    v.rSquared = out.fit.quality.rSquared;
    v.stdev = out.fit.quality.stdev;
    v.rss = out.fit.quality.rss;
    v.fitFrom = scale.Ms(out.from);
    v.fitTo = scale.Ms(out.to);
    out.report = FitReport(out, set, scale, settings);
    return out;
}

std::string FormatThousands(double value) {
    std::string digits = FixedOrSignificant(std::fabs(value), 2);
    if (digits.find('e') != std::string::npos) return (value < 0 ? "-" : "") + digits;
    const std::size_t dot = digits.find('.');
    for (std::ptrdiff_t at = std::ptrdiff_t(dot) - 3; at > 0; at -= 3)
        digits.insert(std::size_t(at), ",");
    return (value < 0 && digits.find_first_not_of("0.,") != std::string::npos ? "-" : "") + digits;
}

std::string FitEquation(const ExpModel& model, const ExpParameters& p) {
    std::string eq = "y=";
    for (int k = 0; k < model.exponentials; ++k)
        eq += fmt::format("{}({})*exp(-x/{})", k ? "+" : "", FixedOrSignificant(p[std::size_t(2 * k + 1)], 2),
                          FixedOrSignificant(p[std::size_t(2 * k)], 2));
    if (model.offset) eq += fmt::format("+({})", FixedOrSignificant(p[6], 3));
    return eq;
}

std::string StandardErrorLine(const ExpModel& model, const ExpParameters& se) {
    std::string line;
    auto add = [&](const std::string& name, double value, const char* unit) {
        if (std::isfinite(value)) line += fmt::format("{}{} {:.4g}{}", line.empty() ? "" : ", ", name, value, unit);
    };
    for (int k = 0; k < model.exponentials; ++k) {
        add(fmt::format("tau{}", k + 1), se[std::size_t(2 * k)], " ms");
        add(fmt::format("A{}", k + 1), se[std::size_t(2 * k + 1)], "");
    }
    if (model.offset) add("C", se[6], "");
    return line.empty() ? line : "Standard errors: " + line;
}

std::string FitReport(const TraceFit& fit, const TraceSet& set, const UnitScale& scale,
                      const FitSettings& settings) {
    const TraceMeasurements& m = fit.measured;
    const std::string nl = "\r\n";
    std::string r;
    r += fit.trace == 0 ? fmt::format("Number of Traces Averaged : {}", set.count)
                        : fmt::format("Number of Trace : {}", fit.trace);
    r += nl + "Peak Amplitude : " + FormatThousands(scale.Difference(m.amplitude)) + " " + scale.units;
    r += nl + fmt::format("Rise{} : {:.2f}ms    Half-width : {}  Decay90-37% : {}", RiseRangeName(settings.rise),
                          m.riseMs, MsOrNotMeasured(m.halfWidthMs), MsOrNotMeasured(m.decay9037Ms));
    r += nl + "    Area Under Curve : " + FixedOrSignificant(m.areaUnitsMs, 2);
    r += nl + fmt::format("# of exponentials={}    Fit Range : {}", settings.model.exponentials,
                          FitRangeName(settings.range));
    if (fit.fit.status == FitStatus::TooManyExponentials) r += nl + std::string(texts::kTooManyExponentials);
    else if (fit.fit.status == FitStatus::Failed) r += nl + std::string(texts::kFitFailed);
    else r += nl + FitEquation(settings.model, fit.fit.parameters);
    if (const std::string se = StandardErrorLine(settings.model, fit.fit.standardErrors);
        !se.empty() && IsFitResult(fit.fit.status))
        r += nl + se;
    r += nl + fmt::format("Stdev:{}   Number of Iterations: {}  R-Sqr:{:.4f}",
                          FixedOrSignificant(fit.fit.quality.stdev, 4), fit.fit.iterations, fit.fit.quality.rSquared);
    r += nl + (settings.method == FitMethod::Simplex
                   ? fmt::format("Restarts of the search: {}", fit.fit.restarts)
                   : fmt::format("Least squares from {} starts", fit.fit.restarts));
    return r;
}

}  // namespace vess::group
