// vess fit TRACE.csv [--exp 1|2|3] [--offset] [--range ...] [--guess ...]
// [--fix-amplitude] [--tolerance T] [--max-iter N] [--no-restart] [--json]:
// fits a sum of exponentials to a trace given as a header line and two
// columns (time in ms, value), by the group analysis window's simplex search.
#include <fstream>
#include <iostream>
#include <sstream>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "cli/commands.h"
#include "group_analysis/decay_fit.h"
#include "group_analysis/group_settings.h"
#include "group_analysis/simplex.h"
#include "group_analysis/trace_csv.h"

namespace vess::cli {

namespace {

using Trace = group::TextTrace;

// The points of the chosen range. The first value stands for the baseline
// and the peak is the point furthest from it; a trace that only moves away
// from its first value is taken to start at its peak and end at baseline.
group::PointRange Range(const Trace& t, const std::string& range) {
    const auto last = int32_t(t.x.size()) - 1;
    int32_t peak = 0;
    for (int32_t j = 0; j <= last; ++j)
        if (std::fabs(t.y[std::size_t(j)] - t.y[0]) > std::fabs(t.y[std::size_t(peak)] - t.y[0]))
            peak = j;
    double baseline = t.y[0];
    if (peak == last) {
        peak = 0;
        baseline = t.y.back();
    }
    const auto decay =
        group::FindDecayPoints(t.y, peak, baseline, t.y[std::size_t(peak)] - baseline);
    if (range == "peak-to-end")
        return group::FitRangePoints(group::FitRange::PeakToEnd, peak, decay, last, 0, 0);
    if (range == "10-90")
        return group::FitRangePoints(group::FitRange::Decay1090, peak, decay, last, 0, 0);
    if (range == "20-80")
        return group::FitRangePoints(group::FitRange::Decay2080, peak, decay, last, 0, 0);
    const auto colon = range.find(':');
    const double from = std::stod(range.substr(0, colon)), to = std::stod(range.substr(colon + 1));
    int32_t a = last, b = 0;
    for (int32_t j = 0; j <= last; ++j) {
        if (t.x[std::size_t(j)] >= from) a = std::min(a, j);
        if (t.x[std::size_t(j)] <= to) b = std::max(b, j);
    }
    return group::FitRangePoints(group::FitRange::Custom, peak, decay, last, a, b);
}

}  // namespace

void AddFitCommand(CLI::App& app) {
    struct Options {
        std::string file, range = "peak-to-end";
        int exponentials = 2, maxIter = 1000;
        bool offset = false, fixAmplitude = false, noRestart = false, json = false;
        std::vector<double> guess;
        double tolerance = 0.001;
    };
    auto o = std::make_shared<Options>();
    auto* cmd = app.add_subcommand("fit", "Fit exponentials to a trace (CSV: time ms, value)");
    cmd->add_option("file", o->file, "trace CSV with a header line ('-' for standard input)")
        ->required();
    cmd->add_option("--exp", o->exponentials, "number of exponentials")->check(CLI::Range(1, 3));
    cmd->add_flag("--offset", o->offset, "include a constant offset");
    cmd->add_option("--range", o->range, "peak-to-end, 10-90, 20-80 or FROM_MS:TO_MS")
        ->check([](const std::string& r) -> std::string {
            if (r == "peak-to-end" || r == "10-90" || r == "20-80") return {};
            double a = 0, b = 0;
            char colon = 0;
            std::istringstream in(r);
            return in >> a >> colon >> b && colon == ':' && in.eof() ? "" : "not a fit range";
        });
    cmd->add_option("--guess", o->guess,
                    "tau1,A1[,tau2,A2[,tau3,A3]][,C]; default the Fitting defaults, amplitudes signed as the decay")->delimiter(',');
    cmd->add_flag("--fix-amplitude", o->fixAmplitude, "keep the amplitudes at their guesses");
    cmd->add_option("--tolerance", o->tolerance, "stopping tolerance")->check(CLI::PositiveNumber);
    cmd->add_option("--max-iter", o->maxIter, "iterations of each search")->check(CLI::PositiveNumber);
    cmd->add_flag("--no-restart", o->noRestart, "the single search from the fixed starting table");
    cmd->add_flag("--json", o->json, "print the result as JSON");
    cmd->callback([o] {
        std::ifstream file;
        if (o->file != "-") file.open(o->file);
        if (o->file != "-" && !file) {
            std::cerr << "vess fit: cannot read " << o->file << "\n";
            throw CLI::RuntimeError(1);
        }
        std::string error;
        const auto trace = group::ReadTextTrace(o->file == "-" ? std::cin : file, error);
        if (!trace) {
            std::cerr << "vess fit: " << o->file << ": " << error << "\n";
            throw CLI::RuntimeError(1);
        }
        const group::ExpModel model{o->exponentials, o->offset};
        const std::size_t taken = 2 * std::size_t(o->exponentials) + (o->offset ? 1 : 0);
        if (!o->guess.empty() && o->guess.size() != taken && o->guess.size() != taken - o->offset) {
            std::cerr << "vess fit: --guess needs " << taken << " values for this model\n";
            throw CLI::RuntimeError(1);
        }
        const group::PointRange range = Range(*trace, o->range);
        std::vector<double> xs, ys;
        for (int32_t j = range.from; j <= range.to; ++j) {
            xs.push_back(trace->x[std::size_t(j)] - trace->x[std::size_t(range.from)]);
            ys.push_back(trace->y[std::size_t(j)]);
        }
        const group::GroupAnalysisSettings defaults;
        group::ExpParameters start{defaults.tau1, defaults.A1, defaults.tau2, defaults.A2,
                                   defaults.tau3, defaults.A3, o->offset ? ys.back() : 0.0};
        // The default amplitudes take the sign of the decay, so that inward
        // currents start from negative amplitudes.
        if (o->guess.empty() && ys.front() < start[6])
            for (int k = 0; k < 3; ++k) start[std::size_t(2 * k + 1)] *= -1;
        for (std::size_t k = 0; k < o->guess.size() && k < 2 * std::size_t(o->exponentials); ++k)
            start[k] = o->guess[k];
        if (o->offset && o->guess.size() == taken) start[6] = o->guess.back();
        const group::SimplexResult r = group::FitExponentials(
            model, start, xs, ys,
            {.tolerance = o->tolerance, .maxIterations = o->maxIter,
             .restartUntilSettled = !o->noRestart, .fixAmplitudes = o->fixAmplitude});
        const auto& p = r.parameters;
        if (o->json) {
            nlohmann::ordered_json j = {{"tau1", p[0]}, {"A1", p[1]}, {"tau2", p[2]}, {"A2", p[3]},
                                        {"tau3", p[4]}, {"A3", p[5]}, {"C", p[6]},
                                        {"R-Sqr", r.quality.rSquared}, {"Stdev", r.quality.stdev},
                                        {"RSS", r.quality.rss}, {"iterations", r.iterations},
                                        {"restarts", r.restarts}};
            std::cout << j.dump(2) << std::endl;
            return;
        }
        std::cout << group::FitEquation(model, p) << "\n";
        for (int k = 0; k < o->exponentials; ++k)
            std::cout << fmt::format("tau{0} = {1:.6g} ms   A{0} = {2:.6g}\n", k + 1,
                                     p[std::size_t(2 * k)], p[std::size_t(2 * k + 1)]);
        if (o->offset) std::cout << fmt::format("C = {:.6g}\n", p[6]);
        std::cout << fmt::format("Fit range: {:.6g} to {:.6g} ms ({} points)\n",
                                 trace->x[std::size_t(range.from)], trace->x[std::size_t(range.to)],
                                 xs.size());
        std::cout << fmt::format("R-Sqr: {:.6f}\nStdev: {:.6g}\nRSS: {:.6g}\n", r.quality.rSquared,
                                 r.quality.stdev, r.quality.rss);
        std::cout << fmt::format("Iterations: {}\nRestarts: {}\n", r.iterations, r.restarts)
                  << std::flush;
    });
}

}  // namespace vess::cli
