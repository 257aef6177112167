#include "group_analysis/fit_run.h"

#include <fmt/format.h>

#include "group_analysis/result_row.h"
#include "group_analysis/texts.h"
#include "recording/results_table.h"

namespace vess::group {
namespace {
// The search reports every iteration; the note and the stop request are
// looked at every this many.
constexpr int kIterationsPerReport = 25;
}  // namespace

std::string FitProgressNote(const SimplexProgress& p) {
    return fmt::format("{}{}{}{}    {}{:.5f}{}{:.7f}", texts::kProgressTrace, p.trace, texts::kProgressIteration,
                       p.iteration, texts::kProgressStdev, p.stdev, texts::kProgressTolerance, p.rtol);
}

FitRunResult RunFits(const FitRunInput& in, const JobProgress& progress) {
    FitRunResult run;
    const double count = double(in.traces.size());
    bool go = true;
    for (std::size_t i = 0; i < in.traces.size() && go; ++i) {
        const int32_t t = in.traces[i];
        const SimplexCallback search = [&](const SimplexProgress& p) {
            if (p.iteration % kIterationsPerReport == 0) go = progress((double(i) + 0.5) / count, FitProgressNote(p));
            return go;
        };
        if (in.compareCriterionPercent) {
            Comparison c = CompareFits(in.set, t, in.peakDirection, in.group, in.scale, in.settings,
                                       *in.compareCriterionPercent, search);
            // A comparison cut short has no winner.
            if (c.twoWon && t > 0 && go) run.twoWon.push_back(t);
            run.report += c.chosen.report + "\r\n\r\n";
            run.fits.push_back(std::move(c.chosen));
        } else {
            TraceFit fit = FitTrace(in.set, t, in.peakDirection, in.group, in.scale, in.settings, search);
            run.report += fit.report + "\r\n\r\n";
            run.fits.push_back(std::move(fit));
        }
        if (run.fits.back().fit.interrupted) go = false;
        if (go) go = progress(double(i + 1) / count, {});
    }
    run.stopped = !go;
    return run;
}

void AppendFitRows(ResultsTable& results, const FitRunResult& run) {
    for (const TraceFit& fit : run.fits) results.Append(WriteResultRow(fit.values));
}

}  // namespace vess::group
