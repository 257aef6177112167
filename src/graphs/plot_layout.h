// Where a plot's texts go: the corner of the legend that covers the fewest
// points, and a title broken into lines that fit the plot's width.
#pragma once

#include <functional>
#include <string>

#include "graphs/plot.h"

namespace vess {

enum class LegendCorner { TopRight, TopLeft, BottomRight, BottomLeft };

// The corner whose box (widthFraction x heightFraction of the axis area)
// holds the fewest points of the plot's series within ranges, counted in
// the axes' own scale (logarithmic where the plot says so). Ties go to the
// first of top right, top left, bottom right, bottom left.
LegendCorner LeastCoveredCorner(const PlotData& plot, const PlotRanges& ranges, double widthFraction,
                                double heightFraction);

// The title in lines no wider than maxWidth as textWidth measures them:
// broken between words, and inside a word only when the word alone is wider.
std::string WrapTitle(const std::string& title, double maxWidth,
                      const std::function<double(const std::string&)>& textWidth);

}  // namespace vess
