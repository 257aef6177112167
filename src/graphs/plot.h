// What a plot shows, described without any drawing code: a title, axis
// texts, series of bars, steps, lines or points, an optional colour map and
// shaded x-bands. Every subsystem builds one of these and hands it to the
// graph windows (ShowPlot, or a PlotSink in core commands); the windows
// decide how it looks.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace vess {

struct Colour {
    uint8_t r = 0, g = 0, b = 0;
    friend bool operator==(const Colour&, const Colour&) = default;
};

enum class SeriesKind {
    Bars,     // one bar per x, barWidth wide, from 0 to y
    Steps,    // y holds from x[i] up to x[i + 1] (a cumulative fraction)
    Lines,    // straight lines between points, in x order
    Scatter,  // points only; colour-coded when z is given
    LinesAndPoints,
};

// Where a bar stands relative to its x: histograms give the left edge of the
// bin, so their bars span [x, x + width).
enum class BarAlign { Left, Centre };

struct Series {
    SeriesKind kind = SeriesKind::Lines;
    std::string name;           // legend text; unnamed series stay out of the legend
    std::vector<double> x, y;
    // Scatter only: a third value per point that picks the point's colour
    // from the colour scale (empty: one colour for all points).
    std::vector<double> z;
    std::string zLabel;         // the colour scale's text when z is given
    double barWidth = 0;        // Bars: width in x units; 0 takes the smallest x spacing
    BarAlign barAlign = BarAlign::Left;
    std::optional<Colour> colour;  // none: the window's palette
    double lineWidth = 1.5;
    double pointSize = 5;       // Scatter and LinesAndPoints

    std::size_t Size() const { return x.size() < y.size() ? x.size() : y.size(); }
};

// A value on a regular x-y grid, drawn as a colour map (contour view).
// z is row-major: z[iy * nx + ix] is the value at (x of ix, y of iy), the
// cells' centres spread evenly from xMin to xMax and yMin to yMax.
struct ColourMap {
    std::size_t nx = 0, ny = 0;
    double xMin = 0, xMax = 1, yMin = 0, yMax = 1;
    std::vector<double> z;
    std::string zLabel;

    double At(std::size_t ix, std::size_t iy) const { return z[iy * nx + ix]; }
    bool Valid() const { return nx > 0 && ny > 0 && z.size() == nx * ny; }
};

// A shaded stretch of the x axis over the whole height of the plot (for
// example a frequency band of a spectrum).
struct XBand {
    double from = 0, to = 0;
    std::string label;
    std::optional<Colour> colour;
};

struct AxisRange {
    double lower = 0, upper = 1;
    friend bool operator==(const AxisRange&, const AxisRange&) = default;
};

struct Plot {
    std::string title;
    std::string xLabel, yLabel;
    std::vector<Series> series;
    std::optional<ColourMap> colourMap;
    std::vector<XBand> bands;
    // Fixed axis ranges; when absent the range fits the data (FittedRanges).
    std::optional<AxisRange> xRange, yRange;
};

struct PlotRanges {
    AxisRange x, y;
};

// The ranges a plot opens with and returns to on reset: the fixed ranges
// where given, otherwise every series, the colour map and the bands with a
// margin of 5 % on each side. Bars always include 0 on the y axis. A range
// of a single value widens to that value +-1 (or +-10 % of it when larger);
// a plot without data gets 0..1.
PlotRanges FittedRanges(const Plot& plot);

// The width of each bar: barWidth when given, else the smallest spacing of
// distinct x (1 for a single bar).
double BarWidth(const Series& series);

// True when the legend has something to show.
bool HasLegend(const Plot& plot);

// Orders a series' points by x, keeping pairs (and z) together; lines are
// drawn in x order and the windows reduce sorted data to the pixel width.
void SortByX(Series& series);

// Everything in several plots overlaid in one ("plot all"). Each series keeps
// its name, or takes its plot's title when it has none; colours are dropped
// so that the palette tells them apart. Axis texts are kept when all plots
// agree, otherwise joined with " / ". Colour maps cannot be overlaid and are
// left out.
Plot CombinePlots(const std::vector<Plot>& plots, const std::string& title);

// Splits points into colour classes: class c holds the indices of the points
// whose z lies in the c-th of `classes` equal steps from zMin to zMax (values
// outside go to the first or last class; NaN to none). Colour-coded scatter
// draws one layer per class, so a million points still draw quickly.
std::vector<std::vector<std::size_t>> ColourClasses(const std::vector<double>& z, int classes,
                                                    double zMin, double zMax);

// The smallest and largest finite z (0..1 when none).
AxisRange ZRange(const std::vector<double>& z);

}  // namespace vess
