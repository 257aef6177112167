#include "recording/synth.h"

#include <cmath>
#include <numbers>
#include <random>

#include <fmt/format.h>

#include "recording/file_io.h"
#include "recording/rounding.h"

namespace vess {

namespace {

// Uniform, normal and exponential variates built from the raw 64-bit stream,
// so a seed gives the same recording with any standard library.
class Random {
public:
    explicit Random(uint64_t seed) : engine_(seed) {}
    // Uniform in (0, 1): 53 random bits, offset by half a step from 0.
    double Uniform() { return (double(engine_() >> 11) + 0.5) * 0x1.0p-53; }
    // Standard normal by Box-Muller, using both values of each pair.
    double Normal() {
        if (haveSpare_) {
            haveSpare_ = false;
            return spare_;
        }
        const double r = std::sqrt(-2.0 * std::log(Uniform()));
        const double phi = 2.0 * std::numbers::pi * Uniform();
        spare_ = r * std::sin(phi);
        haveSpare_ = true;
        return r * std::cos(phi);
    }
    double Exponential(double mean) { return -mean * std::log(Uniform()); }

private:
    std::mt19937_64 engine_;
    double spare_ = 0;
    bool haveSpare_ = false;
};

// Unit-variance low-pass filtered white noise: y += a (w - y) has variance
// a / (2 - a) for unit white input, which we divide out.
class OnePole {
public:
    OnePole(double cornerHz, double sampleRateHz)
        : a_(1.0 - std::exp(-2.0 * std::numbers::pi * cornerHz / sampleRateHz)),
          norm_(std::sqrt((2.0 - a_) / a_)) {}
    double Next(double white) {
        y_ += a_ * (white - y_);
        return y_ * norm_;
    }

private:
    double a_;
    double norm_;
    double y_ = 0;
};

}  // namespace

double DoubleExponentialPeakTime(double riseTau, double decayTau) {
    return std::log(decayTau / riseTau) * riseTau * decayTau / (decayTau - riseTau);
}

std::string CheckSynthOptions(const SynthOptions& o) {
    auto positive = [](double v) { return std::isfinite(v) && v > 0; };
    if (!positive(o.seconds)) return "The duration must be a positive number of seconds.";
    if (!positive(o.sampleRateHz)) return "The sample rate must be a positive number of Hz.";
    if (o.seconds * o.sampleRateHz > 2.0e9) return "Too many samples for an ABF 1.x file.";
    if (!std::isfinite(o.eventsPerSecond) || o.eventsPerSecond < 0)
        return "The event rate must be zero or more events per second.";
    if (!positive(o.medianAmplitudePa)) return "The amplitude must be a positive number of pA.";
    if (!std::isfinite(o.noiseRmsPa) || o.noiseRmsPa < 0) return "The noise must be zero or more pA.";
    if (!positive(o.riseTauMs) || !positive(o.decayTauMs) || o.riseTauMs >= o.decayTauMs)
        return "The rise time constant must be positive and shorter than the decay.";
    if (o.direction != -1 && o.direction != 1) return "The direction must be -1 or 1.";
    if (!positive(o.countsPerPa)) return "The scale must be a positive number of counts per pA.";
    if (o.eventsPerSecond > 0 && o.minIntervalMs >= 1000.0 / o.eventsPerSecond)
        return "The event rate is too high for the dead time between events.";
    return {};
}

SynthRecording Synthesise(const SynthOptions& o) {
    SynthRecording out;
    const double intervalUs = 1e6 / o.sampleRateHz;
    const auto n = std::size_t(std::llround(o.seconds * o.sampleRateHz));
    Random random(o.seed);

    // Event times first, so that the noise does not shift them when the
    // duration changes.
    const double tp = DoubleExponentialPeakTime(o.riseTauMs, o.decayTauMs);
    const double durationMs = double(n) * intervalUs / 1000.0;
    if (o.eventsPerSecond > 0) {
        const double meanFreeMs = 1000.0 / o.eventsPerSecond - o.minIntervalMs;
        double t = 20.0 + random.Exponential(meanFreeMs);
        while (t + tp < durationMs - 1.0) {
            TrueEvent e;
            e.onsetMs = t;
            e.peakMs = t + tp;
            e.peakIndex = RoundEven(e.peakMs * 1000.0 / intervalUs);
            e.amplitudePa = o.direction * o.medianAmplitudePa *
                            std::exp(o.amplitudeLogSigma * random.Normal());
            out.events.push_back(e);
            t += o.minIntervalMs + random.Exponential(meanFreeMs);
        }
    }

    // Background: coloured noise (a fast component and three slow ones in
    // octave-like steps, roughly 1/f below a few hundred Hz) plus line hum.
    std::vector<double> trace(n);
    OnePole fast(2000.0, o.sampleRateHz), slow1(1.0, o.sampleRateHz),
        slow2(10.0, o.sampleRateHz), slow3(100.0, o.sampleRateHz);
    const double wFast = std::sqrt(0.55), wSlow = std::sqrt(0.15);
    const double humPhase = 2.0 * std::numbers::pi * random.Uniform();
    for (std::size_t i = 0; i < n; ++i) {
        const double noise = wFast * fast.Next(random.Normal()) +
                             wSlow * (slow1.Next(random.Normal()) + slow2.Next(random.Normal()) +
                                      slow3.Next(random.Normal()));
        const double tS = double(i) * intervalUs * 1e-6;
        trace[i] = o.baselinePa + o.noiseRmsPa * noise +
                   o.humAmplitudePa * std::sin(2.0 * std::numbers::pi * o.humHz * tS + humPhase);
    }

    // Events: a double exponential scaled to peak at the amplitude, drawn for
    // ten decay time constants.
    const double peakValue = std::exp(-tp / o.decayTauMs) - std::exp(-tp / o.riseTauMs);
    const double spanMs = 10.0 * o.decayTauMs;
    for (const TrueEvent& e : out.events) {
        const auto first = std::size_t(std::ceil(e.onsetMs * 1000.0 / intervalUs));
        for (std::size_t i = first; i < n; ++i) {
            const double dt = double(i) * intervalUs / 1000.0 - e.onsetMs;
            if (dt > spanMs) break;
            const double shape = std::exp(-dt / o.decayTauMs) - std::exp(-dt / o.riseTauMs);
            trace[i] += e.amplitudePa * shape / peakValue;
        }
    }

    out.samples.resize(n);
    for (std::size_t i = 0; i < n; ++i)
        out.samples[i] = RoundClamp16(trace[i] * double(o.countsPerPa));

    // value = counts / (1 x scale x 1) x 10 V / 32768: scale = 10 / 32768 x countsPerPa.
    out.abfLayout.intervalUs = intervalUs;
    out.abfLayout.adcRange = 10.0f;
    out.abfLayout.adcResolution = 32768;
    AbfChannelLayout channel;
    channel.name = "Im";
    channel.units = "pA";
    channel.instrumentScaleFactor = float(10.0 / 32768.0 * double(o.countsPerPa));
    out.abfLayout.channels = {channel};
    out.abfLayout.comment = fmt::format("synthetic, seed {}, {} events", o.seed, out.events.size());
    return out;
}

std::filesystem::path TrueEventsPath(const std::filesystem::path& abfPath) {
    std::filesystem::path p = abfPath;
    p.replace_filename(abfPath.stem().string() + "_events.csv");
    return p;
}

std::string WriteSynthetic(const std::filesystem::path& abfPath, const SynthRecording& rec) {
    if (std::string error = WriteAbf(abfPath, rec.abfLayout, rec.samples); !error.empty()) return error;
    std::string csv = "event,onset_ms,peak_ms,peak_index,amplitude_pA\n";
    for (std::size_t i = 0; i < rec.events.size(); ++i) {
        const TrueEvent& e = rec.events[i];
        csv += fmt::format("{},{:.4f},{:.4f},{},{:.4f}\n", i + 1, e.onsetMs, e.peakMs, e.peakIndex,
                           e.amplitudePa);
    }
    return WriteFileAtomic(TrueEventsPath(abfPath), std::string_view(csv));
}

}  // namespace vess
