#include "hrv/plots.h"

#include <algorithm>
#include <array>

#include <fmt/format.h>

#include "hrv/texts.h"
#include "statistics/histogram.h"
#include "statistics/prompts.h"
#include "statistics/texts.h"

namespace vess::hrv {

namespace {

std::string S(std::string_view v) { return std::string(v); }

// Line series are drawn in x order, so the closed ellipse goes in as its two
// arcs between the leftmost and the rightmost point, each single-valued in x.
std::array<PlotSeries, 2> EllipseArcs(const std::vector<std::pair<double, double>>& loop) {
    std::array<PlotSeries, 2> arcs;
    if (loop.size() < 3) return arcs;
    const std::size_t n = loop.size() - 1;  // the last point repeats the first
    const auto byX = [](const auto& a, const auto& b) { return a.first < b.first; };
    const auto left = std::size_t(std::min_element(loop.begin(), loop.end() - 1, byX) - loop.begin());
    const auto right = std::size_t(std::max_element(loop.begin(), loop.end() - 1, byX) - loop.begin());
    for (int a = 0; a < 2; ++a) {
        PlotSeries& arc = arcs[std::size_t(a)];
        arc.kind = SeriesKind::Lines;
        const std::size_t from = a == 0 ? left : right, to = a == 0 ? right : left;
        for (std::size_t i = from;; i = (i + 1) % n) {
            arc.x.push_back(loop[i].first);
            arc.y.push_back(loop[i].second);
            if (i == to) break;
        }
        if (arc.x.front() > arc.x.back()) {
            std::reverse(arc.x.begin(), arc.x.end());
            std::reverse(arc.y.begin(), arc.y.end());
        }
    }
    return arcs;
}

}  // namespace

std::optional<PlotData> HistogramPlot(std::span<const double> values, double binMs, std::string_view series) {
    vess::HistogramPlot h = MakeHistogram(HistogramKind::Frequency, values, binMs, S(series), S(texts::kMsecUnit));
    if (h.tooManyBins) return std::nullopt;
    h.plot.title = S(series) + S(texts::kHistogramTitleSuffix) + S(stats_texts::kFrequencyTitlePrefix) +
                   S(stats_texts::kBinSizeTag) + BinSizeText(binMs) + S(texts::kMsecTitleSuffix);
    h.plot.yAxis = S(series == texts::kRRSeries ? texts::kRRHistogramYAxis : texts::kDeltaRRHistogramYAxis);
    for (PlotSeries& bars : h.plot.series) bars.legend = S(series);
    return std::move(h.plot);
}

void AddTriangle(PlotData& plot, const TriangleFit& fit, double binMs) {
    PlotSeries tri;
    tri.kind = SeriesKind::Lines;
    tri.legend = fmt::format("{} (TINN {:.1f} ms)", texts::kTriangleFit, fit.tinnMs);
    // The bars stand on their left edges; the triangle is fitted on bin centres.
    tri.x = {fit.nMs - binMs / 2, fit.apexMs - binMs / 2, fit.mMs - binMs / 2};
    tri.y = {0, double(fit.apexCount), 0};
    tri.colour = Colour{200, 40, 40};
    plot.series.push_back(std::move(tri));
}

AxisTexts MainLorenzAxes() {
    return {S(texts::kLorenzXAxis), fmt::format("{} ({})", texts::kLorenzYAxis, texts::kMsecUnit)};
}
AxisTexts PaneLorenzAxes() { return {S(texts::kGeoLorenzX), S(texts::kGeoLorenzY)}; }
AxisTexts MainTachogramAxes() {
    return {S(texts::kTachogramXAxis), fmt::format("{} ({})", texts::kTachogramYAxis, texts::kMsecUnit)};
}
AxisTexts PaneTachogramAxes() { return {S(texts::kGeoTachogramX), S(texts::kGeoTachogramY)}; }

PlotData LorenzPlot(std::span<const std::pair<double, double>> pairs, const AxisTexts& axes,
                const LorenzMeasures* m) {
    PlotData p;
    p.title = S(texts::kLorenzTitle);
    p.xAxis = axes.x;
    p.yAxis = axes.y;
    PlotSeries points;
    points.kind = SeriesKind::Scatter;
    points.pointSize = 3;
    for (const auto& [x, y] : pairs) {
        points.x.push_back(x);
        points.y.push_back(y);
    }
    p.series.push_back(std::move(points));
    if (m && m->n >= 2) {
        p.title += fmt::format(" {} {:.2f} ms, {} {:.2f} ms", texts::kSD1, m->sd1Ms, texts::kSD2, m->sd2Ms);
        auto arcs = EllipseArcs(LorenzEllipse(*m));
        arcs[0].legend = S(texts::kEllipse);
        for (PlotSeries& arc : arcs) arc.colour = Colour{200, 40, 40};
        PlotSeries identity;
        identity.kind = SeriesKind::Lines;
        identity.legend = S(texts::kIdentityLine);
        identity.lineWidth = 1;
        identity.colour = Colour{120, 120, 120};
        const auto [lo, hi] = std::minmax_element(p.series[0].x.begin(), p.series[0].x.end());
        identity.x = {*lo, *hi};
        identity.y = {*lo, *hi};
        p.series.push_back(std::move(arcs[0]));
        p.series.push_back(std::move(arcs[1]));
        p.series.push_back(std::move(identity));
    }
    return p;
}

PlotData TachogramPlot(std::span<const int> beatNumbers, std::span<const double> rrMs, const AxisTexts& axes) {
    PlotData p;
    p.title = S(texts::kTachogramTitle);
    p.xAxis = axes.x;
    p.yAxis = axes.y;
    PlotSeries line;
    line.kind = SeriesKind::Lines;
    line.x.assign(beatNumbers.begin(), beatNumbers.end());
    line.y.assign(rrMs.begin(), rrMs.end());
    p.series.push_back(std::move(line));
    return p;
}

PlotData SpectrumPlot(const SpectrumResult& s, const Bands& bands) {
    PlotData p;
    p.title = S(texts::kSpectrumTitle);
    p.xAxis = S(texts::kFrequencyAxis);
    p.yAxis = S(texts::kDensityAxis);
    p.xLog = p.yLog = true;  // decades of frequency and of power
    PlotSeries line;
    line.kind = SeriesKind::Lines;
    for (std::size_t k = 0; k < s.frequencyHz.size() && s.frequencyHz[k] <= bands.hfHighHz; ++k) {
        line.x.push_back(s.frequencyHz[k]);
        line.y.push_back(s.densityMs2PerHz[k]);
    }
    p.series.push_back(std::move(line));
    p.bands = {{bands.vlfLowHz, bands.vlfHighHz, S(texts::kVLF), Colour{200, 200, 200}},
               {bands.vlfHighHz, bands.lfHighHz, S(texts::kLF), Colour{170, 200, 240}},
               {bands.lfHighHz, bands.hfHighHz, S(texts::kHF), Colour{240, 200, 170}}};
    return p;
}

}  // namespace vess::hrv
