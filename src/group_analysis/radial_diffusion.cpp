#include "group_analysis/radial_diffusion.h"

#include <algorithm>
#include <cmath>

#include "group_analysis/simplex_search.h"

namespace vess::group {

namespace {
// Explicit steps stay within a quarter of h² / D (stable below two thirds).
constexpr double kStepFraction = 0.25;
constexpr double kCm2PerSToUm2PerMs = 1e8 / 1e3;
}  // namespace

RadialDiffusion::RadialDiffusion(const WalkModel& model) : model_(model) {
    const double h = model.binSize;
    const auto shells = std::max<std::size_t>(2, std::size_t(std::ceil(model.totalRadius / h)));
    diffusionPerMs_ = model.diffusion * kCm2PerSToUm2PerMs / (h * h);
    c_.assign(shells, 0.0);
    k1_ = k2_ = trial_ = c_;
    outward_.resize(shells);
    inward_.resize(shells);
    // Shell i holds volume ∝ (i+1)³ - i³ and meets its neighbours through
    // areas ∝ (i+1)² and i² at a distance of one bin.
    for (std::size_t i = 0; i < shells; ++i) {
        const double a = double(i), b = double(i + 1), volume = b * b * b - a * a * a;
        outward_[i] = 3 * b * b / volume;
        inward_[i] = 3 * a * a / volume;
    }
    firstTissueShell_ = std::size_t(std::ceil(model.deadRadius / h - 1e-9));
}

void RadialDiffusion::Release() {
    for (std::size_t i = firstTissueShell_; i < c_.size(); ++i) c_[i] = model_.release;
}

void RadialDiffusion::Rates(const std::vector<double>& c, std::vector<double>& rate) const {
    const std::size_t n = c.size();
    const double vmaxPerMs = model_.vmax / 1000;
    for (std::size_t i = 0; i < n; ++i) {
        // Outside the last shell: nothing (molecules diffuse away) or a wall.
        const double outside = i + 1 < n ? c[i + 1] : (model_.diffusingEdge ? 0.0 : c[i]);
        const double inside = i > 0 ? c[i - 1] : c[i];
        double r = diffusionPerMs_ * (outward_[i] * (outside - c[i]) - inward_[i] * (c[i] - inside));
        if (i >= firstTissueShell_ && c[i] > 0) r -= vmaxPerMs * c[i] / (model_.km + c[i]);
        rate[i] = r;
    }
}

// Heun's method: the mean of the rates at the start and at the Euler end.
void RadialDiffusion::Step(double ms) {
    Rates(c_, k1_);
    for (std::size_t i = 0; i < c_.size(); ++i) trial_[i] = c_[i] + ms * k1_[i];
    Rates(trial_, k2_);
    for (std::size_t i = 0; i < c_.size(); ++i) c_[i] += 0.5 * ms * (k1_[i] + k2_[i]);
}

void RadialDiffusion::Advance(double ms) {
    if (!(ms > 0)) return;
    const double longest = diffusionPerMs_ > 0 ? kStepFraction / diffusionPerMs_ : ms;
    const double steps = std::ceil(ms / std::min(longest, ms));
    for (int k = 0; k < int(steps); ++k) Step(ms / steps);
}

std::vector<double> SimulateElectrode(const WalkModel& model, std::size_t samples, double intervalMs) {
    RadialDiffusion walk(model);
    walk.Release();
    std::vector<double> out;
    out.reserve(samples);
    for (std::size_t i = 0; i < samples; ++i) {
        if (i > 0) walk.Advance(intervalMs);
        out.push_back(walk.AtElectrode());
    }
    return out;
}

WalkFit FitWalk(const SampledTrace& trace, const WalkModel& start, const WalkFitOptions& options) {
    WalkFit fit;
    fit.model = start;
    if (!(start.totalRadius > start.deadRadius) || trace.Size() < 3) return fit;  // no tissue to fit
    const auto modelOf = [&](std::span<const double> p) {
        WalkModel m = start;
        m.release = p[0], m.vmax = p[1], m.km = p[2];
        return m;
    };
    struct Stopped {};
    int simulations = 0;
    const auto rss = [&](std::span<const double> p) {
        if (p[0] <= 0 || p[1] < 0 || p[2] <= 0) return double(INFINITY);
        if (options.keepGoing && !options.keepGoing(simulations++)) throw Stopped{};
        const auto sim = SimulateElectrode(modelOf(p), trace.Size(), trace.intervalMs);
        double s = 0;
        for (std::size_t i = 0; i < sim.size(); ++i) s += (trace.y[i] - sim[i]) * (trace.y[i] - sim[i]);
        return s;
    };
    SimplexMinimum best;
    try {
        best = MinimiseBySimplex(rss, {start.release, start.vmax, start.km},
                                 {options.maxIterations, options.tolerance});
    } catch (const Stopped&) {
        fit.stopped = true;
        return fit;
    }
    fit.iterations = best.iterations;
    if (!std::isfinite(best.value)) return fit;
    fit.model = modelOf(best.point);
    fit.simulated = SimulateElectrode(fit.model, trace.Size(), trace.intervalMs);
    const double mean = Mean(trace.y, 0, trace.Size());
    double total = 0;
    for (double v : trace.y) total += (v - mean) * (v - mean);
    fit.rSquared = total > 0 ? 1 - best.value / total : kNotMeasured;
    fit.stdev = std::sqrt(best.value / double(trace.Size()));
    return fit;
}

std::vector<double> WalkFitValues(const WalkFit& f) {
    const bool fitted = Measured(f.stdev);
    return {fitted ? f.model.release : kNotMeasured, fitted ? f.model.vmax : kNotMeasured,
            fitted ? f.model.km : kNotMeasured, f.rSquared, f.stdev, double(f.iterations)};
}

std::vector<PlotSeries> WalkFitMarkers(const SampledTrace& trace, const WalkFit& f) {
    if (f.simulated.empty()) return {};
    PlotSeries s{.kind = SeriesKind::Lines, .x = {}, .y = f.simulated, .legend = "Simulated"};
    for (std::size_t i = 0; i < f.simulated.size(); ++i) s.x.push_back(trace.TimeAt(double(i)));
    s.colour = {255, 60, 60};
    return {s};
}

}  // namespace vess::group
