// Scores the least-squares fit from its default start (no guesses, as the
// group window and vess fit run it) against an exhaustive multi-start search:
// a fine grid over the time constants with every grid point refined. A fit
// passes when its residual sum of squares is within 0.1 % of the best of
// both (or within 1e-12 of the data's total sum of squares, for exact data).
//
//   vess_fit_score synthetic            decays of 1 to 3 exponentials
//   vess_fit_score csv FILE FROM:TO     one trace (time ms, value) on a range,
//                                       1 to 3 exponentials with and without
//                                       offset
#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "group_analysis/least_squares_fit.h"

namespace {

using vess::group::ExpFitResult;
using vess::group::ExpModel;
using vess::group::FitExponentialsLeastSquares;

constexpr double kWithin = 1e-3, kExact = 1e-12;

struct Score {
    int cases = 0, passed = 0;
    double worst = 1;   // largest ratio of the default RSS to the best
};

// Scores one fit; prints the failures.
void ScoreOne(const ExpModel& model, const std::vector<double>& x, const std::vector<double>& y,
              const std::string& label, Score& score) {
    const ExpFitResult fit = FitExponentialsLeastSquares(model, {}, x, y, {.startFromGuess = false});
    const int grid = std::array{32, 20, 12}[std::size_t(model.exponentials - 1)];
    const ExpFitResult wide = FitExponentialsLeastSquares(
        model, {}, x, y, {.maxIterations = 200, .gridPoints = grid, .refinedGridStarts = INT_MAX, .probeIterations = 200,
                   .finalists = 0, .startFromGuess = false});
    double mean = 0, total = 0;
    for (double v : y) mean += v / double(y.size());
    for (double v : y) total += (v - mean) * (v - mean);
    const double best = std::min(fit.quality.rss, wide.quality.rss);
    const bool pass = fit.quality.rss <= best * (1 + kWithin) + kExact * total;
    ++score.cases;
    score.passed += pass;
    if (best > kExact * total) score.worst = std::max(score.worst, fit.quality.rss / best);
    if (!pass)
        std::printf("  miss: %s  exp %d%s  RSS %.6g  best %.6g\n", label.c_str(), model.exponentials,
                    model.offset ? "+C" : "", fit.quality.rss, best);
}

void Report(const char* what, const Score& s) {
    std::printf("%s: %d of %d within 0.1 %% of the best (%.2f %%), worst %.4g times the best\n", what,
                s.passed, s.cases, 100.0 * s.passed / std::max(s.cases, 1), s.worst);
}

// Decays on 512 sampling intervals of 1: time constants log-uniform in 0.5
// to 500 intervals, amplitudes of one sign with random shares (every fifth
// case of two or three exponentials with one component of the other sign),
// noise of SD 0, 1, 3 or 10 % of the amplitude.
int Synthetic() {
    std::mt19937 rng(2111);
    std::uniform_real_distribution<double> unit(0, 1);
    Score score;
    int index = 0;
    for (int n = 1; n <= 3; ++n)
        for (bool offset : {false, true})
            for (double noise : {0.0, 0.01, 0.03, 0.1})
                for (int c = 0; c < 15; ++c, ++index) {
                    std::vector<double> tau, amp;
                    for (int k = 0; k < n; ++k) {
                        tau.push_back(0.5 * std::pow(1000.0, unit(rng)));
                        amp.push_back(-(0.2 + unit(rng)));
                    }
                    if (n > 1 && c % 5 == 0) amp[1] = -0.5 * amp[1];
                    double size = 0;
                    for (double a : amp) size += a;
                    std::normal_distribution<double> gauss(0, noise * std::fabs(size) * 100);
                    const double c0 = offset ? 20 * unit(rng) - 10 : 0;
                    std::vector<double> x, y;
                    for (int i = 0; i < 512; ++i) {
                        double v = c0;
                        for (int k = 0; k < n; ++k) v += 100 * amp[std::size_t(k)] * std::exp(-i / tau[std::size_t(k)]);
                        x.push_back(i);
                        y.push_back(v + (noise > 0 ? gauss(rng) : 0));
                    }
                    ScoreOne({n, offset}, x, y, "case " + std::to_string(index), score);
                }
    Report("synthetic", score);
    return 0;
}

int Csv(const std::string& path, const std::string& range) {
    std::ifstream in(path);
    std::string line;
    std::getline(in, line);
    const double from = std::stod(range.substr(0, range.find(':'))),
                 to = std::stod(range.substr(range.find(':') + 1));
    std::vector<double> x, y;
    while (std::getline(in, line)) {
        std::replace(line.begin(), line.end(), ',', ' ');
        std::istringstream fields(line);
        double t = 0, v = 0;
        if (fields >> t >> v && t >= from - 1e-9 && t <= to + 1e-9) x.push_back(t - from), y.push_back(v);
    }
    Score score;
    for (int n = 1; n <= 3; ++n)
        for (bool offset : {false, true}) ScoreOne({n, offset}, x, y, path, score);
    std::printf("%s %d %d\n", path.c_str(), score.passed, score.cases);
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    const std::string mode = argc > 1 ? argv[1] : "";
    if (mode == "synthetic") return Synthetic();
    if (mode == "csv" && argc == 4) return Csv(argv[2], argv[3]);
    std::fprintf(stderr, "usage: vess_fit_score synthetic | csv FILE FROM:TO\n");
    return 2;
}
