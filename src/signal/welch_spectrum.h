// Noise power spectrum of a stretch of trace by Welch's method: Hann-windowed
// segments of a power-of-2 length overlapping by half, each with its mean
// removed, their periodograms averaged into a one-sided power spectral
// density in unit^2/Hz.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "graphs/plot_data.h"

namespace vess {

class Recording;

inline constexpr int kMinSegmentPoints = 16;

struct PowerSpectrum {
    std::vector<double> frequencyHz;  // k * fs / L, k = 0 .. L/2
    std::vector<double> psd;          // unit^2/Hz; sums to the variance times fs / L
    int segments = 0;
};

// True for a power of 2 from kMinSegmentPoints up to points.
bool ValidSegmentLength(int segmentPoints, std::size_t points);
// The default segment: the largest power of 2 not above points, at most 4096.
int DefaultSegmentLength(std::size_t points);

// Empty spectrum (no segments) when the length is not valid for the values.
// The density is normalised so that its sum times fs / L equals the mean
// variance of the segments under the window (Parseval), and the bins other
// than 0 and L/2 carry the power of the negative frequencies too.
PowerSpectrum WelchSpectrum(std::span<const double> values, double sampleRateHz, int segmentPoints);
// The same over count points of the recording's trace from first on (the
// samples it reads, in its units), read a segment at a time: a whole long
// recording is never held.
PowerSpectrum RecordingSpectrum(const Recording& rec, int64_t first, int64_t count, int segmentPoints);

// The spectrum as a line plot with the line frequency marked by a narrow
// band; title names the stretch.
PlotData SpectrumPlot(const PowerSpectrum& spectrum, const std::string& units, double lineHz,
                      const std::string& title);

}  // namespace vess
