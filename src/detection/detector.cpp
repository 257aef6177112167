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
    if (auto len = ConvertPeriods(params, intervalUs)) return *len;
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
    return RoundClamp16(double(sum) / double(n));
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

bool Detector::PassesAmplitudeTests(int16_t value, int16_t baseline) const {
    const int32_t amplitude = std::abs(int32_t(value) - int32_t(baseline));
    const bool reaches = thresholdCounts_ ? amplitude >= *thresholdCounts_
                                          : AmplitudeUnits(amplitude) >= params_.ThresholdAmplitude;
    return reaches && dir_ * int32_t(value) > dir_ * int32_t(baseline);
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

void Detector::WalkExtent(MeasuredEvent& e, int64_t startLimit, int64_t decayLimit) const {
    const int64_t peak = e.peak;
    const double startLevel = 0.01 * e.amplitudeCounts;
    const int64_t startLast = std::max({peak - len_.baseOffset, startLimit, span_.first});
    e.start = startLast > peak - len_.baseOffset ? startLast : peak - len_.baseOffset - 1;
    const double decayLevel = double(params_.DecayPercent) * e.amplitudeCounts;
    int64_t decayLast = std::min<int64_t>(peak + len_.decayLen, decayLimit);
    e.decay = decayLast < peak + len_.decayLen ? decayLast : peak + len_.decayLen + 1;
    // The last mean made of recorded samples. A decay point that would lie
    // after it is cut short there.
    const int64_t lastMean = span_.last - 1;
    if (e.decay > lastMean) {
        decayLast = std::min(decayLast, lastMean);
        e.decay = std::max(lastMean, peak);
    }
    // Event start: back from the peak to the first point within 1 % of the
    // amplitude; the stopping sample is part of the area. excessAt(i) is the
    // sample less the baseline.
    auto walkBack = [&](auto excessAt, auto area) {
        for (int64_t i = peak; i >= startLast; --i) {
            const auto excess = excessAt(i);
            area += excess;
            if (dir_ * excess <= startLevel) {
                e.start = i;
                break;
            }
        }
        return double(area);
    };
    auto walk = [&](auto sampleAt, double area) {
        // Decay point: forwards on three-point means (each term divided on
        // its own) to the first one within DecayPercent of the amplitude.
        // Each sample is divided once; the means add the thirds as mean3 does.
        auto mean3 = [&](int64_t i) {
            return sampleAt(i - 1) / 3.0 + sampleAt(i) / 3.0 + sampleAt(i + 1) / 3.0;
        };
        double before = 0, at = 0;
        if (peak + 1 <= decayLast) {
            before = sampleAt(peak) / 3.0;
            at = sampleAt(peak + 1) / 3.0;
        }
        for (int64_t i = peak + 1; i <= decayLast; ++i) {
            const double after = sampleAt(i + 1) / 3.0;
            const double m = before + at + after;
            before = at;
            at = after;
            area += m - e.baseline;
            if (dir_ * (m - e.baseline) <= decayLevel) {
                e.decay = i;
                break;
            }
        }
        e.decayLevel = RoundClamp16(mean3(std::min(e.decay, lastMean)));
        return area;
    };
    // Without a decay to take off, the samples are read straight from the
    // screen's memory when every one the walks may visit is there.
    const int64_t first = std::min(startLast, std::min(e.decay, lastMean) - 1);
    const int64_t last = std::max(decayLast, e.decay) + 1;
    const int16_t* p = e.under.amplitude == 0 ? screen_.Samples(first, last - first + 1) : nullptr;
    // From memory every excess is a whole count: summed in integers the
    // start walk's area is exact, as its sum of doubles is (far below 2^53),
    // and no step waits on the rounding of the one before.
    const double area =
        p != nullptr
            ? walk([p, first](int64_t i) { return double(p[i - first]); },
                   walkBack([&](int64_t i) { return int32_t(p[i - first]) - e.baseline; }, int64_t(0)))
            : walk([&](int64_t i) { return SampleLess(screen_, e.under, i); },
                   walkBack([&](int64_t i) { return SampleLess(screen_, e.under, i) - e.baseline; }, 0.0));
    // The area as a whole count, converted as the channel converts a level.
    const float areaUnits = screen_.Rec().Bit2pA(RoundClamp32(area));
    e.areaUnitsMs = static_cast<float>(std::abs(double(areaUnits)) *
                                       screen_.Rec().IntervalUs() / 1000.0);
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
