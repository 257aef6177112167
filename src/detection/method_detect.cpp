#include "detection/method_detect.h"

#include <algorithm>
#include <cmath>

#include "detection/earlier_decay.h"
#include "detection/point_loops.h"
#include "detection/weak_detections.h"
#include "recording/rounding.h"

namespace vess {
namespace {

// Chosen on simulated events in recorded noise: weak crossings from 0.8 of
// the threshold, kept when the fitted event is 2.2 noise SDs tall.
constexpr double kWeakFraction = 0.8;
constexpr double kWeakAmplitudeSds = 2.2;

// Blocks where the deconvolved trace rises this many noise SDs above its
// centre hold an event (or most of one, for the smaller events just below
// the threshold) and are left out of its baseline: with them in, dense
// events raised the baseline and a small event among them was found only
// once they were gone. Noise alone leaves out a few blocks in a thousand.
constexpr double kLeaveOutSds = 3;

// The weak runs of z whose fitted kernel is tall enough, as indices into z
// (their first point above the lower threshold); z begins at point from.
// strong: the detection points of z, sorted; the fit of a weak run ends at
// the first of them after it.
std::vector<int64_t> ConfirmedWeakPoints(const MethodRun& run, const Recording& rec,
                                         const std::vector<WeakRun>& runs, int64_t from,
                                         const std::vector<int64_t>& strong) {
    std::vector<int64_t> points;
    const EventKernel kernel{run.params.riseTauMs, run.params.decayTauMs};
    const int direction = run.filter.Direction();
    for (const WeakRun& w : runs) {
        const auto next = std::upper_bound(strong.begin(), strong.end(), w.start);
        const int64_t end = next == strong.end() ? INT64_MAX : from + *next;
        const double amplitude = FittedKernelAmplitude(rec, from + w.top, kernel, direction, end);
        if (amplitude >= run.weakAmplitudeSds * run.traceNoiseSd) points.push_back(w.start);
    }
    return points;
}

}  // namespace

MethodRun::MethodRun(const MethodParameters& p, double intervalUs, int direction, NoiseLevel n)
    : params(p), filter(p, intervalUs, direction), noise(n) {
    const double dtMs = intervalUs / 1000.0;
    const bool deconvolution = p.method != DetectionMethod::Template;
    threshold = deconvolution ? p.deconvolutionThreshold : p.templateThreshold;
    minSeparationPoints = std::max<int64_t>(int64_t(std::lround(p.minSeparationMs / dtMs)), 1);
    const EventKernel k{p.riseTauMs, p.decayTauMs};
    if (!deconvolution) {
        // The fitted scale stays significant for a while after an event: the
        // template's criterion gives one event per rise and decay.
        minSeparationPoints = std::max<int64_t>(
            minSeparationPoints, int64_t(std::lround((KernelPeakMs(k) + k.decayTauMs) / dtMs)));
        dipFraction = 0;
    } else {
        weakFraction = kWeakFraction;
        weakAmplitudeSds = kWeakAmplitudeSds;
    }
    // The smoothing moves a crossing up to about two of its SDs before the
    // onset; the peak follows the onset by the kernel's peak time.
    const double peakMs = 3 * KernelPeakMs(k) + (deconvolution ? 2 * p.lowPassMs : 0);
    peakWindowPoints = std::max<int64_t>(int64_t(std::lround(peakMs / dtMs)), 2);
    lookPoints = std::max<int64_t>(int64_t(std::lround((30 + 4 * p.lowPassMs) / dtMs)),
                                   4 * minSeparationPoints);
}

MethodRun PrepareMethodRun(const MethodParameters& params, const Recording& rec, int direction) {
    MethodRun run(params, rec.IntervalUs(), direction, {});
    if (params.method == DetectionMethod::Template) run.noise = {0, 1};
    else {
        // The noise of the criterion with every block counted sets the level
        // above which blocks are left out of its baseline; the noise is then
        // measured again on the criterion so levelled, the one detected on,
        // away from the blocks left out.
        const NoiseLevel all = CriterionNoise(run.filter, rec);
        run.filter.LeaveOutAbove(all.centre + kLeaveOutSds * all.sd);
        run.noise = CriterionNoise(run.filter, rec, NearEvents::NotANumber);
        run.traceNoiseSd = TraceNoiseSd(rec);
    }
    return run;
}

std::vector<int64_t> DetectionPoints(const std::vector<double>& z, double threshold,
                                     int64_t minSeparationPoints, double dipFraction) {
    DetectionScan scan(threshold, minSeparationPoints, dipFraction);
    scan.Scan(z.data(), int64_t(z.size()), int64_t(z.size()));
    return scan.Points();
}

void DetectionScan::Scan(const double* z, int64_t available, int64_t n) {
    const double threshold = threshold_;
    int64_t i = next_;
    // A run that is above the threshold at the first point began before z:
    // its crossing belongs to the stretch before.
    // (Past the first piece, a point above the threshold after one above it
    // is no crossing either.)
    if (begunBefore_) {
        while (i < available && z[i] > threshold) ++i;
        begunBefore_ = false;
    }
    for (; i < available; ++i) {
        // The points up to the next one above the threshold only lower the dip
        // (none when this one is above: inside an event's run, most are).
        if (!(z[i] > threshold)) i = NextAbove(z, i, available, threshold, lastPeak_ >= 0, dip_, dipIndex_);
        // Point i is taken once the one after it is there too.
        if (i == available || (i + 1 == available && available < n)) break;
        const double v = z[i];
        if (lastPeak_ >= 0 && v < dip_) {
            dip_ = v;
            dipIndex_ = i;
        }
        const bool localMax = (i + 1 >= n || v > z[i + 1]) && v >= z[i - 1];
        const bool crossing = !(z[i - 1] > threshold);
        if (lastPeak_ < 0) {
            if (crossing) {
                points_.push_back(i);
                lastPeak_ = i;
                lastPeakValue_ = v;
                dip_ = INFINITY;
            }
            continue;
        }
        if (!localMax) continue;
        const bool clearDip = dip_ < dipFraction_ * std::min(lastPeakValue_, v);
        const bool belowAndApart = dip_ <= threshold && i - lastPeak_ >= minSeparation_;
        if (clearDip || belowAndApart) {
            // The new event begins where the trace left the dip: its
            // crossing when it fell below the threshold, else the dip.
            int64_t onset = dipIndex_;
            if (dip_ <= threshold) {
                // The first point above the threshold after the dip (i when
                // none), a vector at a time: the dip can lie far back.
                double unusedDip = 0;
                int64_t unusedDipIndex = 0;
                onset = NextAbove(z, dipIndex_ + 1, i, threshold, false, unusedDip, unusedDipIndex);
            }
            points_.push_back(onset);
            lastPeak_ = i;
            lastPeakValue_ = v;
            dip_ = INFINITY;
        } else if (v > lastPeakValue_) {
            lastPeak_ = i;
            lastPeakValue_ = v;
            dip_ = INFINITY;
        }
    }
    next_ = i;
}

std::vector<int64_t> FindDetections(const MethodRun& run, const Recording& rec, int64_t first,
                                    int64_t count) {
    const int64_t look = run.lookPoints;
    const int64_t from = first - look;
    // Kept from stretch to stretch on this thread, so that its pages stay in.
    thread_local std::vector<double> z;
    // In noise SDs, which the template's criterion already is; its detection
    // points and weak runs are found as each piece is written, while it is
    // in the cache.
    const bool confirming = run.traceNoiseSd > 0 && run.weakFraction < 1;
    WeakRunScan weakRuns(run.weakFraction * run.threshold, run.threshold);
    DetectionScan detections(run.threshold, run.minSeparationPoints, run.dipFraction);
    const int64_t total = count + 2 * look;
    run.filter.Compute(rec, from, total, z, NearEvents::Criterion, run.noise, [&](int64_t at, int64_t n) {
        detections.Scan(z.data(), at + n, total);
        if (confirming) weakRuns.Scan(z.data(), at, at + n);
    });
    std::vector<int64_t> points = detections.Points();
    const std::vector<int64_t> weak =
        confirming ? ConfirmedWeakPoints(run, rec, weakRuns.Runs(), from, points) : std::vector<int64_t>{};
    if (!weak.empty()) {
        points.insert(points.end(), weak.begin(), weak.end());
        std::sort(points.begin(), points.end());
    }
    std::vector<int64_t> out;
    for (const int64_t p : points) {
        const int64_t at = from + p;
        if (at < first) continue;
        if (at >= first + count) {
            if (at < first + count + run.FollowPoints()) out.push_back(at);
            break;
        }
        out.push_back(at);
    }
    return out;
}

std::optional<MeasuredEvent> MeasureDetection(const Detector& det, const MethodRun& run,
                                              int64_t onset, int64_t limit) {
    if (const std::optional<EarlierDecay> below = FitEarlierDecay(
            det, onset, run.lookPoints, run.params.riseTauMs, run.params.decayTauMs))
        return MeasureOnDecay(det, *below, onset, limit, run.peakWindowPoints);
    const DetectionLengths& len = det.Lengths();
    const int64_t end = std::min(limit, onset + run.peakWindowPoints);
    const PeakPoint peak = det.FindMax(onset, int32_t(std::max<int64_t>(end - onset, 1)));
    MeasuredEvent e;
    const int64_t baseStart = onset - len.baseLen;
    if (baseStart < det.Span().first || peak.index < onset) return std::nullopt;
    e.peak = peak.index;
    e.value = peak.value;
    e.baseline = det.FindBaseline(baseStart, len.baseLen);
    if (!(det.Direction() * int32_t(e.value) > det.Direction() * int32_t(e.baseline)))
        return std::nullopt;
    e.amplitudeCounts = std::abs(int32_t(e.value) - int32_t(e.baseline));
    e.amplitudeUnits = det.AmplitudeUnits(e.amplitudeCounts);
    e.baselineMiddle = baseStart + RoundEven(len.baseLen / 2.0);
    det.WalkExtent(e, baseStart, limit > onset ? limit : std::numeric_limits<int64_t>::max());
    return e;
}

}  // namespace vess
