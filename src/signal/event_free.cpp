#include "signal/event_free.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <numeric>
#include <vector>

#include "recording/rounding.h"

namespace vess {

namespace {

double WindowMean(const SampleReader& read, int64_t first, std::vector<int16_t>& window) {
    read(first, window);
    return std::accumulate(window.begin(), window.end(), 0.0) / double(window.size());
}

}  // namespace

namespace {

bool CanFollow(const EventRecord& event, const DecayTail& tail) {
    return tail.read && tail.noiseCounts > 0 && event.decayTime > 0 && tail.windowPoints >= 1;
}

// The most points a walk from an event's start or decay point may go.
int64_t ReachLimit(const EventRecord& event, const DecayTail& tail) {
    return std::max(kMaxTailDecays * event.decayTime, kLeastReachWindows * tail.windowPoints);
}

}  // namespace

int64_t DecayEndPoints(const EventRecord& event, const DecayTail& tail) {
    const int64_t decay = event.decayTime;
    const int64_t peak = event.sampleIndex;
    const int64_t start = peak - event.riseTime;
    if (!CanFollow(event, tail) || start - tail.windowPoints < 0) return decay;
    std::vector<int16_t> window(std::size_t(tail.windowPoints));
    const double level = WindowMean(tail.read, start - tail.windowPoints, window);
    const double direction = event.peakDirection > 0 ? 1.0 : -1.0;
    const int64_t last = std::min(peak + decay + ReachLimit(event, tail), tail.points);
    int64_t at = peak + decay;
    while (at + tail.windowPoints <= last &&
           direction * (WindowMean(tail.read, at, window) - level) >= tail.noiseCounts)
        at += tail.windowPoints;
    return std::max(std::min(at, last) - peak, decay);
}

int64_t OnsetPoints(const EventRecord& event, const DecayTail& tail) {
    const int64_t peak = event.sampleIndex;
    const int64_t rise = std::max<int64_t>(event.riseTime, 0);
    if (!CanFollow(event, tail)) return rise;
    std::vector<int16_t> window(std::size_t(tail.windowPoints));
    const double direction = event.peakDirection > 0 ? 1.0 : -1.0;
    const int64_t lowest = std::max<int64_t>(peak - rise - ReachLimit(event, tail), 0);
    int64_t at = peak - rise;
    while (at - tail.windowPoints >= lowest &&
           direction * (WindowMean(tail.read, at - tail.windowPoints, window) - event.baseline) <
               -tail.noiseCounts)
        at -= tail.windowPoints;
    return peak - at;
}

std::vector<PointStretch> EventStretches(const EventTable& events, int64_t marginPoints, int64_t points,
                                         const DecayTail& tail) {
    std::vector<PointStretch> all;
    if (points <= 0) return all;
    for (const EventRecord& r : events.Records()) {
        const int64_t first = int64_t(r.sampleIndex) - OnsetPoints(r, tail) - marginPoints;
        const int64_t last = int64_t(r.sampleIndex) + DecayEndPoints(r, tail) + marginPoints;
        if (last < 0 || first >= points) continue;
        all.push_back({std::max<int64_t>(first, 0), std::min<int64_t>(last, points - 1)});
    }
    std::sort(all.begin(), all.end(), [](const PointStretch& a, const PointStretch& b) {
        return a.first < b.first;
    });
    std::vector<PointStretch> merged;
    for (const PointStretch& s : all) {
        if (!merged.empty() && s.first <= merged.back().last + 1)
            merged.back().last = std::max(merged.back().last, s.last);
        else
            merged.push_back(s);
    }
    return merged;
}

namespace {

// What a donor lends: its samples less their running mean over 2 h + 1
// samples, the window cut symmetrically near the ends (h = halfWindow, less
// where fewer samples lie on one side), so that the noise dies down to
// nothing at the joins while a drift or a slow swing is not copied; samples
// further than kDonorClipSds noise SDs from that mean set to it (a stimulus
// artefact or an event left in the donor is not pasted in); and the level at
// its first and last sample, where the least-squares line of the nearest
// levelPoints samples meets the stretch.
struct Donor {
    std::vector<double> noise;
    double firstLevel = 0, lastLevel = 0;
};

// The least-squares line of v, evaluated at index at.
double LineAt(std::span<const int16_t> v, double at) {
    const double n = double(v.size()), centre = (n - 1) / 2;
    double sum = 0, slopeSum = 0, squares = 0;
    for (std::size_t i = 0; i < v.size(); ++i) {
        sum += v[i];
        slopeSum += (double(i) - centre) * v[i];
        squares += (double(i) - centre) * (double(i) - centre);
    }
    return sum / n + (squares > 0 ? slopeSum / squares : 0.0) * (at - centre);
}

Donor LendNoise(std::span<const int16_t> v, double noiseCounts, int64_t halfWindow, int64_t levelPoints) {
    Donor d;
    const int64_t n = int64_t(v.size());
    if (n == 0) return d;
    const int64_t k = std::clamp<int64_t>(levelPoints, 1, n);
    d.firstLevel = LineAt(v.first(std::size_t(k)), 0);
    d.lastLevel = LineAt(v.last(std::size_t(k)), double(k - 1));
    std::vector<double> prefix(std::size_t(n + 1), 0.0);
    for (int64_t i = 0; i < n; ++i) prefix[std::size_t(i + 1)] = prefix[std::size_t(i)] + v[std::size_t(i)];
    const double limit = kDonorClipSds * noiseCounts;
    d.noise.resize(std::size_t(n));
    for (int64_t i = 0; i < n; ++i) {
        const int64_t h = std::min({halfWindow, i, n - 1 - i});
        const double mean = (prefix[std::size_t(i + h + 1)] - prefix[std::size_t(i - h)]) / double(2 * h + 1);
        const double noise = double(v[std::size_t(i)]) - mean;
        d.noise[std::size_t(i)] = limit > 0 && std::abs(noise) > limit ? 0.0 : noise;
    }
    return d;
}

// The output so far, the newest samples kept up to a limit.
class History {
public:
    explicit History(int64_t limit) : limit_(std::size_t(std::max<int64_t>(limit, 1))) {}
    void Add(std::span<const int16_t> samples) {
        kept_.insert(kept_.end(), samples.begin(), samples.end());
        if (kept_.size() > 2 * limit_) kept_.erase(kept_.begin(), kept_.end() - std::ptrdiff_t(limit_));
    }
    // The newest n samples (fewer when fewer are kept).
    std::span<const int16_t> Tail(int64_t n) const {
        const std::size_t k = std::min(kept_.size(), std::size_t(std::max<int64_t>(n, 0)));
        return std::span<const int16_t>(kept_).last(k);
    }

private:
    std::size_t limit_;
    std::vector<int16_t> kept_;
};

// The noise at point i of a stretch of length points: the donors before and
// after it mirrored at the joins, so that the noise goes on across each join
// as it was, faded from the one into the other with weights whose squares add
// to one (the noise keeps its size). A missing donor leaves the other alone.
double JoinedNoise(const std::vector<double>& before, const std::vector<double>& after, int64_t i,
                   int64_t length, double fraction) {
    const double fromBefore = before.empty() ? 0.0 : before[before.size() - 1 - std::size_t(i) % before.size()];
    const double fromAfter = after.empty() ? 0.0 : after[std::size_t(length - 1 - i) % after.size()];
    if (after.empty()) return fromBefore;
    if (before.empty()) return fromAfter;
    const double angle = fraction * std::numbers::pi / 2;
    return std::cos(angle) * fromBefore + std::sin(angle) * fromAfter;
}

class Replacer {
public:
    Replacer(int64_t points, const SampleReader& read, const SampleSink& sink,
             const EventFreeOptions& options)
        : points_(points), read_(read), sink_(sink), options_(options), history_(options.historyPoints) {}

