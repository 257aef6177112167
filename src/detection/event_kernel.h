// The shape of a typical event, exp(-t/decay) - exp(-t/rise) from its onset,
// and how it is learned from events the user has accepted: their stretches
// aligned on the onset, averaged and fitted.
#pragma once

#include <cstdint>
#include <vector>

#include "recording/event_table.h"
#include "recording/recording.h"

namespace vess {

struct EventKernel {
    double riseTauMs = 0.5;
    double decayTauMs = 6;
};

// Time from onset to the peak of the kernel, in ms.
double KernelPeakMs(const EventKernel& k);
// The kernel sampled at 0, dt, 2 dt ... for n samples, scaled to a peak of 1.
std::vector<double> KernelSamples(const EventKernel& k, double intervalUs, int64_t n);

struct KernelFit {
    EventKernel kernel;
    double amplitude = 0;   // of the fitted kernel scaled to a peak of 1
    double onsetShiftMs = 0;  // fitted onset after the first point of the average
    int eventsUsed = 0;       // events averaged (LearnKernel)
    bool ok = false;
};
// Least-squares fit of amplitude x kernel (peak 1) shifted by an onset delay
// to an average that begins at (or a little before) the onset, positive in
// the event direction, on a logarithmic grid of the time constants followed
// by a finer grid around the best point. The rise time constant is kept at
// or above minRiseMs.
KernelFit FitKernel(const std::vector<double>& average, double intervalUs, double minRiseMs = 0);

// Averages the stretches of the given events (peak minus rise length is the
// onset; lead points before it) of the chosen channel, signed so that the
// events point upwards, each less its own baseline (mean of the lead points).
std::vector<double> AverageEvents(const Recording& rec, const std::vector<EventRecord>& events,
                                  int64_t leadPoints, int64_t lengthPoints);

// The kernel of the accepted events (group 255, rejected, left out); ok false
// when fewer than three remain or the fit fails.
KernelFit LearnKernel(const Recording& rec, const EventTable& events);

}  // namespace vess
