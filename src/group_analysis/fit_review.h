// After fitting: automatic rejection of poorly fitted traces, and the
// comparison of one- and two-exponential fits.
#pragma once

#include <optional>
#include <vector>

#include "group_analysis/decay_fit.h"
#include "recording/dialogs.h"

namespace vess {
struct Workspace;
}

namespace vess::group {

struct RejectCriterion {
    std::optional<double> minRSquared;        // "Auto-reject" with "Minimum R-sqr"
    std::optional<double> confidencePercent;  // "Auto-rejection: confidence interval (%)"
};

// Two-sided standard normal quantile: z with P(|Z| <= z) = percent / 100.
double NormalQuantile(double percent);

// The traces whose fit fails the criterion: R-sqr below the minimum, or tau1
// outside mean +- z SD of the tau1 of all the fits.
std::vector<int32_t> TracesToReject(const std::vector<TraceFit>& fits, const RejectCriterion& c);

// Lists the events of the rejected traces and, on Yes, takes them out of
// their group (undoable). Returns the number of events taken out.
int AutoRejectCommand(Workspace& ws, const TraceSet& set, const std::vector<int32_t>& traces,
                      Dialogs& dialogs);

// The extra-sum-of-squares F-test of the second exponential and Akaike's
// criterion (least-squares form, n ln(RSS / n) + 2k) of both fits.
struct NestedFitTest {
    double rSquaredChangePercent = 0;
    double f = kNotMeasured, p = kNotMeasured;
    double aicOne = kNotMeasured, aicTwo = kNotMeasured;
};
NestedFitTest CompareNestedFits(const FitQuality& one, int parametersOne, const FitQuality& two,
                                int parametersTwo, std::size_t points);
std::string NestedFitTestLine(const NestedFitTest& t);

struct Comparison {
    TraceFit chosen;
    bool twoWon = false;
    NestedFitTest test;
};
// Fits one and two exponentials; the two-exponential fit is kept when its
// R-sqr exceeds the one-exponential R-sqr by criterionPercent per cent or more
// and it is a result (not a collapsed fit). The chosen fit's report ends with
// the F-test and the AIC of the two.
Comparison CompareFits(const TraceSet& set, int32_t t, int peakDirection, int group,
                       const UnitScale& scale, FitSettings settings, double criterionPercent,
                       const SimplexCallback& progress = {});

// Regroups the events of the traces whose two-exponential fit won and says
// so. Returns the number regrouped.
int RegroupTwoExponentialCommand(Workspace& ws, const TraceSet& set,
                                 const std::vector<int32_t>& traces, int group, Dialogs& dialogs);

}  // namespace vess::group
