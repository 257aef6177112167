// What a subsystem hands to a graph window: series of x/y values with the way
// each is drawn, the title, the axis texts and the legends, and optionally a
// colour map and shaded x-bands. Plain data, no Qt: the graph windows draw
// it (ShowPlot), the command line prints it, tests compare it. Fields are
// only ever added at the end, so brace-initialised values keep their meaning.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace vess {

enum class SeriesKind {
    Bars,     // one bar per x, x being the bin's left edge, width PlotSeries::barWidth
    Steps,    // a staircase: y holds from x[i] up to x[i+1]
    Lines,    // points joined by straight lines
    Scatter,  // points only; colour-coded when PlotSeries::z is given
    LinesAndPoints,
};

struct Colour {
    uint8_t r = 0, g = 0, b = 0;
    friend bool operator==(const Colour&, const Colour&) = default;
};

// Where a bar stands relative to its x: histograms give the left edge of the
// bin, so their bars span [x, x + width).
enum class BarAlign { Left, Centre };

struct PlotSeries {
    SeriesKind kind = SeriesKind::Lines;
    std::vector<double> x;
    std::vector<double> y;      // same length as x
    std::string legend;         // empty: not shown in a legend
    double barWidth = 0;        // Bars: the bin size; 0 takes the smallest x spacing
    BarAlign barAlign = BarAlign::Left;
    // Scatter only: a third value per point that picks the point's colour
    // from the colour scale (empty: one colour for all points).
    std::vector<double> z{};
    std::string zAxis{};        // the colour scale's text when z is given
    std::optional<Colour> colour{};  // none: the window's palette
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
    std::vector<double> z{};
    std::string zAxis{};

    double At(std::size_t ix, std::size_t iy) const { return z[iy * nx + ix]; }
    bool Valid() const { return nx > 0 && ny > 0 && z.size() == nx * ny; }
};

// A shaded stretch of the x axis over the whole height of the plot (for
// example a frequency band of a spectrum).
struct XBand {
    double from = 0, to = 0;
    std::string label{};
    std::optional<Colour> colour{};
};

struct AxisRange {
    double lower = 0, upper = 1;
    friend bool operator==(const AxisRange&, const AxisRange&) = default;
};

struct PlotData {
    std::string title;          // the plot's title (or the window caption)
    std::string xAxis;          // x axis text
    std::string yAxis;          // y axis text
    std::vector<PlotSeries> series;
    std::optional<ColourMap> colourMap{};
    std::vector<XBand> bands{};
    // Fixed axis ranges; when absent the range fits the data (FittedRanges).
    std::optional<AxisRange> xRange{}, yRange{};
    // A logarithmic x axis (frequency responses, power spectra).
    bool xLog = false;
    // What the plot leaves out or cannot show exactly ("3 values that were
    // not measured were left out"), shown under the title; empty for none.
    std::string note{};
    // A logarithmic y axis (power spectra); with xLog, a log-log plot. Values
    // at or below 0 are left off a logarithmic axis.
    bool yLog = false;

    bool Empty() const { return series.empty() && !colourMap; }
};

}  // namespace vess
