#include "signal/sos_runner.h"

namespace vess {

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
    for (std::size_t i = 0; i < sections_.size(); ++i) {
        const auto [b0, b1, b2, a0, a1, a2] = sections_[i];
        (void)a0;
        double z0 = state_[i][0], z1 = state_[i][1];
        for (double& v : samples) {
            const double x = v;
            const double y = b0 * x + z0;
            z0 = b1 * x - a1 * y + z1;
            z1 = b2 * x - a2 * y;
            v = y;
        }
        state_[i] = {z0, z1};
    }
}

}  // namespace vess
