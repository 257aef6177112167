// What lies where in a 280-byte row of the results table: little-endian
// fields at fixed offsets, read and written one by one. Bytes 224..255 hold
// the fluctuation measures in fluctuation rows and, in decay-fit rows, the
// standard errors of the fitted parameters (32-bit floats) and the status of
// the fit. Bytes 256..279 are kept free for later measurements and stay zero.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "group_analysis/not_measured.h"
#include "recording/results_table.h"

namespace vess::group {

// What produced a row.
enum class ResultKind : int32_t {
    None = 0, DecayFit = 1, Fluctuation = 2,
    // Trace analyses: values in the order of their headings (measure_columns.h).
    SpikeShape = 3, SpikeTrain = 4, FieldPotential = 5, EvokedCurrent = 6, Multipeak = 7,
    ManualPoint = 8, Amperometric = 9, Diffusion = 10, Ecg = 11
};

// Measurements and fitted values of one analysed trace.
struct ResultValues {
    ResultKind kind = ResultKind::None;
    int32_t trace = 0;            // 0 is the average
    int32_t eventIndex = 0;       // 1-based event of the trace; 0 for the average
    int32_t group = 0;
    int32_t tracesAveraged = 0;
    int32_t exponentials = 0;
    int32_t iterations = 0;
    int32_t restarts = 0;
    double amplitude = 0;         // units
    double time = 0;              // ms, peak time in the trace
    double baseline = 0;          // units
    double rise = 0;              // ms, over the chosen rise range
    double area = 0;              // units x ms
    double halfWidth = 0;         // ms
    double decay9037 = 0;         // ms, 0.9 to 0.368 of the peak
    double tau1 = 0, a1 = 0, tau2 = 0, a2 = 0, tau3 = 0, a3 = 0, offset = 0;
    double rSquared = 0;
    double stdev = 0;             // residual standard deviation
    double rss = 0;               // residual sum of squares
    double fitFrom = 0, fitTo = 0;  // ms, fit range within the trace
    double threshold = 0, width = 0, ahpArea = 0, ahpPeak = 0, decayPercent = 0;
    double unitCurrent = 0;       // fluctuation analysis: single-channel current i
    double channels = 0;          // N
    double openProbability = 0;   // at the peak
    double baselineVariance = 0;
    // Decay fits: standard errors of tau1, A1, tau2, A2, tau3, A3 and the
    // offset (not measured: NaN), and the FitStatus of the fit (0 for rows
    // of fits that were not assessed).
    std::array<double, 7> standardErrors = {kNotMeasured, kNotMeasured, kNotMeasured, kNotMeasured,
                                            kNotMeasured, kNotMeasured, kNotMeasured};
    int32_t fitStatus = 0;
};
// Rows are equal when they write the same bytes (not-measured values alike).
bool operator==(const ResultValues& a, const ResultValues& b);

// Byte offsets in the row.
namespace result_offsets {
inline constexpr std::size_t kKind = 0, kTrace = 4, kEventIndex = 8, kGroup = 12,
    kTracesAveraged = 16, kExponentials = 20, kIterations = 24, kRestarts = 28,
    kAmplitude = 32, kTime = 40, kBaseline = 48, kRise = 56, kArea = 64, kHalfWidth = 72,
    kDecay9037 = 80, kTau1 = 88, kA1 = 96, kTau2 = 104, kA2 = 112, kTau3 = 120, kA3 = 128,
    kOffset = 136, kRSquared = 144, kStdev = 152, kRss = 160, kFitFrom = 168, kFitTo = 176,
    kThreshold = 184, kWidth = 192, kAhpArea = 200, kAhpPeak = 208, kDecayPercent = 216,
    kUnitCurrent = 224, kChannels = 232, kOpenProbability = 240, kBaselineVariance = 248,
    kStandardErrors = 224, kFitStatus = 252, kFree = 256;
static_assert(kFree + 24 == kResultRowBytes);
}  // namespace result_offsets

ResultBytes WriteResultRow(const ResultValues& values);
ResultValues ReadResultRow(const ResultBytes& row);

// One column of the results grid: its heading and the field it shows.
struct ResultColumn {
    std::string_view title;
    std::size_t offset;
    bool standardError = false;   // a 32-bit float, shown only for assessed fits
};
// The columns of the grid for rows of the given kind (the default headings
// when the table holds no row).
std::vector<ResultColumn> ResultColumns(ResultKind kind);
double ResultCell(const ResultBytes& row, const ResultColumn& column);

}  // namespace vess::group
