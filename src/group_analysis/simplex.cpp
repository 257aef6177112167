#include "group_analysis/simplex.h"

#include <algorithm>
#include <cmath>

namespace vess::group {

namespace {

// Rows are vertices 2..8, columns parameters 1..7: vertex v's parameter j is
// P1(j) - P1(k) / 3 with k from this table. The table is irregular on
// purpose; for one exponential it makes vertices 2 and 3 equal.
constexpr int kInitialTable[7][7] = {
    {1, 2, 3, 2, 5, 6, 7}, {1, 2, 2, 1, 5, 6, 7}, {1, 2, 1, 2, 5, 6, 7}, {1, 2, 2, 3, 5, 6, 7},
    {3, 4, 1, 2, 3, 4, 6}, {3, 4, 3, 1, 3, 4, 6}, {3, 4, 3, 1, 3, 4, 6}};

// Relative step of the restart simplex, and the step for a parameter at 0.
constexpr double kRestartStep = 0.05, kRestartZeroStep = 0.00025;

double Spread(double a, double b) {
    return 2.0 * std::fabs(a - b) / (std::fabs(a) + std::fabs(b) + kToleranceGuard);
}

// The search over the free parameters (all of them, or the time constants
// and offset when the amplitudes are fixed).
class Search {
public:
    Search(const ExpModel& model, const ExpParameters& start, std::span<const double> x,
           std::span<const double> y, const SimplexOptions& options, const SimplexCallback& progress)
        : model_(model), start_(start), x_(x), y_(y), options_(options), progress_(progress) {
        for (int j = 0; j < model.ParameterCount(); ++j)
            if (!options.fixAmplitudes || !IsAmplitude(j)) free_.push_back(j);
    }

    const std::vector<int>& Free() const { return free_; }

    // Objective of a vertex of free parameters.
    double Objective(std::span<const float> vertex) const {
        return MeasureRss(Full(vertex));
    }
    ExpParameters Full(std::span<const float> vertex) const {
        std::vector<double> packed = PackedParameters(model_, start_);
        for (std::size_t k = 0; k < free_.size(); ++k) packed[std::size_t(free_[k])] = vertex[k];
        return FullParameters(model_, packed);
    }

    // One downhill simplex run; returns the index of the best vertex.
    std::size_t Run(std::vector<std::vector<float>>& p, int& iterations, bool& interrupted) {
        const std::size_t mpts = p.size(), ndim = p[0].size();
        std::vector<double> f(mpts), psum(ndim, 0.0), trial(ndim);
        for (std::size_t i = 0; i < mpts; ++i) f[i] = Objective(p[i]);
        auto sums = [&] {
            std::fill(psum.begin(), psum.end(), 0.0);
            for (const auto& v : p)
                for (std::size_t j = 0; j < ndim; ++j) psum[j] += v[j];
        };
        sums();
        std::vector<float> stored(ndim);
        std::size_t ilo = 0, ihi = 0;
        // Reflects the worst vertex through the centroid of the others by
        // factor fac, keeping the trial point when it is better.
        auto tryPoint = [&](double fac) {
            const double fac1 = (1.0 - fac) / double(ndim), fac2 = fac1 - fac;
            for (std::size_t j = 0; j < ndim; ++j) {
                trial[j] = psum[j] * fac1 - p[ihi][j] * fac2;
                stored[j] = float(trial[j]);
            }
            const double ftry = Objective(stored);
            if (ftry < f[ihi]) {
                f[ihi] = ftry;
                for (std::size_t j = 0; j < ndim; ++j) {
                    psum[j] += double(stored[j]) - p[ihi][j];
                    p[ihi][j] = stored[j];
                }
            }
            return ftry;
        };
        int iter = 0;
        for (;;) {
            ilo = 0;
            ihi = f[0] > f[1] ? 0 : 1;
            std::size_t inhi = f[0] > f[1] ? 1 : 0;
            for (std::size_t i = 0; i < mpts; ++i) {
                if (f[i] <= f[ilo]) ilo = i;
                if (f[i] > f[ihi]) {
                    inhi = ihi;
                    ihi = i;
                } else if (f[i] > f[inhi] && i != ihi) {
                    inhi = i;
                }
            }
            const double rtol = Spread(f[ihi], f[ilo]);
            if (rtol < options_.tolerance || iter >= options_.maxIterations) break;
            // Not even the best vertex has a finite objective (a trace of
            // not-a-number): no step can improve on it.
            if (!std::isfinite(f[ilo])) break;
            if (progress_ &&
                !progress_({options_.trace, iterations + iter,
                            std::sqrt(f[ilo] / double(std::max<std::size_t>(1, y_.size()))), rtol})) {
                interrupted = true;
                break;
            }
            ++iter;
            double ftry = tryPoint(-1.0);
            if (ftry <= f[ilo]) {
                tryPoint(2.0);
            } else if (ftry >= f[inhi]) {
                const double saved = f[ihi];
                ftry = tryPoint(0.5);
                if (ftry >= saved) {
                    // Shrink: every vertex but the best moves halfway to it.
                    for (std::size_t i = 0; i < mpts; ++i) {
                        if (i == ilo) continue;
                        for (std::size_t j = 0; j < ndim; ++j)
                            p[i][j] = float((double(p[i][j]) + double(p[ilo][j])) * 0.5);
                        f[i] = Objective(p[i]);
                    }
                    sums();
                }
            }
        }
        iterations += iter;
        return ilo;
    }

private:
    bool IsAmplitude(int packedIndex) const {
        return packedIndex < 2 * model_.exponentials && packedIndex % 2 == 1;
    }
    double MeasureRss(const ExpParameters& p) const {
        double rss = 0;
        for (std::size_t i = 0; i < x_.size(); ++i) {
            const double r = y_[i] - EvaluateModel(model_, p, x_[i]);
            rss += r * r;
        }
        return std::isfinite(rss) ? rss : HUGE_VAL;
    }

