#include "group_analysis/fluctuation.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace vess::group {

namespace {

// Least squares of y on the given basis functions of x, by the normal
// equations (at most three unknowns, solved by Gaussian elimination).
std::vector<double> LeastSquares(const std::vector<std::array<double, 3>>& rows,
                                 const std::vector<double>& y, int unknowns) {
    double a[3][4] = {};
    for (std::size_t r = 0; r < rows.size(); ++r)
        for (int i = 0; i < unknowns; ++i) {
            for (int j = 0; j < unknowns; ++j) a[i][j] += rows[r][std::size_t(i)] * rows[r][std::size_t(j)];
            a[i][3] += rows[r][std::size_t(i)] * y[r];
        }
    for (int c = 0; c < unknowns; ++c) {
        int pivot = c;
        for (int r = c + 1; r < unknowns; ++r)
            if (std::fabs(a[r][c]) > std::fabs(a[pivot][c])) pivot = r;
        std::swap(a[c], a[pivot]);
        if (a[c][c] == 0) return {};
        for (int r = 0; r < unknowns; ++r) {
            if (r == c) continue;
            const double f = a[r][c] / a[c][c];
            for (int k = c; k < 4; ++k) a[r][k] -= f * a[c][k];
        }
    }
    std::vector<double> solution(static_cast<std::size_t>(unknowns));
    for (int i = 0; i < unknowns; ++i) solution[std::size_t(i)] = a[i][3] / a[i][i];
    return solution;
}

// The mean of the m traces nearest to trace t in the set, t left out: the
// window is centred on t and shifted inwards at the ends.
std::vector<double> NeighbourMean(const std::vector<std::vector<double>>& traces, std::size_t t,
                                  std::size_t m) {
    const std::size_t n = traces.size();
    std::size_t first = t >= m / 2 ? t - m / 2 : 0;
    first = std::min(first, n - 1 - m);
    std::vector<double> mean(traces[t].size(), 0.0);
    for (std::size_t k = first, used = 0; used < m; ++k) {
        if (k == t) continue;
        for (std::size_t j = 0; j < mean.size() && j < traces[k].size(); ++j) mean[j] += traces[k][j] / double(m);
        ++used;
    }
    return mean;
}

}  // namespace

FluctuationResult AnalyseFluctuation(const std::vector<std::vector<double>>& traces,
                                     const FluctuationOptions& options) {
    FluctuationResult out;
    const std::size_t n = traces.size();
    if (n < 2 || traces[0].empty() || options.amplitudeBins < 1) return out;
    const std::size_t L = traces[0].size();
    std::vector<double> mean(L, 0.0);
    for (const auto& t : traces)
        for (std::size_t j = 0; j < L && j < t.size(); ++j) mean[j] += t[j] / double(n);
    std::size_t peak = 0;
    for (std::size_t j = 0; j < L; ++j)
        if (std::fabs(mean[j]) > std::fabs(mean[peak])) peak = j;
    out.peak = mean[peak];
    if (out.peak == 0) return out;

    // Variance about the mean waveform, scaled to each trace's own peak
    // when peak-scaled. About the mean of all traces the sum of squares is
    // divided by n - 1; about the mean of m other traces each square carries
    // m / (m + 1) of the variance and is divided by n.
    const auto m = std::size_t(options.averageTraces);
    const bool running = m > 0 && m < n - 1;
    std::vector<double> variance(L, 0.0);
    for (std::size_t t = 0; t < n; ++t) {
        const std::vector<double> reference = running ? NeighbourMean(traces, t, m) : mean;
        const double weight = running ? double(m) / double(m + 1) / double(n) : 1.0 / double(n - 1);
        const double scale = options.peakScaled && reference[peak] != 0 ? traces[t][peak] / reference[peak] : 1.0;
        for (std::size_t j = 0; j < L; ++j) {
            const double d = traces[t][j] - reference[j] * scale;
            variance[j] += d * d * weight;
        }
    }
    const auto basePoints = std::size_t(std::clamp<int32_t>(options.baselinePoints, 0, int32_t(peak)));
    for (std::size_t j = 0; j < basePoints; ++j) out.baselineVariance += variance[j] / double(basePoints);

    // Bins of equal current from the peak down to zero along the decay.
    const auto bins = std::size_t(options.amplitudeBins);
    std::vector<double> sumI(bins, 0.0), sumV(bins, 0.0);
    std::vector<int> count(bins, 0);
    for (std::size_t j = peak; j < L; ++j) {
        const double fraction = mean[j] / out.peak;
        if (fraction <= 0 || fraction > 1) continue;
        const auto b = std::min(bins - 1, std::size_t(fraction * double(bins)));
        sumI[b] += mean[j];
        sumV[b] += variance[j] - (options.subtractBaseVariance ? out.baselineVariance : 0.0);
        ++count[b];
    }
    std::vector<std::array<double, 3>> rows;
    for (std::size_t b = 0; b < bins; ++b) {
        if (count[b] == 0) continue;
        const double I = sumI[b] / count[b];
        out.binMean.push_back(I);
        out.binVariance.push_back(sumV[b] / count[b]);
        rows.push_back({I, -I * I, 1.0});
    }
    const int unknowns = options.includeOffset ? 3 : 2;
    if (int(rows.size()) < unknowns) return out;
    const auto s = LeastSquares(rows, out.binVariance, unknowns);
    if (s.empty() || s[1] == 0) return out;
    out.unitCurrent = s[0];
    out.channels = 1.0 / s[1];
    out.offset = options.includeOffset ? s[2] : 0.0;
    out.openProbability = out.peak / (out.unitCurrent * out.channels);
    double total = 0, residual = 0, meanV = 0;
    for (double v : out.binVariance) meanV += v / double(out.binVariance.size());
    for (std::size_t k = 0; k < out.binMean.size(); ++k) {
        const double I = out.binMean[k];
        const double fit = out.unitCurrent * I - I * I / out.channels + out.offset;
        residual += (out.binVariance[k] - fit) * (out.binVariance[k] - fit);
        total += (out.binVariance[k] - meanV) * (out.binVariance[k] - meanV);
    }
    out.rSquared = total > 0 ? 1 - residual / total : 0;
    constexpr int kCurvePoints = 100;
    for (int k = 0; k <= kCurvePoints; ++k) {
        const double I = out.peak * k / kCurvePoints;
        out.curveX.push_back(I);
        out.curveY.push_back(out.unitCurrent * I - I * I / out.channels + out.offset);
    }
    out.ok = true;
    return out;
}

ResultValues FluctuationRow(const FluctuationResult& r, int group, int traces) {
    ResultValues v;
    v.kind = ResultKind::Fluctuation;
    v.group = group;
    v.tracesAveraged = traces;
    v.amplitude = r.peak;
    v.unitCurrent = r.unitCurrent;
    v.channels = r.channels;
    v.openProbability = r.openProbability;
    v.baselineVariance = r.baselineVariance;
    v.offset = r.offset;
    v.rSquared = r.rSquared;
    return v;
}

}  // namespace vess::group
