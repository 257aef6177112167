// A synthetic ECG beat built from pieces whose boundaries are known exactly:
// half-sine P and T waves and a QRS of straight strokes through Q, R and S,
// on an offset baseline (mV, times in ms from the beat's start).
#pragma once

#include <cmath>
#include <numbers>
#include <utility>
#include <vector>

namespace vess::test {

struct EcgBeatShape {
    double base = 0.05;
    double pOn = 201, pOff = 291, pAmp = 0.15;
    double qrsOn = 361, qTime = 376, qAmp = -0.1, rTime = 401, rAmp = 1.2, sTime = 421, sAmp = -0.3, qrsOff = 441;
    double tOn = 521, tOff = 681, tAmp = 0.3;

    static double HalfSine(double x, double on, double off, double amp) {
        return x > on && x < off ? amp * std::sin(std::numbers::pi * (x - on) / (off - on)) : 0;
    }
    // The QRS strokes alone; a Q or S of zero amplitude is left out.
    double Qrs(double x) const {
        std::vector<std::pair<double, double>> c{{qrsOn, 0}};
        if (qAmp != 0) c.push_back({qTime, qAmp});
        c.push_back({rTime, rAmp});
        if (sAmp != 0) c.push_back({sTime, sAmp});
        c.push_back({qrsOff, 0});
        for (std::size_t k = 0; k + 1 < c.size(); ++k)
            if (x >= c[k].first && x <= c[k + 1].first)
                return c[k].second + (c[k + 1].second - c[k].second) * (x - c[k].first) / (c[k + 1].first - c[k].first);
        return 0;
    }
    double At(double x) const { return base + HalfSine(x, pOn, pOff, pAmp) + Qrs(x) + HalfSine(x, tOn, tOff, tAmp); }
};

}  // namespace vess::test
