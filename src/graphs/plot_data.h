// What a subsystem hands to a graph window: series of x/y values with the way
// each is drawn, the title, the axis texts and the legends. Plain data, no Qt:
// the graph windows draw it, the command line prints it, tests compare it.
#pragma once

#include <string>
#include <vector>

namespace vess {

enum class SeriesKind {
    Bars,     // one bar per x, x being the bin's left edge, width PlotSeries::barWidth
    Steps,    // a staircase: y holds from x[i] up to x[i+1]
    Lines,    // points joined by straight lines
    Scatter,  // points only
};

struct PlotSeries {
    SeriesKind kind = SeriesKind::Lines;
    std::vector<double> x;
    std::vector<double> y;      // same length as x
    std::string legend;         // empty: not shown in a legend
    double barWidth = 0;        // Bars: the bin size
};

struct PlotData {
    std::string title;          // the plot's title (or the window caption)
    std::string xAxis;          // x axis text
    std::string yAxis;          // y axis text
    std::vector<PlotSeries> series;

    bool Empty() const { return series.empty(); }
};

}  // namespace vess
