// Where core commands send the plots they make. The desktop program shows
// them in the graph windows; tests keep them to look at; the command-line
// tool writes their data out.
#pragma once

#include <vector>

#include "graphs/plot.h"

namespace vess {

class PlotSink {
public:
    virtual ~PlotSink() = default;
    virtual void Show(const Plot& plot) = 0;
};

// Keeps every plot shown, in order.
class CollectingPlotSink : public PlotSink {
public:
    void Show(const Plot& plot) override { plots.push_back(plot); }
    std::vector<Plot> plots;
};

}  // namespace vess
