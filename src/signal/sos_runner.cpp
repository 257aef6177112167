#include "signal/sos_runner.h"

#include <utility>

namespace vess {

namespace {

// All N sections advanced one sample at a time with their state in locals, so
// the compiler keeps it in registers and the sections of neighbouring samples
// overlap in the pipeline; each section does the same operations in the same
// order as it would alone, so the output is the same to the last bit.
template <std::size_t N>
void ProcessCascade(const Biquad* sections, std::array<double, 2>* state, std::span<double> samples) {
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
    for (double& v : samples) {
        double x = v;
        for (std::size_t i = 0; i < N; ++i) {
            const double y = b0[i] * x + z0[i];
            z0[i] = b1[i] * x - a1[i] * y + z1[i];
            z1[i] = b2[i] * x - a2[i] * y;
            x = y;
        }
        v = x;
    }
    for (std::size_t i = 0; i < N; ++i) state[i] = {z0[i], z1[i]};
}

// Longer cascades than the designs make (more than 8 sections): the same
// recursion, one section over the whole block after another.
void ProcessSectionBySection(const std::vector<Biquad>& sections, std::vector<std::array<double, 2>>& state,
                             std::span<double> samples) {
    for (std::size_t i = 0; i < sections.size(); ++i) ProcessCascade<1>(&sections[i], &state[i], samples);
}

template <std::size_t... N>
void Dispatch(std::index_sequence<N...>, const std::vector<Biquad>& sections,
              std::vector<std::array<double, 2>>& state, std::span<double> samples) {
    const bool done = ((sections.size() == N + 1 ? (ProcessCascade<N + 1>(sections.data(), state.data(), samples), true)
                                                  : false) ||
                       ...);
    if (!done) ProcessSectionBySection(sections, state, samples);
}

}  // namespace

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
    Dispatch(std::make_index_sequence<8>{}, sections_, state_, samples);
}

}  // namespace vess
