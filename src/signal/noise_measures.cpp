#include "signal/noise_measures.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

#include "recording/recording.h"
#include "signal/tool_texts.h"
#include "statistics/histogram.h"

namespace vess {

TraceStretch ReadStretch(const Recording& rec, int64_t first, int64_t count) {
    return ReadTraceStretch(rec, rec.ReadsFiltered(), first, count);
}

TraceStretch ReadTraceStretch(const Recording& rec, bool filtered, int64_t first, int64_t count) {
    TraceStretch s;
    s.intervalMs = rec.IntervalUs() / 1000.0;
    s.units = rec.Units();
    const int64_t begin = std::max<int64_t>(first, 0);
    const int64_t end = std::min<int64_t>(first + std::max<int64_t>(count, 0), rec.PointsPerChannel());
    s.startMs = double(begin) * s.intervalMs;
    if (end <= begin) return s;
    std::vector<int16_t> counts(std::size_t(end - begin));
    rec.ReadTraceSamples(filtered, begin, counts);
    s.values.reserve(counts.size());
    for (int16_t c : counts) s.values.push_back(double(rec.Bit2pA(c)));
    return s;
}

TraceStretch ScreenStretch(const Recording& rec, bool filtered, int32_t startBlock, int32_t blocksPerScreen,
                           std::optional<CursorSpan> cursors) {
    const int64_t first = int64_t(startBlock) * kBlockPoints;
    const int64_t windowLen = int64_t(blocksPerScreen) * kBlockPoints;
    if (!cursors) return ReadTraceStretch(rec, filtered, first, windowLen);
    const int64_t lo = std::clamp<int64_t>(std::min(cursors->index1, cursors->index2), 0, windowLen - 1);
    const int64_t hi = std::clamp<int64_t>(std::max(cursors->index1, cursors->index2), 0, windowLen - 1);
    return ReadTraceStretch(rec, filtered, first + lo, hi - lo + 1);
}

std::optional<NoiseMeasures> MeasureNoise(std::span<const double> values, double intervalMs) {
    const std::size_t n = values.size();
    if (n < 2) return std::nullopt;
    NoiseMeasures m;
    m.points = int64_t(n);
    double sum = 0;
    for (double v : values) sum += v;
    m.mean = sum / double(n);
    std::vector<double> sorted(values.begin(), values.end());
    std::sort(sorted.begin(), sorted.end());
    m.median = n % 2 ? sorted[n / 2] : (sorted[n / 2 - 1] + sorted[n / 2]) / 2;
    m.peakToPeak = sorted.back() - sorted.front();
    // Squares about a level taken first keep the result exact for traces far
    // from zero.
    double aboutMean = 0, aboutMedian = 0;
    for (double v : values) {
        aboutMean += (v - m.mean) * (v - m.mean);
        aboutMedian += (v - m.median) * (v - m.median);
    }
    m.sd = std::sqrt(aboutMean / double(n - 1));
    m.rmsAboutBaseline = std::sqrt(aboutMedian / double(n));
    m.coastline = CoastlineLength(values);
    const double durationMs = double(n - 1) * intervalMs;
    m.coastlinePerMs = durationMs > 0 ? m.coastline / durationMs : 0;
    return m;
}

namespace {

// Calls use(values) for consecutive pieces of points [begin, end) of the
// recording's channel, in its units.
template <class Use>
void ForEachPiece(const Recording& rec, int64_t begin, int64_t end, int64_t piecePoints, const Use& use) {
    std::vector<int16_t> counts;
    std::vector<double> values;
    for (int64_t at = begin; at < end; at += piecePoints) {
        counts.resize(std::size_t(std::min(piecePoints, end - at)));
        rec.ReadSamples(at, counts);
        values.resize(counts.size());
        for (std::size_t i = 0; i < counts.size(); ++i) values[i] = double(rec.Bit2pA(counts[i]));
        use(std::span<const double>(values));
    }
}

// Value k (0-based) of the stretch in increasing order, from how many
// samples hold each value.
double NthInOrder(const std::vector<std::pair<double, int64_t>>& byValue, int64_t k) {
    for (const auto& [value, samples] : byValue) {
        if (k < samples) return value;
        k -= samples;
    }
    return byValue.back().first;
}

}  // namespace

std::optional<NoiseMeasures> MeasureRecordingNoise(const Recording& rec, int64_t first, int64_t count,
                                                   int64_t piecePoints) {
    const int64_t begin = std::max<int64_t>(first, 0);
    const int64_t end = std::min<int64_t>(first + std::max<int64_t>(count, 0), rec.PointsPerChannel());
    const int64_t n = end - begin;
    if (n < 2) return std::nullopt;
    NoiseMeasures m;
    m.points = n;
    // First pass: the sum and the coastline in sample order (as the whole
    // stretch would give them), and how often each 16-bit sample occurs.
    std::vector<int64_t> occurrences(65536, 0);
    double sum = 0, coastline = 0, previous = 0;
    bool started = false;
    std::vector<int16_t> counts;
    for (int64_t at = begin; at < end; at += piecePoints) {
        counts.resize(std::size_t(std::min(piecePoints, end - at)));
        rec.ReadSamples(at, counts);
        for (int16_t c : counts) {
            const double v = double(rec.Bit2pA(c));
            sum += v;
            if (started) coastline += std::fabs(v - previous);
            previous = v;
            started = true;
            ++occurrences[std::size_t(int32_t(c) + 32768)];
        }
    }
    m.mean = sum / double(n);
    std::vector<std::pair<double, int64_t>> byValue;
    for (int32_t c = -32768; c <= 32767; ++c)
        if (const int64_t k = occurrences[std::size_t(c + 32768)]) byValue.emplace_back(double(rec.Bit2pA(c)), k);
    std::sort(byValue.begin(), byValue.end());
    m.median = n % 2 ? NthInOrder(byValue, n / 2) : (NthInOrder(byValue, n / 2 - 1) + NthInOrder(byValue, n / 2)) / 2;
    m.peakToPeak = byValue.back().first - byValue.front().first;
    // Second pass: squares about the mean and the median, in sample order.
    double aboutMean = 0, aboutMedian = 0;
    ForEachPiece(rec, begin, end, piecePoints, [&](std::span<const double> values) {
        for (double v : values) {
            aboutMean += (v - m.mean) * (v - m.mean);
            aboutMedian += (v - m.median) * (v - m.median);
        }
    });
    m.sd = std::sqrt(aboutMean / double(n - 1));
    m.rmsAboutBaseline = std::sqrt(aboutMedian / double(n));
    m.coastline = coastline;
    const double intervalMs = rec.IntervalUs() / 1000.0;  // as ReadStretch gives it
    const double durationMs = double(n - 1) * intervalMs;
    m.coastlinePerMs = durationMs > 0 ? m.coastline / durationMs : 0;
    return m;
}

std::string NoiseReportText(const NoiseMeasures& m, const std::string& units) {
    const auto v = [&](double x) { return units.empty() ? fmt::format("{:.4g}", x)
                                                        : fmt::format("{:.4g} {}", x, units); };
    using namespace tool_texts;
    return fmt::format("{}{}\n{}{}\n{}{}\n{}{}\n{}{}\n{}{}\n{}{} ({}{})", kPointsLabel, m.points,
                       kMeanLabel, v(m.mean), kMedianLabel, v(m.median), kSdLabel, v(m.sd),
                       kRmsLabel, v(m.rmsAboutBaseline), kPeakToPeakLabel, v(m.peakToPeak),
                       kCoastlineLabel, v(m.coastline), v(m.coastlinePerMs), kPerMsSuffix);
}

}  // namespace vess
