// Power spectral density of the RR series and its band powers. The kept
// intervals, placed at the times of the beats that end them, are resampled
// evenly by a natural cubic spline, detrended, and averaged over windows
// (Welch); or, as a second choice, the uneven series goes straight into a
// Lomb-Scargle periodogram. Power is in ms^2, density in ms^2/Hz.
#pragma once

#include <span>
#include <string>
#include <vector>

namespace vess::hrv {

// Band edges in Hz: VLF from vlfLowHz up to vlfHighHz, LF up to lfHighHz, HF
// up to hfHighHz; a frequency f belongs to a band when low <= f < high.
struct Bands {
    double vlfLowHz = 0, vlfHighHz = 0.04, lfHighHz = 0.15, hfHighHz = 0.40;
    bool operator==(const Bands&) const = default;
};

enum class SpectrumMethod { Welch, LombScargle };
enum class Detrend { Mean, Linear };

struct SpectrumOptions {
    SpectrumMethod method = SpectrumMethod::Welch;
    double resampleHz = 4;
    Detrend detrend = Detrend::Linear;
    int windowPoints = 256;          // Welch window length, samples of the resampled series
    double overlapPercent = 50;      // Welch overlap of successive windows
    int oversampling = 4;            // Lomb-Scargle frequency grid, times 1/T
    Bands bands;
    bool operator==(const SpectrumOptions&) const = default;
};
// Adult human bands (0-0.04-0.15-0.40 Hz) at 4 Hz, 256-point windows.
SpectrumOptions HumanSpectrumPreset();
// Mouse: the human bands scaled by ten, the ratio of the heart rates (about
// 600 against 60 beats a minute): 0-0.4-1.5-4.0 Hz, resampled at 20 Hz with
// 512-point windows (25.6 s).
SpectrumOptions MouseSpectrumPreset();

struct BandPower {
    double powerMs2 = 0;
    double peakHz = 0;   // frequency of the band's highest density (0 when empty)
};

struct SpectrumResult {
    std::string error;               // empty when the spectrum was computed
    std::vector<double> frequencyHz;
    std::vector<double> densityMs2PerHz;
    int windows = 0;                 // Welch windows averaged
    BandPower vlf, lf, hf;
    double totalMs2 = 0;             // VLF + LF + HF
    double lfNu = 0, hfNu = 0;       // LF and HF in normalised units, 100 * X / (LF + HF)
    double lfHfRatio = 0;
};

// Resampled points (or Lomb-Scargle frequencies) a spectrum holds at most.
inline constexpr std::size_t kMaxSpectrumPoints = 20'000'000;
// Beats times frequencies a Lomb-Scargle periodogram sums at most (a day of
// beats at the human bands needs about 1.4e10).
inline constexpr double kMaxLombScargleSums = 2e10;

// timesMs: the time of each interval's ending beat, increasing; rrMs: the
// intervals. At least four intervals are needed.
SpectrumResult AnalyseSpectrum(std::span<const double> timesMs, std::span<const double> rrMs,
                               const SpectrumOptions& options);

// The pieces, for tests and for the plot.
// Natural cubic spline through (x, y) evaluated at xs (x increasing).
std::vector<double> CubicSplineAt(std::span<const double> x, std::span<const double> y,
                                  std::span<const double> xs);
void RemoveTrend(std::vector<double>& y, Detrend detrend);
SpectrumResult LombScargleDensity(std::span<const double> tSeconds, std::span<const double> y,
                                  double maxHz, int oversampling);
// Band powers, normalised units and peaks from a density on an even grid.
void MeasureBands(SpectrumResult& spectrum, const Bands& bands);

}  // namespace vess::hrv
