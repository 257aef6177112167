#include "group_analysis/fit_review.h"

#include <cmath>

#include <fmt/format.h>
#include <gsl/gsl_cdf.h>

#include "group_analysis/texts.h"
#include "recording/workspace.h"

namespace vess::group {

namespace {

// Sets the group of the events of the given traces, as one undoable change.
void SetGroup(Workspace& ws, const TraceSet& set, const std::vector<int32_t>& traces, int group,
              const std::string& label) {
    ws.history.Checkpoint(ws.events, label);
    for (int32_t t : traces) {
        const int32_t e = set.eventIndex[std::size_t(t)];
        if (ws.events.HasRow(e)) ws.events[e].group = uint8_t(group);
    }
}

}  // namespace

double NormalQuantile(double percent) {
    const double p = std::clamp(percent / 100.0, 0.0, 0.999999);
    // P(|Z| <= z) = erf(z / sqrt 2) grows with z: bisection.
    double lo = 0, hi = 10;
    for (int i = 0; i < 100; ++i) {
        const double mid = (lo + hi) / 2;
        (std::erf(mid / std::sqrt(2.0)) < p ? lo : hi) = mid;
    }
    return (lo + hi) / 2;
}

std::vector<int32_t> TracesToReject(const std::vector<TraceFit>& fits, const RejectCriterion& c) {
    // The interval comes from the fits that gave a tau1; a fit that gave
    // none (collapsed or failed) lies outside it.
    double mean = 0, sd = 0;
    std::size_t measured = 0;
    for (const auto& f : fits) measured += Measured(f.values.tau1);
    if (c.confidencePercent && measured > 1) {
        for (const auto& f : fits)
            if (Measured(f.values.tau1)) mean += f.values.tau1 / double(measured);
        for (const auto& f : fits)
            if (Measured(f.values.tau1)) sd += (f.values.tau1 - mean) * (f.values.tau1 - mean);
        sd = std::sqrt(sd / double(measured - 1));
    }
    const double z = c.confidencePercent ? NormalQuantile(*c.confidencePercent) : 0;
    std::vector<int32_t> out;
    for (const auto& f : fits) {
        const bool poor = c.minRSquared && f.values.rSquared < *c.minRSquared;
        const bool outside = c.confidencePercent && measured > 1 &&
                             !(std::fabs(f.values.tau1 - mean) <= z * sd);
        if (poor || outside) out.push_back(f.trace);
    }
    return out;
}

int AutoRejectCommand(Workspace& ws, const TraceSet& set, const std::vector<int32_t>& traces,
                      Dialogs& dialogs) {
    if (traces.empty()) return 0;
    std::string list;
    for (int32_t t : traces) list += " " + std::to_string(set.eventIndex[std::size_t(t)]);
    if (!dialogs.AskYesNo(std::string(texts::kAutoRejectCaption),
                          texts::AutoRejectPrompt(int(traces.size()), list)))
        return 0;
    SetGroup(ws, set, traces, 0, "Auto-reject fitted events");
    return int(traces.size());
}

NestedFitTest CompareNestedFits(const FitQuality& one, int parametersOne, const FitQuality& two,
                                int parametersTwo, std::size_t points) {
    NestedFitTest t;
    const double r1 = one.rSquared, r2 = two.rSquared, n = double(points);
    t.rSquaredChangePercent = r1 != 0 ? (r2 - r1) / std::fabs(r1) * 100.0 : kNotMeasured;
    const int extra = parametersTwo - parametersOne, left = int(points) - parametersTwo;
    if (extra > 0 && left > 0 && two.rss > 0) {
        t.f = (one.rss - two.rss) / extra / (two.rss / left);
        t.p = t.f > 0 ? gsl_cdf_fdist_Q(t.f, extra, left) : 1.0;
    }
    if (one.rss > 0 && two.rss > 0 && points > 0) {
        t.aicOne = n * std::log(one.rss / n) + 2 * parametersOne;
        t.aicTwo = n * std::log(two.rss / n) + 2 * parametersTwo;
    }
    return t;
}

std::string NestedFitTestLine(const NestedFitTest& t) {
    auto number = [](double v, const char* format) {
        return std::isfinite(v) ? fmt::format(fmt::runtime(format), v) : std::string("not measured");
    };
    return "Change in R-sqr: " + number(t.rSquaredChangePercent, "{:.4f}") + "%   F-test of the second exponential: F " +
           number(t.f, "{:.4g}") + ", p " + number(t.p, "{:.4g}") + "   AIC: 1 exp " + number(t.aicOne, "{:.2f}") +
           ", 2 exp " + number(t.aicTwo, "{:.2f}");
}

Comparison CompareFits(const TraceSet& set, int32_t t, int peakDirection, int group,
                       const UnitScale& scale, FitSettings settings, double criterionPercent,
                       const SimplexCallback& progress) {
    settings.model.exponentials = 1;
    TraceFit one = FitTrace(set, t, peakDirection, group, scale, settings, progress);
    const int parametersOne = settings.model.ParameterCount() - (settings.simplex.fixAmplitudes ? 1 : 0);
    settings.model.exponentials = 2;
    TraceFit two = FitTrace(set, t, peakDirection, group, scale, settings, progress);
    const int parametersTwo = settings.model.ParameterCount() - (settings.simplex.fixAmplitudes ? 2 : 0);
    const NestedFitTest test = CompareNestedFits(one.fit.quality, parametersOne, two.fit.quality,
                                                 parametersTwo, std::size_t(std::max(one.to - one.from + 1, 0)));
    const bool twoWon = IsFitResult(two.fit.status) && std::isfinite(test.rSquaredChangePercent) &&
                        test.rSquaredChangePercent >= criterionPercent;
    Comparison c{twoWon ? std::move(two) : std::move(one), twoWon, test};
    c.chosen.report += "\r\n" + NestedFitTestLine(test);
    return c;
}

int RegroupTwoExponentialCommand(Workspace& ws, const TraceSet& set,
                                 const std::vector<int32_t>& traces, int group, Dialogs& dialogs) {
    if (traces.empty()) return 0;
    SetGroup(ws, set, traces, group, "Regroup two-exponential events");
    dialogs.Message(std::string(texts::kRegroupCaption),
                    texts::CompareRegroupText(int(traces.size()), group));
    return int(traces.size());
}

}  // namespace vess::group
