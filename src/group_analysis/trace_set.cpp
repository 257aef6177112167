#include "group_analysis/trace_set.h"

#include <algorithm>
#include <array>
#include <cmath>

#include <fmt/format.h>

#include "recording/event_time.h"
#include "recording/le_bytes.h"
#include "recording/rounding.h"

namespace vess::group {

namespace {

constexpr std::array<std::string_view, kAnalysisTypeCount> kTypeNames = {
    "Average", "Individual", "Superimpose", "Scaled Average", "Scaled Individual",
    "Scaled Superimpose"};
constexpr std::array<std::string_view, kAlignmentCount> kAlignmentNames = {"Peak", "Rise-time",
                                                                         "Rise 50"};
// Sizes the matrix and fills row 0 with the average of rows 1..N, each point
// rounded to nearest with ties to even.
void Average(TraceSet& set) {
    const auto L = std::size_t(set.length);
    for (std::size_t j = 0; j < L; ++j) {
        int64_t sum = 0;
        for (int32_t t = 1; t <= set.count; ++t) sum += set.points[std::size_t(t) * L + j];
        set.points[j] = Clamp16(RoundEven(double(sum) / set.count));
    }
}

// Rows for count traces of length points, or row 0 alone without allRows.
TraceSet Sized(const Recording& rec, int32_t count, int32_t length, bool allRows) {
    TraceSet set;
    set.count = count;
    set.length = length;
    set.intervalUs = rec.IntervalUs();
    set.points.assign(std::size_t(allRows ? count + 1 : 1) * std::size_t(std::max(length, 0)), 0);
    set.eventIndex.assign(std::size_t(count + 1), 0);
    return set;
}

// Point j of an event's trace from its raw sample.
int16_t EventValue(int16_t sample, const EventRecord& e, bool scaled, bool baselineAdjust,
                   int32_t meanAmplitude) {
    if (scaled) {
        const double above = double(sample) - e.baseline;
        // An event without amplitude cannot be scaled; it keeps its size.
        const double factor = e.amplitude == 0 ? 1.0 : double(meanAmplitude) / e.amplitude;
        return RoundClamp16(above * factor);
    }
    if (baselineAdjust) return Clamp16(int64_t(sample) - e.baseline);
    return sample;
}

}  // namespace

std::string_view AnalysisTypeName(AnalysisType type) { return kTypeNames[std::size_t(type)]; }
std::string_view AlignmentName(Alignment alignment) {
    return kAlignmentNames[std::size_t(alignment)];
}
AnalysisType AnalysisTypeFromName(std::string_view name) {
    const auto it = std::find(kTypeNames.begin(), kTypeNames.end(), name);
    return it == kTypeNames.end() ? AnalysisType::Average
                                  : AnalysisType(it - kTypeNames.begin());
}
Alignment AlignmentFromName(std::string_view name) {
    const auto it = std::find(kAlignmentNames.begin(), kAlignmentNames.end(), name);
    return it == kAlignmentNames.end() ? Alignment::Peak : Alignment(it - kAlignmentNames.begin());
}

bool IsScaled(AnalysisType t) {
    return t == AnalysisType::ScaledAverage || t == AnalysisType::ScaledIndividual ||
           t == AnalysisType::ScaledSuperimpose;
}
bool IsAverageType(AnalysisType t) {
    return t == AnalysisType::Average || t == AnalysisType::ScaledAverage;
}
bool IsIndividualType(AnalysisType t) {
    return t == AnalysisType::Individual || t == AnalysisType::ScaledIndividual;
}
bool IsSuperimposeType(AnalysisType t) {
    return t == AnalysisType::Superimpose || t == AnalysisType::ScaledSuperimpose;
}

int32_t TracePoints(double blocks) {
    const double points = blocks * kBlockPoints;
    if (!(points >= 1)) return 0;
    return int32_t(std::min(points, 2.0e9));
}

void ReadStretch(const Recording& rec, int64_t bytePosition, int channels, int channel,
                 std::span<int16_t> out) {
    if (bytePosition % 2 != 0) --bytePosition;
    const std::vector<uint8_t> data =
        rec.ReadDataBytes(bytePosition, out.size() * std::size_t(channels) * 2);
    for (std::size_t j = 0; j < out.size(); ++j)
        out[j] = le::Get<int16_t>(data, (j * std::size_t(channels) + std::size_t(channel)) * 2);
}

namespace {

// The group's events in table order, each event's trace handed to use(t, i,
// values) as trace t (1-based) of event i; one trace held at a time.
template <class Use>
TraceSet ForEachGroupTrace(const Recording& rec, const EventTable& events,
                           const AnalysisParameters& params, const TraceSetOptions& options,
                           bool allRows, Use use) {
    const double interval = rec.IntervalUs();
    const auto pre = int32_t(double(params.PeriodStartBaseline) / interval);
    int32_t count = 0;
    int64_t amplitudeSum = 0;
    for (const EventRecord& e : events.Records()) {
        if (e.group != options.group) continue;
        ++count;
        amplitudeSum += e.amplitude;
    }
    if (count < 1) return Sized(rec, 0, 0, true);
    TraceSet set = Sized(rec, count, TracePoints(options.blocks), allRows);
    set.prePoints = pre;
    set.meanAmplitude = RoundClamp32(double(amplitudeSum) / count);

    const int channels = rec.ChannelCount();
    const bool scaled = IsScaled(options.type);
    const auto L = std::size_t(set.length);
    std::vector<int16_t> raw(L);
    int32_t t = 0;
    for (int32_t i = 1; i <= events.Count(); ++i) {
        const EventRecord& e = events[i];
        if (e.group != options.group) continue;
        ++t;
        set.eventIndex[std::size_t(t)] = i;
        double align = ExactEventTimeMs(e, interval) * 1000.0 / interval;
        if (options.alignment == Alignment::RiseTime) align -= e.riseTime;
        if (options.alignment == Alignment::Rise50) align -= e.rise50;
        const double first = align - pre;
        const int64_t position = RoundEven(first * 2.0 * channels);
        ReadStretch(rec, position, channels, std::min<int>(e.channel, channels - 1), raw);
        for (std::size_t j = 0; j < L; ++j)
            raw[j] = EventValue(raw[j], e, scaled, options.baselineAdjust, set.meanAmplitude);
        use(set, t, std::span<const int16_t>(raw));
    }
    return set;
}

int32_t GroupCount(const EventTable& events, int group) {
    return int32_t(std::count_if(events.Records().begin(), events.Records().end(),
                                 [group](const EventRecord& e) { return e.group == group; }));
}

}  // namespace

TraceSet BuildGroupTraceSet(const Recording& rec, const EventTable& events,
                            const AnalysisParameters& params, const TraceSetOptions& options) {
    TraceSet set = ForEachGroupTrace(rec, events, params, options, true,
                                     [](TraceSet& s, int32_t t, std::span<const int16_t> values) {
                                         std::copy(values.begin(), values.end(),
                                                   s.points.begin() + std::ptrdiff_t(t) * s.length);
                                     });
    if (!set.Empty()) Average(set);
    return set;
}

TraceSet BuildGroupAverage(const Recording& rec, const EventTable& events,
                           const AnalysisParameters& params, const TraceSetOptions& options) {
    std::vector<int64_t> sums;
    TraceSet set = ForEachGroupTrace(rec, events, params, options, false,
                                     [&sums](TraceSet&, int32_t, std::span<const int16_t> values) {
                                         sums.resize(values.size(), 0);
                                         for (std::size_t j = 0; j < values.size(); ++j) sums[j] += values[j];
                                     });
    for (std::size_t j = 0; j < sums.size(); ++j) set.points[j] = Clamp16(RoundEven(double(sums[j]) / set.count));
    return set;
}

std::optional<std::size_t> TraceSetBytes(const Recording& rec, const EventTable& events,
                                         const TraceSetOptions& options, bool averageOnly) {
    const auto L = std::size_t(TracePoints(options.blocks));
    if (averageOnly) return L * (2 * sizeof(int16_t) + sizeof(int64_t));
    const std::size_t count = options.source == TraceSource::Group
                                  ? std::size_t(GroupCount(events, options.group))
                                  : rec.SweepStarts().size();
    if (options.source == TraceSource::Episodes && options.fullSweep) return std::nullopt;
    return (count + 1) * L * sizeof(int16_t);
}

std::string TraceSetSizeProblem(std::optional<std::size_t> bytes) {
    if (!bytes || *bytes <= kTraceSetBudgetBytes) return {};
    return fmt::format("The traces would need {:.1f} GB of memory, more than the {:.0f} GB allowed. "
                       "Analyse fewer blocks or fewer events.",
                       double(*bytes) / 1e9, double(kTraceSetBudgetBytes) / (1 << 30));
}

std::vector<int64_t> SweepLengths(const Recording& rec) {
    const auto& starts = rec.SweepStarts();
    std::vector<int64_t> lengths;
    for (std::size_t k = 0; k < starts.size(); ++k)
        lengths.push_back((k + 1 < starts.size() ? starts[k + 1] : rec.PointsPerChannel()) - starts[k]);
    return lengths;
}

TraceSet BuildEpisodeTraceSet(const Recording& rec, const TraceSetOptions& options) {
    const int channels = rec.ChannelCount();
    const auto& starts = rec.SweepStarts();
    const std::vector<int64_t> lengths = SweepLengths(rec);
    const int64_t longest = lengths.empty() ? 0 : *std::max_element(lengths.begin(), lengths.end());
    const auto sweeps = int32_t(std::min<std::size_t>(starts.size(), INT32_MAX - 1));
    if (sweeps < 1 || longest < 1) return Sized(rec, 0, 0, true);
    // A whole sweep per trace: the longest, so that every sweep is shown whole.
    const double blocks = options.fullSweep ? double(longest) / kBlockPoints : options.blocks;
    TraceSet set = Sized(rec, sweeps, TracePoints(blocks), true);
    const auto L = std::size_t(set.length);
    for (int32_t t = 1; t <= sweeps; ++t) {
        set.eventIndex[std::size_t(t)] = t;
        std::span<int16_t> row(set.points.data() + std::size_t(t) * L, L);
        ReadStretch(rec, starts[std::size_t(t - 1)] * channels * 2, channels, rec.Channel(), row);
        // A sweep shorter than the trace ends there: the rest is zero, as for
        // any stretch that reaches past the data, not the next sweep.
        const auto own = std::size_t(std::clamp<int64_t>(lengths[std::size_t(t - 1)], 0, int64_t(L)));
        std::fill(row.begin() + std::ptrdiff_t(own), row.end(), int16_t(0));
        if (!options.baselineAdjust || own == 0) continue;
        int64_t first = 0;
        const std::size_t n = std::min<std::size_t>(5, own);
        for (std::size_t j = 0; j < n; ++j) first += row[j];
        const double base = double(first) / double(n);
        for (std::size_t j = 0; j < own; ++j) row[j] = RoundClamp16(row[j] - base);
    }
    Average(set);
    return set;
}

TraceSet BuildTraceSet(const Recording& rec, const EventTable& events,
                       const AnalysisParameters& params, const TraceSetOptions& options) {
    return options.source == TraceSource::Episodes ? BuildEpisodeTraceSet(rec, options)
                                                   : BuildGroupTraceSet(rec, events, params, options);
}

}  // namespace vess::group
