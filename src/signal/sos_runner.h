// Runs second-order sections over a stream of samples in double precision
// (transposed direct form II), keeping the state between blocks so that a
// stream filtered block by block equals the stream filtered in one go.
#pragma once

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

    // The state between two samples, to take up the stream again from there.
    using State = std::vector<std::array<double, 2>>;
    const State& CurrentState() const { return state_; }
    void RestoreState(const State& state) { state_ = state; }

private:
    std::vector<Biquad> sections_;
    State state_;
};

}  // namespace vess
