// The trace set of the group analysis window: one stretch of the recording
// around each event of a group (or one per sweep), aligned, optionally
// baseline-subtracted and peak-scaled, and their point-by-point average.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "recording/event_table.h"
#include "recording/recording.h"
#include "recording/settings.h"

namespace vess::group {

enum class TraceSource { Episodes, Group };
enum class AnalysisType {
    Average, Individual, Superimpose, ScaledAverage, ScaledIndividual, ScaledSuperimpose
};
enum class Alignment { Peak, RiseTime, Rise50 };

inline constexpr int kAnalysisTypeCount = 6;
inline constexpr int kAlignmentCount = 3;
std::string_view AnalysisTypeName(AnalysisType type);
std::string_view AlignmentName(Alignment alignment);
// The type or alignment with that list text; the first entry when unknown.
AnalysisType AnalysisTypeFromName(std::string_view name);
Alignment AlignmentFromName(std::string_view name);

bool IsScaled(AnalysisType type);
bool IsAverageType(AnalysisType type);       // "Average", "Scaled Average"
bool IsIndividualType(AnalysisType type);    // "Individual", "Scaled Individual"
bool IsSuperimposeType(AnalysisType type);   // "Superimpose", "Scaled Superimpose"

struct TraceSetOptions {
    TraceSource source = TraceSource::Group;
    int group = 1;
    AnalysisType type = AnalysisType::Average;
    Alignment alignment = Alignment::Peak;
    double blocks = 1;             // trace length in 256-point blocks
    bool baselineAdjust = false;
    bool fullSweep = false;        // episodes: each trace a whole sweep
};

// Rows 0..count of length points each; row 0 is the average.
struct TraceSet {
    int32_t length = 0;                 // L, points per trace
    int32_t count = 0;                  // N, individual traces
    int32_t meanAmplitude = 0;          // counts; mean event amplitude, rounded
    int32_t prePoints = 0;              // points before the alignment point
    double intervalUs = 0;
    std::vector<int16_t> points;        // (count + 1) x length, row-major
    std::vector<int32_t> eventIndex;    // [t] = 1-based event of trace t; [0] unused

    bool Empty() const { return count < 1; }
    std::span<const int16_t> Row(int32_t t) const {
        return {points.data() + std::size_t(t) * std::size_t(length), std::size_t(length)};
    }
    double TimeMs(int32_t point) const { return point * intervalUs / 1000.0; }
};

// Points in a trace of the given block count (value x 256, integer part).
int32_t TracePoints(double blocks);

// Group source: the events of options.group in table order.
TraceSet BuildGroupTraceSet(const Recording& rec, const EventTable& events,
                            const AnalysisParameters& params, const TraceSetOptions& options);
// The same average (row 0) without holding the individual traces: points
// holds row 0 only, so Row(t) is valid for t = 0 alone.
TraceSet BuildGroupAverage(const Recording& rec, const EventTable& events,
                           const AnalysisParameters& params, const TraceSetOptions& options);

// Memory the traces may hold at most; a larger set is refused, not begun.
inline constexpr std::size_t kTraceSetBudgetBytes = std::size_t(1) << 30;
// Bytes a trace set of these options holds (the average alone, or every
// trace); std::nullopt when that is known only once the sweeps are read
// (whole sweeps, bounded by the recording itself).
std::optional<std::size_t> TraceSetBytes(const Recording& rec, const EventTable& events,
                                         const TraceSetOptions& options, bool averageOnly);
// "" when bytes fit the budget, otherwise the refusal giving the memory needed.
std::string TraceSetSizeProblem(std::optional<std::size_t> bytes);
// Points of one channel in each sweep of the recording, in order; the whole
// recording for gap-free data.
std::vector<int64_t> SweepLengths(const Recording& rec);

// Episodes source: one trace per sweep of the recording's shown channel,
// from the sweep's first point.
TraceSet BuildEpisodeTraceSet(const Recording& rec, const TraceSetOptions& options);
TraceSet BuildTraceSet(const Recording& rec, const EventTable& events,
                       const AnalysisParameters& params, const TraceSetOptions& options);

// Reads out.size() interleaved 16-bit values of the recording starting at a
// byte position relative to the data section, keeping every channels-th value
// from channel on. An odd position is lowered by one byte first; bytes outside
// the data (or that could not be read) read as zero.
void ReadStretch(const Recording& rec, int64_t bytePosition, int channels, int channel,
                 std::span<int16_t> out);

}  // namespace vess::group
