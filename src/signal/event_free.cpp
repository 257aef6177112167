#include "signal/event_free.h"

#include <algorithm>
#include <numeric>

#include "recording/rounding.h"

namespace vess {

std::vector<PointStretch> EventStretches(const EventTable& events, int64_t marginPoints, int64_t points) {
    std::vector<PointStretch> all;
    if (points <= 0) return all;
    for (const EventRecord& r : events.Records()) {
        const int64_t first = int64_t(r.sampleIndex) - r.riseTime - marginPoints;
        const int64_t last = int64_t(r.sampleIndex) + r.decayTime + marginPoints;
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
        const double donorMean = Mean(donor);
        std::vector<int16_t> out(static_cast<std::size_t>(length));
        for (int64_t i = 0; i < length; ++i) {
            const double level = levelBefore + (levelAfter - levelBefore) * double(i + 1) / double(length + 1);
            const double noise = donor.empty() ? 0.0 : donor[std::size_t(i) % donor.size()] - donorMean;
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
