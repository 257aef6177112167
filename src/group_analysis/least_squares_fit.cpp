#include "group_analysis/least_squares_fit.h"

#include <algorithm>
#include <cmath>
#include <mutex>
#include <numeric>

#include <gsl/gsl_errno.h>
#include <gsl/gsl_multifit_nlinear.h>

#include "group_analysis/exp_projection.h"
#include "group_analysis/fit_starts.h"

namespace vess::group {

namespace {

// A component collapses below one sampling interval or beyond this many
// times the fit range.
constexpr double kLongestTauSpans = 10.0;
// Two time constants closer than this ratio are one component; an amplitude
// below this share of the size of the data is zero, and one this many times
// the size is cancelled by another one.
constexpr double kSameTauRatio = 1.001, kZeroAmplitude = 1e-6, kCancellingAmplitude = 1000.0;
// Stopping tests of each refinement (GSL's small-step and gradient tests).
constexpr double kStepTolerance = 1e-12, kGradientTolerance = 0;
// The search stays within these natural logarithms of the sampling interval
// (below) and the fit range (above).
constexpr double kLogTauMargin = 8.0;
// Relative change of a residual sum of squares within rounding.
constexpr double kRoundingRss = 1e-10;

// GSL's default handler aborts; every GSL status is checked where it matters.
void QuietGsl() {
    static std::once_flag once;
    std::call_once(once, [] { gsl_set_error_handler_off(); });
}

struct Problem {
    ExpProjection* projection;
    SearchBox box;
    std::vector<double> logTau, residuals;
};

int ProjectedResiduals(const gsl_vector* theta, void* params, gsl_vector* f) {
    auto* p = static_cast<Problem*>(params);
    for (std::size_t k = 0; k < p->logTau.size(); ++k) p->logTau[k] = p->box.Clamp(gsl_vector_get(theta, k));
    // GSL hands in columns of its Jacobian too, which are strided.
    p->projection->Residuals(p->logTau, p->residuals);
    for (std::size_t i = 0; i < f->size; ++i) gsl_vector_set(f, i, p->residuals[i]);
    return GSL_SUCCESS;
}

struct Refined {
    std::vector<double> logTau;
    double rss = HUGE_VAL;
    int iterations = 0;
    bool interrupted = false;
};

// One Levenberg-Marquardt refinement of the projected problem.
Refined Refine(gsl_multifit_nlinear_workspace* w, gsl_multifit_nlinear_fdf& fdf, Problem& problem,
               std::vector<double> start, int maxIterations, int firstIteration, int trace,
               const SimplexCallback& progress) {
    Refined out;
    gsl_vector_view x0 = gsl_vector_view_array(start.data(), start.size());
    if (gsl_multifit_nlinear_init(&x0.vector, &fdf, w) != GSL_SUCCESS) return out;
    const double points = double(std::max<std::size_t>(1, problem.projection->Points()));
    for (int it = 0; it < maxIterations; ++it) {
        const int status = gsl_multifit_nlinear_iterate(w);
        ++out.iterations;
        if (status != GSL_SUCCESS) break;
        int info = 0;
        if (gsl_multifit_nlinear_test(kStepTolerance, kGradientTolerance, 0.0, &info, w) == GSL_SUCCESS)
            break;
        if (progress) {
            const gsl_vector* f = gsl_multifit_nlinear_residual(w);
            double rss = 0;
            for (std::size_t i = 0; i < f->size; ++i) rss += f->data[i] * f->data[i];
            if (!progress({trace, firstIteration + out.iterations, std::sqrt(rss / points), 0})) {
                out.interrupted = true;
                break;
            }
        }
    }
    const gsl_vector* position = gsl_multifit_nlinear_position(w);
    for (std::size_t k = 0; k < position->size; ++k) out.logTau.push_back(problem.box.Clamp(gsl_vector_get(position, k)));
    out.rss = problem.projection->Rss(out.logTau);
    return out;
}


// The free parameters of the full problem: log tau of each component, its
// amplitude unless fixed, and the offset.
struct FullProblem {
    ExpModel model;
    ExpParameters fixed;
    bool fixAmplitudes = false;
    std::span<const double> x, y;
    std::vector<int> positions;   // in ExpParameters

