// The start and decay walks of a candidate and its area.
//
// The walks read each sample through the screen and add the area as doubles,
// the decay part on three-point means made of thirds. When no decay is taken
// off and every sample the walks may visit is in the screen's memory, they
// are run on whole numbers instead, with the same stopping points and the
// same area to the whole count; the reasons are given where each is used.
#include <algorithm>
#include <cmath>
#include <limits>

#include "detection/detector.h"
#include "recording/rounding.h"

namespace vess {
namespace {

// The memory walks are exact for at most this many steps in all.
constexpr int64_t kExactWalkSteps = int64_t(1) << 16;

int64_t FloorDiv(int64_t a, int64_t b) { return a >= 0 ? a / b : -((-a + b - 1) / b); }

// The nearest whole number to n / 3: never a tie.
int64_t NearestThird(int64_t n) { return FloorDiv(n + 1, 3); }

int32_t Clamp32(int64_t v) {
    return int32_t(std::clamp<int64_t>(v, std::numeric_limits<int32_t>::min(), std::numeric_limits<int32_t>::max()));
}

// The decay walk stops at the first point where direction x (m - baseline)
// is at most the level, m the mean s1/3 + s2/3 + s3/3 of three samples, each
// third and each sum rounded to a double. With x3 = direction x (s1 + s2 + s3
// - 3 x baseline), a whole number, the exact mean is x3 / 3 beyond the
// baseline. The rounded one differs from it by less than 2^-35: each third is
// below 2^14 and rounds by at most 2^-40, the two sums below 2^15 by at most
// 2^-38 each, the difference from the baseline below 2^16 by at most 2^-37.
// So the walk certainly stops when x3 <= sure and certainly goes on when
// x3 >= never, these being 3 x level less and more a margin of 2^-20, far
// more than that error and than the rounding of 3 x level (which is kept
// within 2^20, beyond which every x3, at most 3 x 2^16, is on one side).
// Only a point between the two needs the mean in doubles.
class DecayStopTest {
public:
    explicit DecayStopTest(double level) {
        constexpr double kMargin = 1.0 / (1 << 20), kWithin = 1 << 20;
        constexpr int64_t kLow = std::numeric_limits<int64_t>::min(), kHigh = std::numeric_limits<int64_t>::max();
        const double three = 3 * level;
        if (std::isnan(three) || three < -kWithin) {
            sure_ = never_ = kLow;  // no point stops the walk (a comparison with NaN is false)
        } else if (three > kWithin) {
            sure_ = never_ = kHigh;  // every point stops it
        } else {
            sure_ = int64_t(std::floor(three - kMargin));
            never_ = int64_t(std::ceil(three + kMargin));
        }
    }
    // meanBeyond() gives direction x (m - baseline) in doubles, as the walk
    // forms it.
    template <typename MeanBeyond>
    bool Stops(int64_t x3, double level, MeanBeyond meanBeyond) const {
        if (x3 <= sure_) return true;
        if (x3 >= never_) return false;
        return meanBeyond() <= level;
    }

private:
    int64_t sure_ = 0, never_ = 0;
};

}  // namespace

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
    // Without a decay to take off, the samples are read straight from the
    // screen's memory when every one the walks may visit is there.
    const int64_t first = std::min(startLast, std::min(e.decay, lastMean) - 1);
    const int64_t last = std::max(decayLast, e.decay) + 1;
    const int16_t* p = e.under.amplitude == 0 && int64_t(len_.baseOffset) + len_.decayLen + 2 <= kExactWalkSteps
                           ? screen_.Samples(first, last - first + 1)
                           : nullptr;
    // Event start: back from the peak to the first point within 1 % of the
    // amplitude; the stopping sample is part of the area, the sum of the
    // excesses walked. excessAt(i) is the sample less the baseline.
    const auto walkBack = [&](auto excessAt, auto area) {
        for (int64_t i = peak; i >= startLast; --i) {
            const auto excess = excessAt(i);
            area += excess;
            if (dir_ * excess <= startLevel) {
                e.start = i;
                break;
            }
        }
        return area;
    };
    int32_t areaCounts = 0;
    if (p != nullptr) {
        auto sampleAt = [p, first](int64_t i) { return int32_t(p[i - first]); };
        // Every excess is a whole count, so the start walk's sum is exact.
        int64_t area = walkBack([&](int64_t i) { return sampleAt(i) - e.baseline; }, int64_t(0));
        // Decay point: forwards to the first three-point mean within
        // DecayPercent of the amplitude, on three times the excess of each
        // mean (see DecayStopTest). The area is kept in thirds of a count,
        // exactly. The general walk adds the same terms as doubles; over at
        // most 2^16 steps of at most 2^16 counts its sum stays below 2^32,
        // each addition rounds by at most 2^-21 and each mean is within 2^-35
        // of its exact value, so it is within 2^-4 of the exact sum. That is
        // a whole number of thirds, at least a sixth from any half: both
        // round to the same whole count.
        area *= 3;
        if (peak + 1 <= decayLast) {
            const DecayStopTest stopTest(decayLevel);
            int32_t before = sampleAt(peak), at = sampleAt(peak + 1);
            for (int64_t i = peak + 1; i <= decayLast; ++i) {
                const int32_t after = sampleAt(i + 1);
                const int32_t x3 = before + at + after - 3 * int32_t(e.baseline);
                area += x3;
                if (stopTest.Stops(dir_ * x3, decayLevel, [&] {
                        return dir_ * ((before / 3.0 + at / 3.0 + after / 3.0) - e.baseline);
                    })) {
                    e.decay = i;
                    break;
                }
                before = at;
                at = after;
            }
        }
        const int64_t d = std::min(e.decay, lastMean);
        e.decayLevel = RoundClamp16(sampleAt(d - 1) / 3.0 + sampleAt(d) / 3.0 + sampleAt(d + 1) / 3.0);
        areaCounts = Clamp32(NearestThird(area));
    } else {
        auto sampleAt = [&](int64_t i) { return SampleLess(screen_, e.under, i); };
        double area = walkBack([&](int64_t i) { return sampleAt(i) - e.baseline; }, 0.0);
        // Each sample is divided once; the means add the thirds in order.
        auto mean3 = [&](int64_t i) { return sampleAt(i - 1) / 3.0 + sampleAt(i) / 3.0 + sampleAt(i + 1) / 3.0; };
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
        areaCounts = RoundClamp32(area);
    }
    // The area as a whole count, converted as the channel converts a level.
    const float areaUnits = screen_.Rec().Bit2pA(areaCounts);
    e.areaUnitsMs = static_cast<float>(std::abs(double(areaUnits)) * screen_.Rec().IntervalUs() / 1000.0);
}

}  // namespace vess
