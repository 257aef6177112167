#include "detection/detector.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "detection/count_threshold.h"
#include "detection/measurements.h"
#include "detection/sample_search.h"
#include "detection/texts.h"
#include "recording/rounding.h"

namespace vess {
namespace {

// A chain of earlier peaks is followed at most this far back; each move needs
// a separate event that passes every test, so real traces stop long before.
constexpr int kMaxPrepeakMoves = 8;
// An earlier peak must fall back by this fraction of its own amplitude before
// the candidate rises.
constexpr double kPrepeakFallFraction = 0.3;

// The mean of n samples summing to sum, rounded half to even as RoundClamp16
// rounds it. The mean lies within the 16-bit range, below 2^51 in size, where
// adding and taking off 1.5 x 2^52 leaves the nearest whole number, ties to
// even (the default rounding), without a call to nearbyint.
int16_t MeanOfSamples(int64_t sum, int32_t n) {
    constexpr double kShift = 6755399441055744.0;  // 1.5 x 2^52
    return static_cast<int16_t>((double(sum) / double(n) + kShift) - kShift);
}

}  // namespace

std::optional<DetectionLengths> ConvertPeriods(const AnalysisParameters& params,
                                               double intervalUs) {
    if (!(intervalUs > 0)) return std::nullopt;
    const double search = params.PeriodToSearchMax / intervalUs;
    const double baseOffset = params.PeriodStartBaseline / intervalUs;
    const double baseLen = params.PeriodBaselineAverage / intervalUs;
    const double decay = params.PeriodFindDecayTime / intervalUs;
    // The test is made on the unrounded quotients: 0.6 samples is refused even
    // though it would round to 1.
    if (baseOffset < 1 || baseLen < 1 || decay < 1 || search < 1) return std::nullopt;
    return DetectionLengths{.searchLen = RoundClamp32(search),
                            .baseOffset = RoundClamp32(baseOffset),
                            .baseLen = RoundClamp32(baseLen),
                            .decayLen = RoundClamp32(decay),
                            .halfPeak = std::max<int32_t>(params.NumberPointsPeak, 1) / 2};
}

Outcome<DetectionLengths> CheckedPeriods(const AnalysisParameters& params, double intervalUs) {
    // Asked for every screen of a run with the same periods: the last
    // answer of this thread is kept with what it depends on.
    struct Asked {
        int32_t search, baseOffset, baseLen, decay;
        int16_t pointsPeak;
        double intervalUs;
        bool operator==(const Asked&) const = default;
    };
    thread_local std::optional<Asked> lastAsked;
    thread_local std::optional<DetectionLengths> lastAnswer;
    const Asked asked{params.PeriodToSearchMax, params.PeriodStartBaseline, params.PeriodBaselineAverage,
                      params.PeriodFindDecayTime, params.NumberPointsPeak, intervalUs};
    if (lastAsked != asked) {
        lastAnswer = ConvertPeriods(params, intervalUs);
        lastAsked = asked;
    }
    if (lastAnswer) return *lastAnswer;
    return CommandResult::Failed(detection_texts::kImproperParametersCaption,
                                 detection_texts::kImproperParametersText);
}

Outcome<DetectionLengths> CheckedPeriods(const Workspace& ws) {
    return CheckedPeriods(ws.params(), ws.recording->IntervalUs());
}

int16_t NormalizedDirection(int16_t peakDirection) { return peakDirection > 0 ? 1 : -1; }

Detector::Detector(const Screen& screen, const AnalysisParameters& params,
                   const DetectionLengths& lengths)
    : screen_(screen),
      params_(params),
      len_(lengths),
      dir_(NormalizedDirection(params.PeakDirection)),
      // A stored 0 (or less) would divide by zero; it is read as 1.
      pointsPeak_(std::max<int32_t>(params.NumberPointsPeak, 1)),
      span_(RecordedSpan(screen)),
      thresholdCounts_(LeastCountsReaching(screen.Rec(), params.ThresholdAmplitude)) {}

int16_t Detector::GetAverageValue(int64_t i) const {
    const int32_t h = len_.halfPeak;
    int64_t sum = 0;
    if (const int16_t* p = screen_.Samples(i - h, 2 * int64_t(h) + 1)) {
        for (int32_t k = 0; k <= 2 * h; ++k) sum += p[k];
    } else {
        for (int64_t j = i - h; j <= i + h; ++j) sum += screen_.GetSampleValue(j);
    }
    return RoundClamp16(double(sum) / double(pointsPeak_));
}

int16_t Detector::FindBaseline(int64_t start, int32_t n) const {
    if (n < 1) return screen_.GetSampleValue(start);
    int64_t sum = 0;
    if (const int16_t* p = screen_.Samples(start, n)) {
        sum = SumOf(p, n);
    } else {
        for (int64_t j = start; j < start + n; ++j) sum += screen_.GetSampleValue(j);
    }
    return MeanOfSamples(sum, n);
}

PeakPoint Detector::FindMax(int64_t start, int32_t n) const {
    // The range is cut to the points that can be peaks; the first point left
    // is the initial best, so an empty range still answers one.
    const int64_t lowest = span_.first + PeakMargin(), highest = LastPeakIndex();
    const int64_t end = std::min<int64_t>(start + std::max<int32_t>(n, 1) - 1, highest);
    start = std::max(start, lowest);
    if (start > end) start = std::max(std::min(start, highest), lowest);
    n = int32_t(std::max<int64_t>(end - start + 1, 1));
    const int32_t h = len_.halfPeak;
    const int16_t* p = screen_.Samples(start - h, int64_t(n) + 2 * h);
    if (p != nullptr && pointsPeak_ == 1 && h == 0) {
        // Hot path: the smoothed value is the sample itself.
        const FirstExtreme best = FirstExtremeOf(p, n, dir_ > 0);
        return {start + best.offset, best.value};
    }
    if (p != nullptr) {
        // Running sum over the 2h+1 points; the same integer sums as
        // GetAverageValue, so the same rounded values.
        int64_t sum = 0;
        for (int32_t k = 0; k <= 2 * h; ++k) sum += p[k];
        PeakPoint best{start, RoundClamp16(double(sum) / pointsPeak_)};
        for (int32_t i = 1; i < n; ++i) {
            sum += p[i + 2 * h] - p[i - 1];
            const int16_t v = RoundClamp16(double(sum) / pointsPeak_);
            if (dir_ * v > dir_ * best.value) best = {start + i, v};
        }
        return best;
    }
    PeakPoint best{start, GetAverageValue(start)};
    for (int64_t i = start + 1; i < start + n; ++i) {
        const int16_t v = GetAverageValue(i);
        if (dir_ * v > dir_ * best.value) best = {i, v};
    }
    return best;
}

Detector::Trough Detector::FirstOf(int64_t first, int64_t last, bool greatest) const {
    if (const int16_t* p = screen_.Samples(first, last - first + 1); p != nullptr && last >= first) {
        const FirstExtreme e = FirstExtremeOf(p, int32_t(last - first + 1), greatest);
        return {first + e.offset, e.value};
    }
    Trough t{first, screen_.GetSampleValue(first)};
    for (int64_t i = first + 1; i <= last; ++i) {
        const int16_t v = screen_.GetSampleValue(i);
        if (greatest ? v > t.value : v < t.value) t = {i, v};
    }
    return t;
}

bool Detector::ReachesThreshold(double counts) const {
    return AmplitudeUnits(RoundClamp32(counts)) >= params_.ThresholdAmplitude;
}

float Detector::AmplitudeUnits(int32_t counts) const {
    // An amplitude is a difference of two levels: the offset of the channel
    // cancels, so it is converted without it. With the offset the threshold
    // would be compared against a shifted value on any channel whose offset is
    // not zero.
    return screen_.Rec().Bit2pA2(counts);
}

// Earlier-peak search. The BaseOffset samples before the candidate are split
// into three parts (part 1 nearest the peak); the least extreme raw sample of
// each part is its trough. Between the farthest trough (part 3) and the
// nearest one (part 1) the most extreme raw sample is the earlier peak E. It is
// a separate event when
//  - it is less extreme than the candidate's own value (a larger earlier
//    peak belongs to an earlier search range and was judged there);
//  - it passes the candidate tests against its own baseline (BaseLen samples
//    from BaseOffset before it): amplitude at least the threshold and beyond
//    the baseline in the event direction;
//  - the trace falls back after it before rising to the candidate: with D
//    the least extreme sample between E and the candidate, the fall from E
//    to D, both taken as three-point means, is at least 0.05 of the
//    candidate's amplitude and at least the threshold amplitude. Noise riding
//    on a rise makes dips of a few samples; a fall as large as the smallest
//    event the user accepts is one that noise rarely makes, and means over
//    three points keep single noisy samples from making it;
//  - it falls back by at least 0.3 of its own amplitude, and its own area
//    (start and decay walks as for a candidate) passes the area threshold:
//    an earlier peak that would be rejected must not take the candidate's
//    place, since the candidate would then be lost with it.
int64_t Detector::DetectPrepeak(int64_t peak, int16_t value) const {
    return EarlierPeak(peak, value, floor_ + 1);
}

int64_t Detector::EarlierPeak(int64_t peak, int16_t value, int64_t lowest) const {
    const int32_t bo = len_.baseOffset;
    if (bo < 3) return peak;
    const double third = bo / 3.0;
    const int64_t part1Start = peak - RoundEven(third);
    const int64_t part2Start = peak - RoundEven(2 * third);
    const int64_t part3Start = peak - bo;
    const Trough nearest = LeastExtreme(part1Start, peak);
    const Trough farthest = LeastExtreme(part3Start, part2Start - 1);
    const int64_t first = std::max(farthest.index + 1, lowest);
    const int64_t last = nearest.index - 1;
    if (first > last) return peak;
    const Trough earlier = MostExtreme(first, last);
    // The most extreme sample at the very start of the range is no peak: the
    // trace only falls from there (typically the flank of a stored event just
    // before the floor, which would otherwise be found again a sample later).
    if (earlier.index == first) return peak;
    if (dir_ * earlier.value >= dir_ * value) return peak;
    if (earlier.index - bo < span_.first) return peak;  // its baseline is not recorded
    const int16_t ownBaseline = FindBaseline(earlier.index - bo, len_.baseLen);
    if (!PassesAmplitudeTests(earlier.value, ownBaseline)) return peak;
    if (earlier.index + 1 > peak - 1) return peak;
    const Trough dip = LeastExtreme(earlier.index + 1, peak - 1);
    // The fall is judged on three-point means around the earlier peak and the
    // dip, so that single noisy samples do not make it.
    auto mean3 = [&](int64_t i) {
        return (double(screen_.GetSampleValue(i - 1)) + screen_.GetSampleValue(i) +
                screen_.GetSampleValue(i + 1)) / 3.0;
    };
    const double fallCounts = dir_ * (mean3(earlier.index) - mean3(dip.index));
    const int16_t baseline = FindBaseline(peak - bo, len_.baseLen);
    const int32_t amplitude = std::abs(int32_t(value) - int32_t(baseline));
    if (fallCounts < 0.05 * amplitude) return peak;
    if (!ReachesThreshold(fallCounts)) return peak;
    const int32_t ownAmplitude = std::abs(int32_t(earlier.value) - int32_t(ownBaseline));
    if (fallCounts < kPrepeakFallFraction * ownAmplitude) return peak;
    // And the area test of a candidate.
    MeasuredEvent own;
    own.peak = earlier.index;
    own.baseline = ownBaseline;
    own.amplitudeCounts = ownAmplitude;
    WalkExtent(own);
    if (!(own.areaUnitsMs >= params_.AreaThreshold)) return peak;
    return earlier.index;
}

std::optional<MeasuredEvent> Detector::Measure(PeakPoint candidate, bool boundRecentring) const {
    int64_t peak = candidate.index;
    int16_t value = candidate.value;
    int recentred = 0;
    int prepeakMoves = 0;
    for (;;) {
        MeasuredEvent e;
        const int64_t baseStart = peak - len_.baseOffset;
        if (baseStart < span_.first) return std::nullopt;  // no recorded baseline
        e.baseline = FindBaseline(baseStart, len_.baseLen);
        e.amplitudeCounts = std::abs(int32_t(value) - int32_t(e.baseline));
        if (!PassesAmplitudeTests(value, e.baseline)) return std::nullopt;

        // A candidate whose earlier peak is the event stored from the end of
        // the previous screen is that screen's last search range examined a
        // second time: it gave that event there.
        if (carriedFloor_ && peak - len_.baseOffset <= *carriedFloor_ &&
            EarlierPeak(peak, value, std::numeric_limits<int64_t>::min() / 2) <= *carriedFloor_)
            return std::nullopt;
        if (prepeakMoves < kMaxPrepeakMoves) {
            const int64_t earlier = DetectPrepeak(peak, value);
            if (earlier < peak) {
                peak = earlier;
                value = screen_.GetSampleValue(earlier);  // a raw sample, not smoothed
                ++prepeakMoves;
                continue;
            }
        }
        e.peak = peak;
        e.value = value;
        e.baselineMiddle = baseStart + RoundEven(len_.baseLen / 2.0);

        WalkExtent(e);
        if (!(e.areaUnitsMs >= params_.AreaThreshold)) return std::nullopt;

        // Re-centring, at most once: half a search range centred on the peak.
        int64_t from = RoundEven(peak - len_.searchLen / 4.0);
        int64_t count = RoundEven(len_.searchLen / 2.0);
        if (boundRecentring && from <= floor_) {
            count -= floor_ + 1 - from;
            from = floor_ + 1;
        }
        const PeakPoint again = FindMax(from, int32_t(std::max<int64_t>(count, 1)));
        ++recentred;
        if (again.index != peak && recentred == 1) {
            peak = again.index;
            value = again.value;
            continue;
        }
        // Converted once, for the candidate that is kept.
        e.amplitudeUnits = AmplitudeUnits(e.amplitudeCounts);
        return e;
    }
}

EventRecord Detector::MakeRecord(const MeasuredEvent& e) const {
    EventShape shape;
    shape.peak = e.peak;
    shape.value = e.value;
    shape.baseline = e.baseline;
    shape.start = e.start;
    shape.amplitudeCounts = e.amplitudeCounts;
    shape.direction = dir_;
    shape.decayLimit = HalfWidthReach(screen_, e.peak);
    shape.under = e.under;

    EventRecord r;
    r.time = screen_.CalculateTime(e.peak);
    r.amplitude = e.amplitudeCounts;
    r.noise = Clamp16(std::llround(SampleLess(screen_, e.under, e.baselineMiddle)) - e.baseline);
    r.riseTime = Clamp16(e.peak - e.start);
    r.decayTime = Clamp16(e.decay - e.peak);
    r.baseline = e.baseline;
    r.area = e.areaUnitsMs;
    r.channel = screen_.Rec().Channel();
    r.group = 0;
    r.baseOffset = Clamp16(len_.baseOffset);
    r.rise1090 = Detect1090Rise(screen_, shape);
    r.slope1090 = Slope1090(dir_, e.amplitudeUnits, r.rise1090);
    r.rise50 = Detect50RiseTime(screen_, shape);
    r.halfWidth = DetectHalfWidth(screen_, shape, r.rise50);
    r.peakDirection = dir_;
    r.relativeTime = static_cast<int32_t>(e.peak);
    r.sampleIndex = static_cast<int32_t>(screen_.AbsoluteIndex(e.peak));
    return r;
}

}  // namespace vess