    // Source samples from the current position up to (not including) end.
    bool CopyUntil(int64_t end) {
        std::vector<int16_t> buffer;
        while (position_ < end) {
            buffer.resize(std::size_t(std::min(options_.chunkPoints, end - position_)));
            read_(position_, buffer);
            if (!Emit(buffer)) return false;
        }
        return true;
    }

    // nextFirst: where the next stretch begins (or the end of the source);
    // the trace after this stretch lends noise only up to there.
    bool Replace(const PointStretch& s, int64_t nextFirst) {
        const int64_t length = s.last - s.first + 1;
        const int64_t half = options_.trendHalfPoints, level = options_.levelPoints;
        const auto kept = history_.Tail(length);
        const Donor before = LendNoise(kept, options_.noiseCounts, half, level);
        std::vector<int16_t> lender(std::size_t(std::clamp<int64_t>(nextFirst - 1 - s.last, 0, length)));
        if (!lender.empty()) read_(s.last + 1, lender);
        const Donor after = LendNoise(lender, options_.noiseCounts, half, level);
        double levelBefore = before.lastLevel, levelAfter = after.firstLevel;
        if (kept.empty()) levelBefore = levelAfter;
        if (lender.empty()) levelAfter = levelBefore;
        std::vector<int16_t> out(static_cast<std::size_t>(length));
        for (int64_t i = 0; i < length; ++i) {
            const double fraction = double(i + 1) / double(length + 1);
            const double line = levelBefore + (levelAfter - levelBefore) * fraction;
            out[std::size_t(i)] = RoundClamp16(line + JoinedNoise(before.noise, after.noise, i, length, fraction));
        }
        return Emit(out);
    }

    int64_t Position() const { return position_; }

private:
    bool Emit(std::span<const int16_t> samples) {
        if (!sink_(samples)) return false;
        history_.Add(samples);
        position_ += int64_t(samples.size());
        return true;
    }

    int64_t points_;
    const SampleReader& read_;
    const SampleSink& sink_;
    EventFreeOptions options_;
    History history_;
    int64_t position_ = 0;
};

}  // namespace

bool EliminateStretches(int64_t points, std::span<const PointStretch> stretches,
                        const SampleReader& read, const SampleSink& sink,
                        const EventFreeOptions& options) {
    Replacer replacer(points, read, sink, options);
    for (std::size_t k = 0; k < stretches.size(); ++k) {
        const PointStretch& s = stretches[k];
        // Stretches out of order or outside the recording are left alone.
        if (s.first < replacer.Position() || s.last >= points || s.last < s.first) continue;
        const int64_t nextFirst = k + 1 < stretches.size() && stretches[k + 1].first > s.last
                                      ? std::min(stretches[k + 1].first, points)
                                      : points;
        if (!replacer.CopyUntil(s.first) || !replacer.Replace(s, nextFirst)) return false;
    }
    return replacer.CopyUntil(points);
}

}  // namespace vess
