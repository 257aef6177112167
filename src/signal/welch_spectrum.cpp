#include "signal/welch_spectrum.h"

#include <fmt/format.h>

#include "signal/tool_texts.h"
#include "statistics/welch_psd.h"

namespace vess {

bool ValidSegmentLength(int segmentPoints, std::size_t points) {
    return segmentPoints >= kMinSegmentPoints && std::size_t(segmentPoints) <= points &&
           (segmentPoints & (segmentPoints - 1)) == 0;
}

int DefaultSegmentLength(std::size_t points) {
    int length = kMinSegmentPoints;
    while (length < 4096 && std::size_t(length) * 2 <= points) length *= 2;
    return length;
}

PowerSpectrum WelchSpectrum(std::span<const double> values, double sampleRateHz, int segmentPoints) {
    PowerSpectrum out;
    if (!ValidSegmentLength(segmentPoints, values.size()) || !(sampleRateHz > 0)) return out;
    WelchPsdResult r = WelchPsd(values, sampleRateHz, segmentPoints, 50);
    out.frequencyHz = std::move(r.frequencyHz);
    out.psd = std::move(r.density);
    out.segments = r.windows;
    return out;
}

PlotData SpectrumPlot(const PowerSpectrum& spectrum, const std::string& units, double lineHz,
                      const std::string& title) {
    PlotData plot;
    plot.title = title;
    plot.xAxis = std::string(tool_texts::kFrequencyAxis);
    plot.yAxis = fmt::format("{}{}{}", tool_texts::kPsdAxisPrefix, units, tool_texts::kPsdAxisSuffix);
    plot.xLog = plot.yLog = true;  // decades of frequency and of power
    PlotSeries s;
    s.kind = SeriesKind::Lines;
    s.x = spectrum.frequencyHz;
    s.y = spectrum.psd;
    plot.series.push_back(std::move(s));
    if (lineHz > 0 && spectrum.frequencyHz.size() > 1) {
        const double df = spectrum.frequencyHz[1];
        plot.bands.push_back({lineHz - df / 2, lineHz + df / 2, fmt::format("{:g} Hz", lineHz),
                              Colour{220, 60, 60}});
    }
    return plot;
}

}  // namespace vess
