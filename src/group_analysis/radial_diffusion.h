// Transmitter released into tissue around an electrode, diffusing and taken
// up: the concentration in spherical shells around the electrode tip, by a
// finite-volume scheme in the radius (what a random walk of many particles
// converges to), and the fit of release, Vmax and Km to a recorded trace.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "group_analysis/trace_analysis.h"

namespace vess::group {

struct WalkModel {
    double release = 2;        // µM released into the tissue at the stimulus
    double vmax = 3.5;         // µM/s, Michaelis–Menten uptake
    double km = 0.24;          // µM
    double diffusion = 2.7e-6; // cm²/s
    double deadRadius = 4;     // µm around the tip: no release, no uptake
    double totalRadius = 25;   // µm, the simulated volume
    double binSize = 1;        // µm per shell
    bool diffusingEdge = true; // false: the outer boundary holds the molecules
};

// The concentration of each shell (µM), shell i spanning [i, i + 1) bins.
class RadialDiffusion {
public:
    explicit RadialDiffusion(const WalkModel& model);

    // The concentration just after the release: `release` in every shell
    // outside the dead space.
    void Release();
    // Moves time on by `ms`, in steps short enough for the scheme.
    void Advance(double ms);

    std::vector<double>& Concentration() { return c_; }
    double AtElectrode() const { return c_.front(); }

private:
    void Rates(const std::vector<double>& c, std::vector<double>& rate) const;
    void Step(double ms);

    WalkModel model_;
    double diffusionPerMs_;  // D / h² per ms
    std::vector<double> c_, k1_, k2_, trial_;
    std::vector<double> outward_, inward_;  // per shell: area over volume, times 3
    std::size_t firstTissueShell_;
};

// The concentration at the electrode at each sample time, the release at
// the first sample.
std::vector<double> SimulateElectrode(const WalkModel& model, std::size_t samples, double intervalMs);

struct WalkFitOptions {
    int maxIterations = 500;
    double tolerance = 0.001;
    // Asked before each simulation with the number done so far; false ends
    // the fit unfinished (WalkFit::stopped, nothing fitted).
    std::function<bool(int simulations)> keepGoing{};
};

struct WalkFit {
    WalkModel model;         // with the fitted release, Vmax and Km
    double rSquared = kNotMeasured, stdev = kNotMeasured;
    int iterations = 0;
    std::vector<double> simulated;  // over the trace
    bool stopped = false;
};

// Fits release, Vmax and Km (the other values of `start` fixed) to the trace,
// the stimulus at its first sample, by a downhill simplex search restarted
// from its best vertex until a restart no longer improves the fit by more
// than the tolerance.
WalkFit FitWalk(const SampledTrace& trace, const WalkModel& start, const WalkFitOptions& options);

std::vector<double> WalkFitValues(const WalkFit& f);
std::vector<PlotSeries> WalkFitMarkers(const SampledTrace& trace, const WalkFit& f);

}  // namespace vess::group
