// Runs second-order sections over a stream of samples in double precision
// (transposed direct form II), keeping the state between blocks so that a
// stream filtered block by block equals the stream filtered in one go.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "signal/filter_design.h"

namespace vess {

class SosRunner {
public:
    explicit SosRunner(std::vector<Biquad> sections);
    // Sets the state that a constant input at this level would have reached:
    // the stream behaves as if it had held that level forever before, so a
    // DC offset at the start gives no transient.
    void SettleAt(double level);
    // Filters in place, carrying the state on.
    void Process(std::span<double> samples);
    // The same, each output also rounded to its count (ties to even, clamped
    // to 16 bits) into counts, which holds as many values as samples.
    void Process(std::span<double> samples, std::span<int16_t> counts);

    // The state between two samples, to take up the stream again from there.
    using State = std::vector<std::array<double, 2>>;
    const State& CurrentState() const { return state_; }
    void RestoreState(const State& state) { state_ = state; }

private:
    friend void ProcessSideBySide(SosRunner& a, std::span<double> aSamples, SosRunner& b,
                                  std::span<double> bSamples, std::span<int16_t> bCounts);
    std::vector<Biquad> sections_;
    State state_;
};

// a.Process(aSamples) and b.Process(bSamples, bCounts), the same to the bit,
// in one loop over both when the two run the same sections (two independent
// recursions take little longer than one).
void ProcessSideBySide(SosRunner& a, std::span<double> aSamples, SosRunner& b, std::span<double> bSamples,
                       std::span<int16_t> bCounts);

}  // namespace vess
