// The heart-rate plots as graph descriptions: the RR and delta-RR
// histograms, the Lorenz plot with its SD1/SD2 ellipse, the tachogram and the
// power spectrum with its bands shaded.
#pragma once

#include <optional>
#include <span>
#include <string>

#include "graphs/plot_data.h"
#include "hrv/geometric.h"
#include "hrv/spectrum.h"

namespace vess::hrv {

// Series + " Histogram " + " Frequency Histogram  " + " bin size=" + bin +
// " msec"; bars from each bin's left edge. series is "RR Interval" or
// "Delta RR Interval", which picks the y axis text.
PlotData HistogramPlot(const Histogram& h, std::string_view series);
// The RR histogram with the fitted TINN triangle over it.
PlotData HistogramWithTriangle(const Histogram& h, const TriangleFit& fit);

// Axis texts of the two forms of the Lorenz plot and tachogram: the main
// form's full texts and the geometric window's short pane texts.
struct AxisTexts {
    std::string x, y;
};
AxisTexts MainLorenzAxes();
AxisTexts PaneLorenzAxes();
AxisTexts MainTachogramAxes();
AxisTexts PaneTachogramAxes();

// RR(i) against RR(i+1); with measures, the ellipse and the identity line.
PlotData LorenzPlot(std::span<const std::pair<double, double>> pairs, const AxisTexts& axes,
                const LorenzMeasures* measures = nullptr);
// RR interval against its beat number.
PlotData TachogramPlot(std::span<const int> beatNumbers, std::span<const double> rrMs, const AxisTexts& axes);
// Density against frequency up to the top of the HF band, the bands shaded.
PlotData SpectrumPlot(const SpectrumResult& s, const Bands& bands);

}  // namespace vess::hrv
