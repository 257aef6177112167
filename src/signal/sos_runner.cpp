#include "signal/sos_runner.h"

#include <algorithm>
#include <utility>

#include "recording/rounding.h"

namespace vess {

namespace {

// All N sections advanced one sample at a time with their state in locals, so
// the compiler keeps it in registers and the sections of neighbouring samples
// overlap in the pipeline; each section does the same operations in the same
// order as it would alone, so the output is the same to the last bit.
// With counts, each output is also rounded to its 16-bit count in the same
// loop, where that work fills the time the recursion waits on its own.
template <std::size_t N>
void ProcessCascade(const Biquad* sections, std::array<double, 2>* state, std::span<double> samples,
                    int16_t* counts = nullptr) {
    double b0[N], b1[N], b2[N], a1[N], a2[N], z0[N], z1[N];
    for (std::size_t i = 0; i < N; ++i) {
        b0[i] = sections[i][0];
        b1[i] = sections[i][1];
        b2[i] = sections[i][2];
        a1[i] = sections[i][4];
        a2[i] = sections[i][5];
        z0[i] = state[i][0];
        z1[i] = state[i][1];
    }
    for (std::size_t k = 0; k < samples.size(); ++k) {
        double x = samples[k];
        for (std::size_t i = 0; i < N; ++i) {
            const double y = b0[i] * x + z0[i];
            z0[i] = b1[i] * x - a1[i] * y + z1[i];
            z1[i] = b2[i] * x - a2[i] * y;
            x = y;
        }
        samples[k] = x;
        if (counts) counts[k] = RoundClamp16(x);
    }
    for (std::size_t i = 0; i < N; ++i) state[i] = {z0[i], z1[i]};
}

// Two streams through the same sections side by side, a's state and b's
// apart, each doing exactly what ProcessCascade does: two chains of
// dependent operations share the pipeline, which one alone leaves half idle.
// b's outputs are also rounded into bCounts. Written out rather than as two
// calls of one per-sample helper, which left the states in memory and ran a
// fifth slower.
template <std::size_t N>
void ProcessCascadePair(const Biquad* sections, std::array<double, 2>* aState, double* a,
                        std::array<double, 2>* bState, double* b, int16_t* bCounts, std::size_t n) {
    double b0[N], b1[N], b2[N], a1[N], a2[N], az0[N], az1[N], bz0[N], bz1[N];
    for (std::size_t i = 0; i < N; ++i) {
        b0[i] = sections[i][0];
        b1[i] = sections[i][1];
        b2[i] = sections[i][2];
        a1[i] = sections[i][4];
        a2[i] = sections[i][5];
        az0[i] = aState[i][0];
        az1[i] = aState[i][1];
        bz0[i] = bState[i][0];
        bz1[i] = bState[i][1];
    }
    for (std::size_t k = 0; k < n; ++k) {
        double x = a[k], u = b[k];
        for (std::size_t i = 0; i < N; ++i) {
            const double y = b0[i] * x + az0[i];
            az0[i] = b1[i] * x - a1[i] * y + az1[i];
            az1[i] = b2[i] * x - a2[i] * y;
            x = y;
            const double v = b0[i] * u + bz0[i];
            bz0[i] = b1[i] * u - a1[i] * v + bz1[i];
            bz1[i] = b2[i] * u - a2[i] * v;
            u = v;
        }
        a[k] = x;
        b[k] = u;
        bCounts[k] = RoundClamp16(u);
    }
    for (std::size_t i = 0; i < N; ++i) {
        aState[i] = {az0[i], az1[i]};
        bState[i] = {bz0[i], bz1[i]};
    }
}

// Longer cascades than the designs make (more than 8 sections): the same
// recursion, one section over the whole block after another.
void ProcessSectionBySection(const std::vector<Biquad>& sections, std::vector<std::array<double, 2>>& state,
                             std::span<double> samples, int16_t* counts) {
    for (std::size_t i = 0; i < sections.size(); ++i) ProcessCascade<1>(&sections[i], &state[i], samples);
    if (counts)
        for (std::size_t k = 0; k < samples.size(); ++k) counts[k] = RoundClamp16(samples[k]);
}

template <std::size_t... N>
void Dispatch(std::index_sequence<N...>, const std::vector<Biquad>& sections,
              std::vector<std::array<double, 2>>& state, std::span<double> samples, int16_t* counts) {
    const bool done =
        ((sections.size() == N + 1 ? (ProcessCascade<N + 1>(sections.data(), state.data(), samples, counts), true)
                                   : false) ||
         ...);
    if (!done) ProcessSectionBySection(sections, state, samples, counts);
}

template <std::size_t... N>
bool DispatchPair(std::index_sequence<N...>, const std::vector<Biquad>& sections, std::array<double, 2>* aState,
                  double* a, std::array<double, 2>* bState, double* b, int16_t* bCounts, std::size_t n) {
    return ((sections.size() == N + 1
                 ? (ProcessCascadePair<N + 1>(sections.data(), aState, a, bState, b, bCounts, n), true)
                 : false) ||
            ...);
}

}  // namespace

void ProcessSideBySide(SosRunner& a, std::span<double> aSamples, SosRunner& b, std::span<double> bSamples,
                       std::span<int16_t> bCounts) {
    const std::size_t n = std::min(aSamples.size(), bSamples.size());
    const bool paired = a.sections_ == b.sections_ &&
                        DispatchPair(std::make_index_sequence<8>{}, a.sections_, a.state_.data(), aSamples.data(),
                                     b.state_.data(), bSamples.data(), bCounts.data(), n);
    const std::size_t done = paired ? n : 0;
    a.Process(aSamples.subspan(done));
    b.Process(bSamples.subspan(done), bCounts.subspan(done));
}

SosRunner::SosRunner(std::vector<Biquad> sections)
    : sections_(std::move(sections)), state_(sections_.size(), {0.0, 0.0}) {}

void SosRunner::SettleAt(double level) {
    double x = level;
    for (std::size_t i = 0; i < sections_.size(); ++i) {
        const Biquad& s = sections_[i];
        // Each section's steady output is its DC gain times its input; the
        // state follows from y = b0 x + z0, z0 = b1 x - a1 y + z1, z1 = b2 x - a2 y.
        const double y = x * (s[0] + s[1] + s[2]) / (1.0 + s[4] + s[5]);
        state_[i][1] = s[2] * x - s[5] * y;
        state_[i][0] = s[1] * x - s[4] * y + state_[i][1];
        x = y;
    }
}

void SosRunner::Process(std::span<double> samples) {
    Dispatch(std::make_index_sequence<8>{}, sections_, state_, samples, nullptr);
}

void SosRunner::Process(std::span<double> samples, std::span<int16_t> counts) {
    Dispatch(std::make_index_sequence<8>{}, sections_, state_, samples, counts.data());
}

}  // namespace vess
