// The group window's trace picture as a plot description: the shown trace
// (or every trace over each other) in the recording's units against time
// from the start of the stretch, the fitted curve, what an analysis found,
// the two cursors and, when asked, scale bars; the y range follows the
// drawn traces under the display gain and offset. The graph windows' plot
// draws it; tests read it.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "graphs/plot_data.h"
#include "group_analysis/decay_fit.h"
#include "group_analysis/trace_set.h"

namespace vess::group {

struct TraceView {
    int32_t trace = 0;        // the trace shown alone
    bool all = false;         // traces 1..N over each other instead
    int32_t highlighted = -1;
    int every = 1;            // draw every k-th point
    double gain = 1, offset = 0;
    int32_t curveFrom = 0;    // the fitted curve from this point on
    std::vector<double> curve{};
    std::vector<PlotSeries> marks{};
    std::pair<int32_t, int32_t> cursors{0, 0};
    bool scaleBars = false;
};

inline constexpr Colour kHighlightColour{230, 160, 0};

// The drawn rows' range in units, widened by 10 % and by 1 / gain around its
// centre and moved by the offset.
AxisRange TraceYRange(const TraceSet& set, const UnitScale& scale, const TraceView& view);

// 1, 2 or 5 times a power of ten, the largest not above span / 4 (0 for no span).
double ScaleBarLength(double span);

// The line above the picture, on screen and on paper: "Group # " g (or the
// episodes) and "Type: " the type.
std::string PictureTitle(bool byGroup, int group, AnalysisType type);

PlotData TracePlot(const TraceSet& set, const UnitScale& scale, const TraceView& view, std::string title);

// The drawn trace a right click at `value` (units) over points [from, to]
// picks: with all traces drawn the nearest of them, else the shown trace
// when it passes within `tolerance` units; -1 for none.
int32_t PickedTrace(const TraceSet& set, const UnitScale& scale, const TraceView& view, int32_t from,
                    int32_t to, double value, double tolerance);

}  // namespace vess::group
