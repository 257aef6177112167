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

// The frequency histogram of the shared histogram routine with the heart-rate
// texts: title series + " Histogram " + " Frequency Histogram  " +
// " bin size=" + bin + " msec", and the y axis of the series ("RR Interval"
// or "Delta RR Interval"). Nothing when the bins would be too many.
std::optional<PlotData> HistogramPlot(std::span<const double> values, double binMs, std::string_view series);
// The fitted TINN triangle over an RR histogram.
void AddTriangle(PlotData& plot, const TriangleFit& fit, double binMs);

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