    ExpParameters Unpack(const gsl_vector* v) const {
        ExpParameters p = fixed;
        for (std::size_t c = 0; c < positions.size(); ++c) {
            const int at = positions[c];
            const double value = gsl_vector_get(v, c);
            p[std::size_t(at)] = at < 6 && at % 2 == 0 ? std::exp(value) : value;
        }
        return p;
    }
};

int FullResiduals(const gsl_vector* v, void* params, gsl_vector* f) {
    const auto* p = static_cast<FullProblem*>(params);
    const ExpParameters q = p->Unpack(v);
    for (std::size_t i = 0; i < p->x.size(); ++i) gsl_vector_set(f, i, EvaluateModel(p->model, q, p->x[i]) - p->y[i]);
    return GSL_SUCCESS;
}

int FullJacobian(const gsl_vector* v, void* params, gsl_matrix* jac) {
    const auto* p = static_cast<FullProblem*>(params);
    const ExpParameters q = p->Unpack(v);
    for (std::size_t i = 0; i < p->x.size(); ++i)
        for (std::size_t c = 0; c < p->positions.size(); ++c) {
            const int at = p->positions[c];
            double d = 1.0;   // the offset
            if (at < 6) {
                const double tau = q[std::size_t(at - at % 2)], e = std::exp(-p->x[i] / tau);
                d = at % 2 ? e : q[std::size_t(at + 1)] * p->x[i] / tau * e;
            }
            gsl_matrix_set(jac, i, c, d);
        }
    return GSL_SUCCESS;
}

// Refines the projected optimum on the full problem with the exact Jacobian,
// which resolves the residuals to the last bits the projection cannot.
ExpParameters Polish(const ExpModel& model, const ExpParameters& p, bool fixAmplitudes,
                     std::span<const double> x, std::span<const double> y, int maxIterations) {
    FullProblem problem{model, p, fixAmplitudes, x, y, {}};
    for (int k = 0; k < model.exponentials; ++k) {
        problem.positions.push_back(2 * k);
        if (!fixAmplitudes) problem.positions.push_back(2 * k + 1);
    }
    if (model.offset) problem.positions.push_back(6);
    const std::size_t np = problem.positions.size();
    if (x.size() <= np) return p;
    std::vector<double> start;
    for (int at : problem.positions) start.push_back(at < 6 && at % 2 == 0 ? std::log(p[std::size_t(at)]) : p[std::size_t(at)]);
    gsl_multifit_nlinear_fdf fdf{};
    fdf.f = FullResiduals;
    fdf.df = FullJacobian;
    fdf.n = x.size();
    fdf.p = np;
    fdf.params = &problem;
    const gsl_multifit_nlinear_parameters parameters = gsl_multifit_nlinear_default_parameters();
    gsl_multifit_nlinear_workspace* w = gsl_multifit_nlinear_alloc(gsl_multifit_nlinear_trust, &parameters, x.size(), np);
    gsl_vector_view x0 = gsl_vector_view_array(start.data(), np);
    ExpParameters out = p;
    if (gsl_multifit_nlinear_init(&x0.vector, &fdf, w) == GSL_SUCCESS) {
        for (int it = 0; it < maxIterations; ++it) {
            int info = 0;
            if (gsl_multifit_nlinear_iterate(w) != GSL_SUCCESS ||
                gsl_multifit_nlinear_test(kStepTolerance, kGradientTolerance, 0.0, &info, w) == GSL_SUCCESS)
                break;
        }
        out = problem.Unpack(gsl_multifit_nlinear_position(w));
    }
    gsl_multifit_nlinear_free(w);
    return out;
}

}  // namespace

ExpParameters OrderedByTimeConstant(const ExpModel& model, ExpParameters p) {
    std::vector<std::pair<double, double>> parts;
    for (int k = 0; k < model.exponentials; ++k) parts.push_back({p[std::size_t(2 * k)], p[std::size_t(2 * k + 1)]});
    std::stable_sort(parts.begin(), parts.end(), [](auto& a, auto& b) { return a.first < b.first; });
    for (int k = 0; k < model.exponentials; ++k) {
        p[std::size_t(2 * k)] = parts[std::size_t(k)].first;
        p[std::size_t(2 * k + 1)] = parts[std::size_t(k)].second;
    }
    return p;
}

FitStatus AssessFit(const ExpModel& model, const ExpParameters& p, std::span<const double> x,
                    std::span<const double> y) {
    for (int j = 0; j < 2 * model.exponentials; ++j)
        if (!std::isfinite(p[std::size_t(j)]) || (j % 2 == 0 && p[std::size_t(j)] <= 0))
            return FitStatus::Failed;
    if (model.offset && !std::isfinite(p[6])) return FitStatus::Failed;
    if (x.size() < 2 || y.empty()) return FitStatus::Failed;
    const auto [lo, hi] = std::minmax_element(y.begin(), y.end());
    const double size = *hi - *lo, span = x.back() - x.front();
    const ExpParameters q = OrderedByTimeConstant(model, p);
    for (int k = 0; k < model.exponentials; ++k) {
        const double tau = q[std::size_t(2 * k)], a = std::fabs(q[std::size_t(2 * k + 1)]);
        if (tau < SamplingInterval(x) || tau > kLongestTauSpans * span) return FitStatus::TooManyExponentials;
        if (a <= kZeroAmplitude * size || a > kCancellingAmplitude * size) return FitStatus::TooManyExponentials;
        if (k > 0 && tau < kSameTauRatio * q[std::size_t(2 * k - 2)]) return FitStatus::TooManyExponentials;
    }
    return FitStatus::Optimum;
}

ExpParameters StandardErrors(const ExpModel& model, const ExpParameters& p, bool fixAmplitudes,
                             std::span<const double> x, std::span<const double> y) {
    QuietGsl();
    ExpParameters se = kNoStandardErrors;
    std::vector<int> free;   // positions in ExpParameters
    for (int k = 0; k < model.exponentials; ++k) {
        free.push_back(2 * k);
        if (!fixAmplitudes) free.push_back(2 * k + 1);
    }
    if (model.offset) free.push_back(6);
    const std::size_t m = x.size(), np = free.size();
    if (m <= np) return se;
    gsl_matrix* jac = gsl_matrix_alloc(m, np);
    gsl_matrix* covar = gsl_matrix_alloc(np, np);
    double rss = 0;
    for (std::size_t i = 0; i < m; ++i) {
        const double r = y[i] - EvaluateModel(model, p, x[i]);
        rss += r * r;
        for (std::size_t c = 0; c < np; ++c) {
            const int j = free[c];
            double d = 1.0;   // the offset
            if (j < 6) {
                const double tau = p[std::size_t(j - j % 2)], e = std::exp(-x[i] / tau);
                d = j % 2 ? e : p[std::size_t(j + 1)] * x[i] / (tau * tau) * e;
            }
            gsl_matrix_set(jac, i, c, d);
        }
    }
    if (gsl_multifit_nlinear_covar(jac, 0.0, covar) == GSL_SUCCESS) {
        const double s2 = rss / double(m - np);
        for (std::size_t c = 0; c < np; ++c) {
            const double v = gsl_matrix_get(covar, c, c);
            if (v > 0 && std::isfinite(v)) se[std::size_t(free[c])] = std::sqrt(v * s2);
        }
    }
    gsl_matrix_free(covar);
    gsl_matrix_free(jac);
    return se;
}

ExpFitResult FitExponentialsLeastSquares(const ExpModel& model, const ExpParameters& start,
                                         std::span<const double> x, std::span<const double> y,
                                         const LeastSquaresOptions& options,
                                         const SimplexCallback& progress) {
    QuietGsl();
    ExpFitResult result;
    const std::size_t n = std::size_t(model.exponentials);
    if (x.size() < 2 || x.size() != y.size() || x.size() <= std::size_t(model.ParameterCount())) {
        result.status = FitStatus::Failed;
        return result;
    }
    ExpProjection projection(model, x, y, options.fixAmplitudes ? std::optional(start) : std::nullopt);
    const double span = std::max(x.back() - x.front(), SamplingInterval(x));
    Problem problem{&projection,
                    {std::log(SamplingInterval(x)) - kLogTauMargin, std::log(span) + kLogTauMargin},
                    std::vector<double>(n), std::vector<double>(x.size())};
    gsl_multifit_nlinear_fdf fdf{};
    fdf.f = ProjectedResiduals;
    fdf.n = x.size();
    fdf.p = n;
    fdf.params = &problem;
    const gsl_multifit_nlinear_parameters parameters = gsl_multifit_nlinear_default_parameters();
    gsl_multifit_nlinear_workspace* w =
        gsl_multifit_nlinear_alloc(gsl_multifit_nlinear_trust, &parameters, x.size(), n);

    // Every start is probed with a few iterations; the best probes are then
    // refined to convergence.
    std::vector<Refined> probes;
    auto run = [&](const std::vector<double>& from, int iterations) {
        Refined r = Refine(w, fdf, problem, from, iterations, result.iterations, options.trace, progress);
        result.iterations += r.iterations;
        result.interrupted = result.interrupted || r.interrupted;
        return r;
    };
    for (const auto& s : FitStarts(model, start, x, y, options, problem.box, projection)) {
        probes.push_back(run(s, std::min(options.probeIterations, options.maxIterations)));
        ++result.restarts;
        if (result.interrupted) break;
    }
    std::sort(probes.begin(), probes.end(), [](const Refined& a, const Refined& b) { return a.rss < b.rss; });
    Refined best = probes.empty() ? Refined{} : probes.front();
    for (std::size_t i = 0; i < probes.size() && i < std::size_t(options.finalists) && !result.interrupted; ++i) {
        Refined r = run(probes[i].logTau, options.maxIterations);
        if (r.rss < best.rss) best = std::move(r);
    }
    gsl_multifit_nlinear_free(w);
    if (best.logTau.size() != n) {
        result.status = FitStatus::Failed;
        return result;
    }
    const ExpParameters projected = projection.Parameters(best.logTau);
    const bool degenerate = projection.Degenerate();
    result.parameters = projected;
    result.quality = MeasureFit(model, projected, x, y);
    if (!degenerate && !result.interrupted) {
        const ExpParameters polished = Polish(model, projected, options.fixAmplitudes, x, y, options.maxIterations);
        const FitQuality q = MeasureFit(model, polished, x, y);
        // The polished parameters are the more exact ones unless they are
        // worse by more than rounding.
        if (q.rss <= result.quality.rss * (1 + kRoundingRss)) result.parameters = polished, result.quality = q;
    }
    result.parameters = OrderedByTimeConstant(model, result.parameters);
    result.status = degenerate ? FitStatus::TooManyExponentials
                                            : AssessFit(model, result.parameters, x, y);
    result.standardErrors = StandardErrors(model, result.parameters, options.fixAmplitudes, x, y);
    return result;
}

}  // namespace vess::group