    ExpModel model_;
    ExpParameters start_;
    std::span<const double> x_, y_;
    SimplexOptions options_;
    const SimplexCallback& progress_;
    std::vector<int> free_;
};

std::vector<std::vector<float>> RestartSimplex(const std::vector<float>& best) {
    std::vector<std::vector<float>> p(best.size() + 1, best);
    for (std::size_t j = 0; j < best.size(); ++j) {
        const double v = best[j];
        p[j + 1][j] = float(v == 0 ? kRestartZeroStep : v * (1.0 + kRestartStep));
    }
    return p;
}

}  // namespace

ExpParameters FullParameters(const ExpModel& model, std::span<const double> packed) {
    ExpParameters full{};
    const int n = 2 * model.exponentials;
    for (int j = 0; j < n && j < int(packed.size()); ++j) full[std::size_t(j)] = packed[std::size_t(j)];
    if (model.offset && int(packed.size()) > n) full[6] = packed[std::size_t(n)];
    return full;
}

std::vector<double> PackedParameters(const ExpModel& model, const ExpParameters& full) {
    std::vector<double> packed(full.begin(), full.begin() + 2 * model.exponentials);
    if (model.offset) packed.push_back(full[6]);
    return packed;
}

double EvaluateModel(const ExpModel& model, const ExpParameters& p, double x) {
    double y = model.offset ? p[6] : 0.0;
    for (int k = 0; k < model.exponentials; ++k)
        y += p[std::size_t(2 * k + 1)] * std::exp(-x / p[std::size_t(2 * k)]);
    return y;
}

FitQuality MeasureFit(const ExpModel& model, const ExpParameters& p, std::span<const double> x,
                      std::span<const double> y) {
    FitQuality q;
    if (y.empty()) return q;
    double mean = 0;
    for (double v : y) mean += v;
    mean /= double(y.size());
    double total = 0;
    for (std::size_t i = 0; i < y.size(); ++i) {
        const double r = y[i] - EvaluateModel(model, p, x[i]);
        q.rss += r * r;
        total += (y[i] - mean) * (y[i] - mean);
    }
    q.rSquared = total > 0 ? 1.0 - q.rss / total : 0.0;
    q.stdev = std::sqrt(q.rss / double(y.size()));
    return q;
}

std::vector<std::vector<float>> InitialSimplex(const ExpModel& model, std::span<const float> start) {
    const int np = model.ParameterCount();
    std::vector<std::vector<float>> p(std::size_t(np + 1), std::vector<float>(start.begin(), start.end()));
    for (int v = 2; v <= np + 1; ++v)
        for (int j = 1; j <= np; ++j) {
            const int k = kInitialTable[v - 2][j - 1];
            if (k > np) continue;
            p[std::size_t(v - 1)][std::size_t(j - 1)] =
                float(double(start[std::size_t(j - 1)]) - double(start[std::size_t(k - 1)]) / 3.0);
        }
    return p;
}

SimplexResult FitExponentials(const ExpModel& model, const ExpParameters& start,
                              std::span<const double> x, std::span<const double> y,
                              const SimplexOptions& options, const SimplexCallback& progress) {
    Search search(model, start, x, y, options, progress);
    const std::vector<int>& free = search.Free();
    SimplexResult result;
    std::vector<double> packed = PackedParameters(model, start);
    std::vector<float> first(packed.begin(), packed.end());
    // The fixed table works on the whole vector; with fixed amplitudes only
    // the free columns of its first rows are kept.
    std::vector<std::vector<float>> table = InitialSimplex(model, first);
    std::vector<std::vector<float>> p(free.size() + 1, std::vector<float>(free.size()));
    for (std::size_t v = 0; v < p.size(); ++v)
        for (std::size_t k = 0; k < free.size(); ++k) p[v][k] = table[v][std::size_t(free[k])];

    std::vector<float> best = p[search.Run(p, result.iterations, result.interrupted)];
    double bestRss = search.Objective(best);
    const bool canRestart = options.restartUntilSettled && !free.empty();
    while (canRestart && !result.interrupted && result.restarts < options.maxRestarts) {
        std::vector<std::vector<float>> q = RestartSimplex(best);
        ++result.restarts;
        const std::vector<float> candidate = q[search.Run(q, result.iterations, result.interrupted)];
        const double rss = search.Objective(candidate);
        const bool lower = rss < bestRss;
        const double gain = Spread(bestRss, rss);
        if (lower) {
            best = candidate;
            bestRss = rss;
        }
        if (!lower || gain <= options.tolerance) break;
    }
    result.parameters = search.Full(best);
    result.quality = MeasureFit(model, result.parameters, x, y);
    return result;
}

}  // namespace vess::group
