#include "graphs/plot_layout.h"

#include <array>
#include <cmath>
#include <sstream>

namespace vess {

namespace {

// Position of v along the range as a fraction (0 at lower), or NaN.
double Fraction(double v, const AxisRange& r, bool log) {
    if (log) {
        if (!(v > 0 && r.lower > 0 && r.upper > r.lower)) return std::nan("");
        return (std::log10(v) - std::log10(r.lower)) / (std::log10(r.upper) - std::log10(r.lower));
    }
    return r.upper > r.lower ? (v - r.lower) / (r.upper - r.lower) : std::nan("");
}

}  // namespace

LegendCorner LeastCoveredCorner(const PlotData& plot, const PlotRanges& ranges, double widthFraction,
                                double heightFraction) {
    constexpr std::array kOrder = {LegendCorner::TopRight, LegendCorner::TopLeft, LegendCorner::BottomRight,
                                   LegendCorner::BottomLeft};
    std::array<std::size_t, 4> counts{};
    for (const PlotSeries& s : plot.series) {
        for (std::size_t i = 0; i < s.Size(); ++i) {
            const double fx = Fraction(s.x[i], ranges.x, plot.xLog), fy = Fraction(s.y[i], ranges.y, plot.yLog);
            if (!(fx >= 0 && fx <= 1 && fy >= 0 && fy <= 1)) continue;
            const bool right = fx >= 1 - widthFraction, left = fx <= widthFraction;
            const bool top = fy >= 1 - heightFraction, bottom = fy <= heightFraction;
            counts[0] += top && right;
            counts[1] += top && left;
            counts[2] += bottom && right;
            counts[3] += bottom && left;
        }
    }
    std::size_t best = 0;
    for (std::size_t c = 1; c < counts.size(); ++c)
        if (counts[c] < counts[best]) best = c;
    return kOrder[best];
}

std::string WrapTitle(const std::string& title, double maxWidth,
                      const std::function<double(const std::string&)>& textWidth) {
    std::istringstream words(title);
    std::string word, line, out;
    auto flush = [&] {
        if (line.empty()) return;
        out += (out.empty() ? "" : "\n") + line;
        line.clear();
    };
    while (words >> word) {
        const std::string joined = line.empty() ? word : line + " " + word;
        if (textWidth(joined) <= maxWidth) {
            line = joined;
            continue;
        }
        flush();
        // A word wider than the line is cut where it no longer fits.
        while (textWidth(word) > maxWidth && word.size() > 1) {
            std::size_t n = 1;
            while (n + 1 < word.size() && textWidth(word.substr(0, n + 1)) <= maxWidth) ++n;
            out += (out.empty() ? "" : "\n") + word.substr(0, n);
            word.erase(0, n);
        }
        line = word;
    }
    flush();
    return out;
}

}  // namespace vess
