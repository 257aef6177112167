#include "signal/event_free.h"

#include <algorithm>
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

int64_t DecayEndPoints(const EventRecord& event, const DecayTail& tail) {
    const int64_t decay = event.decayTime;
    const int64_t peak = event.sampleIndex;
    const int64_t start = peak - event.riseTime;
    if (!tail.read || !(tail.noiseCounts > 0) || decay <= 0 || tail.windowPoints < 1 ||
        start - tail.windowPoints < 0)
        return decay;
    std::vector<int16_t> window(std::size_t(tail.windowPoints));
    const double level = WindowMean(tail.read, start - tail.windowPoints, window);
    const double direction = event.peakDirection > 0 ? 1.0 : -1.0;
    const int64_t last = std::min(peak + kMaxTailDecays * decay, tail.points);
    int64_t at = peak + decay;
    while (at + tail.windowPoints <= last &&
           direction * (WindowMean(tail.read, at, window) - level) >= tail.noiseCounts)
        at += tail.windowPoints;
    return std::max(std::min(at, last) - peak, decay);
}

std::vector<PointStretch> EventStretches(const EventTable& events, int64_t marginPoints, int64_t points,
                                         const DecayTail& tail) {
    std::vector<PointStretch> all;
    if (points <= 0) return all;
    for (const EventRecord& r : events.Records()) {
        const int64_t first = int64_t(r.sampleIndex) - r.riseTime - marginPoints;
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

double Mean(std::span<const int16_t> v) {
    return v.empty() ? 0.0 : std::accumulate(v.begin(), v.end(), 0.0) / double(v.size());
}

// v less its running mean over 2 half + 1 samples (fewer at the ends, where
// the window is cut to v), or less its mean when it is not longer than that.
std::vector<double> FastPart(std::span<const int16_t> v, int64_t half) {
    std::vector<double> out(v.begin(), v.end());
    const int64_t n = int64_t(v.size());
    if (half < 1 || n <= 2 * half) {
        const double mean = Mean(v);
        for (double& x : out) x -= mean;
        return out;
    }
    std::vector<double> prefix(std::size_t(n + 1), 0.0);
    for (int64_t i = 0; i < n; ++i) prefix[std::size_t(i + 1)] = prefix[std::size_t(i)] + v[std::size_t(i)];
    for (int64_t i = 0; i < n; ++i) {
        const int64_t lo = std::max<int64_t>(i - half, 0), hi = std::min(i + half + 1, n);
        out[std::size_t(i)] -= (prefix[std::size_t(hi)] - prefix[std::size_t(lo)]) / double(hi - lo);
    }
    return out;
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

    bool Replace(const PointStretch& s) {
        const int64_t length = s.last - s.first + 1;
        const int64_t afterCount = std::min(options_.levelPoints, points_ - 1 - s.last);
        std::vector<int16_t> after(std::size_t(std::max<int64_t>(afterCount, 0)));
        if (!after.empty()) read_(s.last + 1, after);
        const auto before = history_.Tail(options_.levelPoints);
        const double levelBefore = before.empty() ? Mean(after) : Mean(before);
        const double levelAfter = after.empty() ? levelBefore : Mean(after);

        const auto kept = history_.Tail(length);
        std::vector<int16_t> donor(kept.begin(), kept.end());
        if (donor.empty()) {
            // Nothing before the stretch: the trace after it lends the noise.
            donor.resize(std::size_t(std::min(length, std::max<int64_t>(points_ - 1 - s.last, 0))));
            if (!donor.empty()) read_(s.last + 1, donor);
        }
        const std::vector<double> noiseOf = FastPart(donor, options_.levelPoints);
        std::vector<int16_t> out(static_cast<std::size_t>(length));
        for (int64_t i = 0; i < length; ++i) {
            const double level = levelBefore + (levelAfter - levelBefore) * double(i + 1) / double(length + 1);
            const double noise = noiseOf.empty() ? 0.0 : noiseOf[std::size_t(i) % noiseOf.size()];
            out[std::size_t(i)] = RoundClamp16(level + noise);
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
    for (const PointStretch& s : stretches) {
        // Stretches out of order or outside the recording are left alone.
        if (s.first < replacer.Position() || s.last >= points || s.last < s.first) continue;
        if (!replacer.CopyUntil(s.first) || !replacer.Replace(s)) return false;
    }
    return replacer.CopyUntil(points);
}

}  // namespace vess
