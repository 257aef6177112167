// vess fit TRACE.csv [--exp 1|2|3] [--offset] [--range ...] [--guess ...]
// [--fix-amplitude] [--method least-squares|simplex] [--tolerance T]
// [--max-iter N] [--no-restart] [--json]: fits a sum of exponentials to a
// trace given as a header line and two columns (time in ms, value), by the
// group analysis window's least-squares fit or its simplex search.
#include <cmath>
#include <fstream>
#include <iostream>
#include <sstream>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "cli/commands.h"
#include "group_analysis/decay_fit.h"
#include "group_analysis/group_settings.h"
#include "group_analysis/least_squares_fit.h"
#include "group_analysis/simplex.h"
#include "group_analysis/texts.h"
#include "group_analysis/trace_csv.h"

namespace vess::cli {

namespace {

using Trace = group::TextTrace;

// The trace smoothed over a few points, so that a noise sample is not taken
// for the peak.
constexpr int32_t kSmoothHalf = 2;
std::vector<double> Smoothed(const std::vector<double>& y) {
    constexpr std::ptrdiff_t kHalf = kSmoothHalf;
    const auto n = std::ptrdiff_t(y.size());
    std::vector<double> s(y.size());
    for (std::ptrdiff_t i = 0; i < n; ++i) {
        const std::ptrdiff_t a = std::max<std::ptrdiff_t>(0, i - kHalf), b = std::min(n - 1, i + kHalf);
        double sum = 0;
        for (std::ptrdiff_t j = a; j <= b; ++j) sum += y[std::size_t(j)];
        s[std::size_t(i)] = sum / double(b - a + 1);
    }
    return s;
}

// The points of the chosen range. On the smoothed trace the first value
// stands for the baseline and the peak is the point furthest from it; a
// trace whose end lies nearly as far from its first value as that point is
// taken to start at its peak and end at baseline.
group::PointRange Range(const Trace& t, const std::string& range) {
    const auto last = int32_t(t.x.size()) - 1;
    const std::vector<double> s = Smoothed(t.y);
    int32_t peak = 0;
    for (int32_t j = 0; j <= last; ++j)
        if (std::fabs(s[std::size_t(j)] - s[0]) > std::fabs(s[std::size_t(peak)] - s[0])) peak = j;
    double baseline = s[0];
    constexpr double kEndsAtPeakLevel = 0.9;
    if (std::fabs(s.back() - s[0]) >= kEndsAtPeakLevel * std::fabs(s[std::size_t(peak)] - s[0])) {
        peak = 0;
        baseline = s.back();
    } else {
        // The peak itself is the raw extreme within the smoothing window.
        const int32_t around = peak;
        for (int32_t j = std::max(0, around - kSmoothHalf); j <= std::min(last, around + kSmoothHalf); ++j)
            if (std::fabs(t.y[std::size_t(j)] - baseline) > std::fabs(t.y[std::size_t(peak)] - baseline)) peak = j;
    }
    const auto decay = group::FindDecayPoints(t.y, peak, baseline, t.y[std::size_t(peak)] - baseline);
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

// The failure of a fit that gives no result, or empty.
std::string NoResultText(group::FitStatus status) {
    if (status == group::FitStatus::TooManyExponentials) return std::string(group::texts::kTooManyExponentials);
    if (status == group::FitStatus::Failed) return std::string(group::texts::kFitFailed);
    return {};
}

const char* StatusName(group::FitStatus status) {
    switch (status) {
        case group::FitStatus::Optimum: return "optimum";
        case group::FitStatus::TooManyExponentials: return "too many exponentials";
        case group::FitStatus::Failed: return "failed";
        case group::FitStatus::NotAssessed: break;
    }
    return "not assessed";
}

nlohmann::ordered_json Number(double v) { return std::isfinite(v) ? nlohmann::ordered_json(v) : nullptr; }

void PrintJson(const group::ExpFitResult& r, group::FitMethod method, const Trace& trace,
               const group::PointRange& range) {
    const auto& p = r.parameters;
    const auto& se = r.standardErrors;
    const bool result = group::IsFitResult(r.status);
    auto value = [&](double v) { return result ? Number(v) : nullptr; };
    nlohmann::ordered_json j = {{"tau1", value(p[0])}, {"A1", value(p[1])}, {"tau2", value(p[2])},
                                {"A2", value(p[3])}, {"tau3", value(p[4])}, {"A3", value(p[5])},
                                {"C", value(p[6])}};
    j["standard errors"] = {{"tau1", value(se[0])}, {"A1", value(se[1])}, {"tau2", value(se[2])},
                            {"A2", value(se[3])}, {"tau3", value(se[4])}, {"A3", value(se[5])},
                            {"C", value(se[6])}};
    j["status"] = StatusName(r.status);
    j["method"] = std::string(group::FitMethodName(method));
    j["range"] = {{"from ms", trace.x[std::size_t(range.from)]}, {"to ms", trace.x[std::size_t(range.to)]},
                  {"points", range.to - range.from + 1}};
    j["R-Sqr"] = Number(r.quality.rSquared);
    j["Stdev"] = Number(r.quality.stdev);
    j["RSS"] = Number(r.quality.rss);
    j["iterations"] = r.iterations;
    j["restarts"] = r.restarts;
    std::cout << j.dump(2) << std::endl;
}

void PrintText(const group::ExpModel& model, const group::ExpFitResult& r, const Trace& trace,
               const group::PointRange& range, std::size_t points) {
    const auto& p = r.parameters;
    if (group::IsFitResult(r.status)) {
        std::cout << group::FitEquation(model, p) << "\n";
        auto pm = [&](std::size_t at) {
            return std::isfinite(r.standardErrors[at]) ? fmt::format(" +- {:.4g}", r.standardErrors[at]) : "";
        };
        for (int k = 0; k < model.exponentials; ++k)
            std::cout << fmt::format("tau{0} = {1:.6g}{2} ms   A{0} = {3:.6g}{4}\n", k + 1, p[std::size_t(2 * k)],
                                     pm(std::size_t(2 * k)), p[std::size_t(2 * k + 1)], pm(std::size_t(2 * k + 1)));
        if (model.offset) std::cout << fmt::format("C = {:.6g}{}\n", p[6], pm(6));
    } else {
        std::cout << NoResultText(r.status) << "\n";
    }
    std::cout << fmt::format("Fit range: {:.6g} to {:.6g} ms ({} points)\n", trace.x[std::size_t(range.from)],
                             trace.x[std::size_t(range.to)], points);
    std::cout << fmt::format("R-Sqr: {:.6f}\nStdev: {:.6g}\nRSS: {:.6g}\n", r.quality.rSquared,
                             r.quality.stdev, r.quality.rss);
    std::cout << fmt::format("Iterations: {}\nRestarts: {}\n", r.iterations, r.restarts) << std::flush;
}

[[noreturn]] void Fail(const std::string& text) {
    std::cerr << "vess fit: " << text << "\n";
    throw CLI::RuntimeError(1);
}

}  // namespace

void AddFitCommand(CLI::App& app) {
    struct Options {
        std::string file, range = "peak-to-end", method = "least-squares";
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
            return in >> a >> colon >> b && colon == ':' && in.eof() && std::isfinite(a) && std::isfinite(b)
                       ? "" : "not a fit range";
        });
    cmd->add_option("--guess", o->guess,
                    "tau1,A1[,tau2,A2[,tau3,A3]][,C]; default the Fitting defaults, amplitudes signed as the decay")->delimiter(',');
    cmd->add_flag("--fix-amplitude", o->fixAmplitude, "keep the amplitudes at their guesses");
    cmd->add_option("--method", o->method, "least-squares (the optimum, with standard errors) or simplex")
        ->check(CLI::IsMember({"least-squares", "simplex"}));
    cmd->add_option("--tolerance", o->tolerance, "stopping tolerance of the simplex")->check(CLI::PositiveNumber);
    cmd->add_option("--max-iter", o->maxIter, "iterations of each search")->check(CLI::PositiveNumber);
    cmd->add_flag("--no-restart", o->noRestart, "simplex: the single search from the fixed starting table");
    cmd->add_flag("--json", o->json, "print the result as JSON");
    cmd->callback([o] {
        std::ifstream file;
        if (o->file != "-") file.open(o->file);
        if (o->file != "-" && !file) Fail("cannot read " + o->file);
        std::string error;
        const auto trace = group::ReadTextTrace(o->file == "-" ? std::cin : file, error);
        if (!trace) Fail(o->file + ": " + error);
        const group::ExpModel model{o->exponentials, o->offset};
        const std::size_t taken = 2 * std::size_t(o->exponentials) + (o->offset ? 1 : 0);
        if (!o->guess.empty() && o->guess.size() != taken && o->guess.size() != taken - o->offset)
            Fail(fmt::format("--guess needs {} values for this model", taken));
        for (std::size_t k = 0; k < o->guess.size(); ++k) {
            if (!std::isfinite(o->guess[k])) Fail("--guess values must be finite numbers");
            if (k < 2 * std::size_t(o->exponentials) && k % 2 == 0 && o->guess[k] <= 0)
                Fail("--guess time constants must be above 0");
        }
        const group::PointRange range = Range(*trace, o->range);
        std::vector<double> xs, ys;
        for (int32_t j = range.from; j <= range.to; ++j) {
            xs.push_back(trace->x[std::size_t(j)] - trace->x[std::size_t(range.from)]);
            ys.push_back(trace->y[std::size_t(j)]);
        }
        const std::size_t fitted = taken - (o->fixAmplitude ? std::size_t(o->exponentials) : 0);
        if (xs.size() < 2 * fitted)
            Fail(fmt::format("the fit range holds {} points; {} parameters need at least {}", xs.size(),
                             fitted, 2 * fitted));
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
        const auto method = o->method == "simplex" ? group::FitMethod::Simplex : group::FitMethod::LeastSquares;
        group::ExpFitResult r;
        if (method == group::FitMethod::LeastSquares) {
            r = group::FitExponentialsLeastSquares(
                model, start, xs, ys,
                {.fixAmplitudes = o->fixAmplitude, .maxIterations = o->maxIter, .startFromGuess = !o->guess.empty()});
        } else {
            r = group::FitExponentials(model, start, xs, ys,
                                       {.tolerance = o->tolerance, .maxIterations = o->maxIter,
                                        .restartUntilSettled = !o->noRestart, .fixAmplitudes = o->fixAmplitude});
            if (group::AssessFit(model, r.parameters, xs, ys) == group::FitStatus::Failed)
                r.status = group::FitStatus::Failed;
        }
        if (o->json) PrintJson(r, method, *trace, range);
        else PrintText(model, r, *trace, range, xs.size());
        if (!group::IsFitResult(r.status)) {
            std::cerr << "vess fit: " << NoResultText(r.status) << "\n";
            throw CLI::RuntimeError(1);
        }
    });
}

}  // namespace vess::cli
