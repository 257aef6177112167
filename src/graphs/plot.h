// Rules over plot descriptions (PlotData) that the graph windows follow and
// tests can check without a screen: the ranges a plot opens with, bar
// widths, "plot all", and the colour classes of colour-coded points.
#pragma once

#include <string>
#include <vector>

#include "graphs/plot_data.h"

namespace vess {

struct PlotRanges {
    AxisRange x, y;
};

// The ranges a plot opens with and returns to on reset: the fixed ranges
// where given, otherwise every series, the colour map and the bands with a
// margin of 5 % on each side. Bars always include 0 on the y axis. A range
// of a single value widens to that value +-1 (or +-10 % of it when larger);
// a plot without data gets 0..1. A logarithmic axis fits its values above 0
// with 5 % of its decades either side (a decade either side of one value,
// 1..10 without any).
PlotRanges FittedRanges(const PlotData& plot);

// The width of each bar: barWidth when given, else the smallest spacing of
// distinct x (1 for a single bar).
double BarWidth(const PlotSeries& series);

// True when the legend has something to show.
bool HasLegend(const PlotData& plot);

// Orders a series' points by x, keeping pairs (and z) together; lines are
// drawn in x order and the windows reduce sorted data to the pixel width.
void SortByX(PlotSeries& series);

// Everything in several plots overlaid in one ("plot all"). Each series keeps
// its name, or takes its plot's title when it has none; colours are dropped
// so that the palette tells them apart. Axis texts are kept when all plots
// agree, otherwise joined with " / ". Colour maps cannot be overlaid and are
// left out.
PlotData CombinePlots(const std::vector<PlotData>& plots, const std::string& title);

// Splits points into colour classes: class c holds the indices of the points
// whose z lies in the c-th of `classes` equal steps from zMin to zMax (values
// outside go to the first or last class; NaN to none). Colour-coded scatter
// draws one layer per class, so a million points still draw quickly.
std::vector<std::vector<std::size_t>> ColourClasses(const std::vector<double>& z, int classes,
                                                    double zMin, double zMax);

// The smallest and largest finite z (0..1 when none).
AxisRange ZRange(const std::vector<double>& z);

}  // namespace vess
