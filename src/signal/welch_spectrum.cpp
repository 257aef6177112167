#include "signal/welch_spectrum.h"

#include <fftw3.h>
#include <fmt/format.h>

#include <cmath>
#include <numbers>

#include "signal/tool_texts.h"

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
    const int n = segmentPoints;
    const int bins = n / 2 + 1;
    // Periodic Hann window: the form that sums to a constant at 50 % overlap.
    std::vector<double> window(static_cast<std::size_t>(n));
    double windowPower = 0;
    for (int i = 0; i < n; ++i) {
        window[std::size_t(i)] = 0.5 - 0.5 * std::cos(2 * std::numbers::pi * i / n);
        windowPower += window[std::size_t(i)] * window[std::size_t(i)];
    }
    double* in = fftw_alloc_real(std::size_t(n));
    fftw_complex* spectrum = fftw_alloc_complex(std::size_t(bins));
    fftw_plan plan = fftw_plan_dft_r2c_1d(n, in, spectrum, FFTW_ESTIMATE);
    out.psd.assign(std::size_t(bins), 0.0);
    const std::size_t hop = std::size_t(n / 2);
    for (std::size_t start = 0; start + std::size_t(n) <= values.size(); start += hop) {
        double mean = 0;
        for (int i = 0; i < n; ++i) mean += values[start + std::size_t(i)];
        mean /= n;
        for (int i = 0; i < n; ++i)
            in[i] = (values[start + std::size_t(i)] - mean) * window[std::size_t(i)];
        fftw_execute(plan);
        for (int k = 0; k < bins; ++k)
            out.psd[std::size_t(k)] += spectrum[k][0] * spectrum[k][0] + spectrum[k][1] * spectrum[k][1];
        ++out.segments;
    }
    fftw_destroy_plan(plan);
    fftw_free(in);
    fftw_free(spectrum);
    const double scale = 1.0 / (sampleRateHz * windowPower * out.segments);
    out.frequencyHz.resize(std::size_t(bins));
    for (int k = 0; k < bins; ++k) {
        const bool edge = k == 0 || k == n / 2;
        out.psd[std::size_t(k)] *= scale * (edge ? 1.0 : 2.0);
        out.frequencyHz[std::size_t(k)] = k * sampleRateHz / n;
    }
    return out;
}

PlotData SpectrumPlot(const PowerSpectrum& spectrum, const std::string& units, double lineHz,
                      const std::string& title) {
    PlotData plot;
    plot.title = title;
    plot.xAxis = std::string(tool_texts::kFrequencyAxis);
    plot.yAxis = fmt::format("{}{}{}", tool_texts::kPsdAxisPrefix, units, tool_texts::kPsdAxisSuffix);
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
