// The detection of one event around a candidate peak on one screen: the
// working lengths converted from the microsecond periods, the smoothed and
// baseline helpers, the extreme-point search, the earlier-peak search and the
// measuring loop that turns a candidate into a measured event or rejects it.
#pragma once

#include <algorithm>
#include <cstdlib>
#include <cstdint>
#include <limits>
#include <optional>

#include "detection/measurements.h"
#include "recording/command_result.h"
#include "recording/event_record.h"
#include "recording/screen.h"
#include "recording/settings.h"
#include "recording/workspace.h"

namespace vess {

// The periods of AnalysisParameters in samples.
struct DetectionLengths {
    int32_t searchLen = 0;   // PeriodToSearchMax
    int32_t baseOffset = 0;  // PeriodStartBaseline
    int32_t baseLen = 0;     // PeriodBaselineAverage
    int32_t decayLen = 0;    // PeriodFindDecayTime
    int32_t halfPeak = 0;    // NumberPointsPeak / 2, integer part
};

// Each period divided by the interval; nullopt when any quotient is below 1
// (tested before rounding), otherwise each rounded half to even.
std::optional<DetectionLengths> ConvertPeriods(const AnalysisParameters& params, double intervalUs);
// The same as a command's step: failed with the "Improper Analysis
// Parameters" message.
Outcome<DetectionLengths> CheckedPeriods(const AnalysisParameters& params, double intervalUs);
// The same for the workspace's parameters and open recording.
Outcome<DetectionLengths> CheckedPeriods(const Workspace& ws);

// +1 for upward events; -1 for downward ones and for a stored 0.
int16_t NormalizedDirection(int16_t peakDirection);

struct PeakPoint {
    int64_t index = 0;
    int16_t value = 0;
};

// A candidate that passed the amplitude, direction and area tests.
struct MeasuredEvent {
    int64_t peak = 0;
    int16_t value = 0;
    int16_t baseline = 0;
    int32_t amplitudeCounts = 0;
    float amplitudeUnits = 0;
    int64_t baselineMiddle = 0;
    int64_t start = 0;
    int64_t decay = 0;
    int16_t decayLevel = 0;   // three-point mean at the decay point
    float areaUnitsMs = 0;
    DecayUnder under;         // an earlier event's decay, taken off every walk
};

class Detector {
public:
    Detector(const Screen& screen, const AnalysisParameters& params, const DetectionLengths& lengths);

    const Screen& Scr() const { return screen_; }
    const DetectionLengths& Lengths() const { return len_; }
    int16_t Direction() const { return dir_; }
    const AnalysisParameters& Params() const { return params_; }

    // Earlier peaks (and, for a further peak of a complex event, re-centred
    // peaks) never move to or before this window index: a peak already stored
    // is not taken again.
    void SetFloor(int64_t index) { floor_ = index; }
    int64_t Floor() const { return floor_; }
    // The floor carried from the previous screen (the event it stored last,
    // found again at the start of this one). A candidate whose earlier peak
    // is that event, or one before it, is rejected: on the previous screen
    // the same search gave that event.
    void SetCarriedFloor(int64_t index) {
        carriedFloor_ = index;
        floor_ = index;
    }
    // The recorded samples of the screen, and the last window index that can
    // be a peak: its averaging window and the sample after it are recorded.
    const DataSpan& Span() const { return span_; }
    int64_t LastPeakIndex() const { return span_.last - PeakMargin(); }

    // Sum of the samples i-h .. i+h divided by NumberPointsPeak (not by the
    // number summed), rounded to 16 bits.
    int16_t GetAverageValue(int64_t i) const;
    // Mean of n samples from start, rounded to 16 bits.
    int16_t FindBaseline(int64_t start, int32_t n) const;
    // Index and smoothed value of the extreme point among start .. start+n-1;
    // the earliest of equal values wins. Points whose averaging window is not
    // all recorded are left out; a range with none left answers its nearest
    // point that can be a peak.
    PeakPoint FindMax(int64_t start, int32_t n) const;
    // An earlier separate peak in the rising phase before the candidate, or an
    // index not below the candidate's when there is none.
    int64_t DetectPrepeak(int64_t peak, int16_t value) const;

    // The measuring loop for one candidate: baseline, amplitude and direction
    // test, earlier-peak move, event start, decay point, area test and one
    // re-centring. nullopt when a test rejects the candidate.
    // boundRecentring keeps the re-centring search after the floor.
    std::optional<MeasuredEvent> Measure(PeakPoint candidate, bool boundRecentring = false) const;

    // The record of a measured event, with the rise-time, slope, rise-to-50 %
    // and half-width measurements.
    EventRecord MakeRecord(const MeasuredEvent& e) const;

    // Amplitude (a difference of counts) in the channel's unit.
    float AmplitudeUnits(int32_t counts) const;
    // Whether a rise or fall of this many counts (not necessarily whole)
    // reaches ThresholdAmplitude, the test every amplitude passes.
    bool ReachesThreshold(double counts) const;
    // The amplitude and direction tests of a candidate: |value - baseline| at
    // least ThresholdAmplitude and value beyond baseline in the event direction.
    bool PassesAmplitudeTests(int16_t value, int16_t baseline) const {
        const int32_t amplitude = std::abs(int32_t(value) - int32_t(baseline));
        const bool reaches = thresholdCounts_ ? amplitude >= *thresholdCounts_
                                              : AmplitudeUnits(amplitude) >= params_.ThresholdAmplitude;
        return reaches && dir_ * int32_t(value) > dir_ * int32_t(baseline);
    }

    // Event start, decay point and level, and area of e, whose peak, baseline
    // and amplitude are set. The start walk goes back at most BaseOffset
    // samples and not before startLimit; the decay walk forward at most
    // DecayLen samples and not after decayLimit. A walk that finds no point
    // ends one sample beyond its range, or at a limit that cut the range.
    // Neither walks on samples beyond the recording: a decay that has not
    // ended by the last three-point mean of recorded samples is cut short
    // there, and its area covers the recorded samples only. The area is the
    // sum rounded to a whole count, converted with Bit2pA, times the interval.
    void WalkExtent(MeasuredEvent& e, int64_t startLimit = std::numeric_limits<int64_t>::min(),
                    int64_t decayLimit = std::numeric_limits<int64_t>::max()) const;

private:
    struct Trough {
        int64_t index;
        int16_t value;
    };
    // The first least and most extreme raw samples of first .. last (inclusive).
    Trough LeastExtreme(int64_t first, int64_t last) const { return FirstOf(first, last, dir_ < 0); }
    Trough MostExtreme(int64_t first, int64_t last) const { return FirstOf(first, last, dir_ > 0); }
    // The first greatest (or least) raw sample of first .. last.
    Trough FirstOf(int64_t first, int64_t last, bool greatest) const;
    // DetectPrepeak searching no further back than lowest.
    int64_t EarlierPeak(int64_t peak, int16_t value, int64_t lowest) const;
    int32_t PeakMargin() const { return std::max<int32_t>(len_.halfPeak, 1); }

    const Screen& screen_;
    AnalysisParameters params_;
    DetectionLengths len_;
    int16_t dir_;
    int32_t pointsPeak_;
    DataSpan span_;
    // ThresholdAmplitude as the least amplitude in counts that reaches it,
    // when the channel's scaling allows the test in counts.
    std::optional<int32_t> thresholdCounts_;
    int64_t floor_ = std::numeric_limits<int64_t>::min() / 2;
    std::optional<int64_t> carriedFloor_;
};

}  // namespace vess
