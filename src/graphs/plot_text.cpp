#include "graphs/plot_text.h"

#include <fmt/format.h>

#include <algorithm>
#include <vector>

namespace vess {

namespace {

struct Column {
    std::string title;
    const std::vector<double>* values;
    std::size_t size;
};

std::string Or(const std::string& text, const char* fallback) {
    return text.empty() ? fallback : text;
}

std::vector<Column> ColumnsOf(const PlotData& plot, std::vector<std::vector<double>>& scratch) {
    std::vector<Column> cols;
    const std::string xTitle = Or(plot.xAxis, "X");
    for (const PlotSeries& s : plot.series) {
        const std::size_t n = s.Size();
        cols.push_back({xTitle, &s.x, n});
        cols.push_back({s.legend.empty() ? Or(plot.yAxis, "Y") : s.legend, &s.y, n});
        if (s.z.size() >= n && !s.z.empty()) cols.push_back({Or(s.zAxis, "Z"), &s.z, n});
    }
    if (plot.colourMap && plot.colourMap->Valid()) {
        const ColourMap& m = *plot.colourMap;
        scratch.assign(3, {});
        for (std::size_t iy = 0; iy < m.ny; ++iy) {
            for (std::size_t ix = 0; ix < m.nx; ++ix) {
                const double fx = m.nx > 1 ? double(ix) / double(m.nx - 1) : 0.0;
                const double fy = m.ny > 1 ? double(iy) / double(m.ny - 1) : 0.0;
                scratch[0].push_back(m.xMin + fx * (m.xMax - m.xMin));
                scratch[1].push_back(m.yMin + fy * (m.yMax - m.yMin));
                scratch[2].push_back(m.At(ix, iy));
            }
        }
        const std::size_t n = m.nx * m.ny;
        cols.push_back({xTitle, &scratch[0], n});
        cols.push_back({Or(plot.yAxis, "Y"), &scratch[1], n});
        cols.push_back({Or(m.zAxis, "Z"), &scratch[2], n});
    }
    return cols;
}

}  // namespace

std::string PlotToTabSeparated(const PlotData& plot) {
    std::vector<std::vector<double>> scratch;
    const std::vector<Column> cols = ColumnsOf(plot, scratch);
    std::size_t rows = 0;
    for (const Column& c : cols) rows = std::max(rows, c.size);
    std::string out;
    auto row = [&](auto cell) {
        for (std::size_t c = 0; c < cols.size(); ++c) {
            if (c > 0) out += '\t';
            cell(cols[c]);
        }
        out += "\r\n";
    };
    row([&](const Column& c) { out += c.title; });
    for (std::size_t r = 0; r < rows; ++r)
        row([&](const Column& c) {
            if (r < c.size) out += fmt::format("{}", (*c.values)[r]);
        });
    return out;
}

}  // namespace vess
