#include "signal/welch_spectrum.h"

#include <algorithm>

#include <fmt/format.h>

#include "recording/recording.h"
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

namespace {

PowerSpectrum FromWelch(WelchPsdResult r) {
    PowerSpectrum out;
    out.frequencyHz = std::move(r.frequencyHz);
    out.psd = std::move(r.density);
    out.segments = r.windows;
    return out;
}

}  // namespace

PowerSpectrum WelchSpectrum(std::span<const double> values, double sampleRateHz, int segmentPoints) {
    if (!ValidSegmentLength(segmentPoints, values.size()) || !(sampleRateHz > 0)) return {};
    return FromWelch(WelchPsd(values, sampleRateHz, segmentPoints, 50));
}

PowerSpectrum RecordingSpectrum(const Recording& rec, int64_t first, int64_t count, int segmentPoints) {
    const double rateHz = 1e6 / rec.IntervalUs();
    if (first < 0 || count < 0 || first + count > rec.PointsPerChannel() ||
        !ValidSegmentLength(segmentPoints, std::size_t(count)) || !(rateHz > 0))
        return {};
    std::vector<int16_t> samples(static_cast<std::size_t>(segmentPoints));
    const auto read = [&](std::size_t start, std::span<double> window) {
        rec.ReadSamples(first + int64_t(start), samples);
        std::transform(samples.begin(), samples.end(), window.begin(),
                       [&](int16_t c) { return double(rec.Bit2pA(c)); });
    };
    return FromWelch(WelchPsd(std::size_t(count), read, rateHz, segmentPoints, 50));
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
