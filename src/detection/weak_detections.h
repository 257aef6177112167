// Weak detections of the deconvolution detector. A crossing of the deconvolved
// trace that stays below the threshold, but above a fraction of it, is kept
// when the event kernel fitted to the recorded trace there is tall enough in
// noise SDs of the recording. Fast noise reaches the deconvolved trace's
// threshold without the slow decay of an event, and slow fluctuations fit the
// kernel without its sharp rise: a small event needs both.
#pragma once

#include <cstdint>
#include <vector>

#include "detection/event_kernel.h"
#include "recording/recording.h"

namespace vess {

struct WeakRun {
    int64_t start = 0;  // first index above the lower threshold
    int64_t top = 0;    // highest index of the run
};

// Runs of z above low whose highest value stays below high, each begun inside
// z (a run above low at the first index began before it) and ended inside it.
std::vector<WeakRun> WeakRuns(const std::vector<double>& z, double low, double high);

// The same found piece by piece, while each piece of z is still in the cache:
// Scan(z, from, to) takes indices from .. to - 1 (the pieces in order, from
// index 0 on); Runs() gives the runs ended so far.
class WeakRunScan {
public:
    WeakRunScan(double low, double high) : low_(low), high_(high) {}
    void Scan(const double* z, int64_t from, int64_t to);
    const std::vector<WeakRun>& Runs() const { return runs_; }

private:
    double low_, high_;
    bool begunBefore_ = true;  // in the run above low that began before z
    bool inRun_ = false;
    WeakRun run_;
    double topValue_ = 0;
    std::vector<WeakRun> runs_;
};

// Amplitude (in counts, positive in the event direction) of the kernel fitted
// with an offset by least squares to the recorded trace from 3 ms before to
// four decay time constants after its peak, with the onset tried around
// centre; the onset whose amplitude is largest against its standard error wins.
// The fit stops before point end (the onset of a following event, which would
// pull the fitted offset towards its own level and the amplitude down), but
// always takes in the kernel's peak; onsets whose window would end before that
// are not tried.
double FittedKernelAmplitude(const Recording& rec, int64_t centre, const EventKernel& kernel,
                             int direction, int64_t end = INT64_MAX);

// Robust SD (counts) of the recorded trace less its running mean over 50 ms,
// over the whole channel up to two minutes, else over 40 stretches of 3 s.
double TraceNoiseSd(const Recording& rec);

}  // namespace vess
