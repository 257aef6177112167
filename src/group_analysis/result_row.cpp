#include "group_analysis/result_row.h"

#include "group_analysis/measure_columns.h"
#include "recording/le_bytes.h"

namespace vess::group {

namespace o = result_offsets;

namespace {

// Every double field with its offset, in row order; one table serves the
// reader and the writer.
template <class Values, class F>
void ForEachReal(Values& v, F&& f) {
    f(o::kAmplitude, v.amplitude);
    f(o::kTime, v.time);
    f(o::kBaseline, v.baseline);
    f(o::kRise, v.rise);
    f(o::kArea, v.area);
    f(o::kHalfWidth, v.halfWidth);
    f(o::kDecay9037, v.decay9037);
    f(o::kTau1, v.tau1);
    f(o::kA1, v.a1);
    f(o::kTau2, v.tau2);
    f(o::kA2, v.a2);
    f(o::kTau3, v.tau3);
    f(o::kA3, v.a3);
    f(o::kOffset, v.offset);
    f(o::kRSquared, v.rSquared);
    f(o::kStdev, v.stdev);
    f(o::kRss, v.rss);
    f(o::kFitFrom, v.fitFrom);
    f(o::kFitTo, v.fitTo);
    f(o::kThreshold, v.threshold);
    f(o::kWidth, v.width);
    f(o::kAhpArea, v.ahpArea);
    f(o::kAhpPeak, v.ahpPeak);
    f(o::kDecayPercent, v.decayPercent);
}

template <class Values, class F>
void ForEachFluctuation(Values& v, F&& f) {
    f(o::kUnitCurrent, v.unitCurrent);
    f(o::kChannels, v.channels);
    f(o::kOpenProbability, v.openProbability);
    f(o::kBaselineVariance, v.baselineVariance);
}

constexpr std::array<std::string_view, 7> kStandardErrorTitles = {
    "SE Tau1", "SE A1", "SE Tau2", "SE A2", "SE Tau3", "SE A3", "SE Offset"};

template <class Values, class F>
void ForEachInteger(Values& v, F&& f) {
    f(o::kTrace, v.trace);
    f(o::kEventIndex, v.eventIndex);
    f(o::kGroup, v.group);
    f(o::kTracesAveraged, v.tracesAveraged);
    f(o::kExponentials, v.exponentials);
    f(o::kIterations, v.iterations);
    f(o::kRestarts, v.restarts);
}

// Headings laid out one value after the other from the first measure slot;
// "-" marks a slot the kind does not show.
template <std::size_t N>
std::vector<ResultColumn> MeasureColumns(const std::array<std::string_view, N>& titles) {
    static_assert(N <= columns::kSlots);
    std::vector<ResultColumn> out;
    for (std::size_t i = 0; i < N; ++i)
        if (titles[i] != "-") out.push_back({titles[i], columns::kFirstOffset + 8 * i});
    return out;
}

}  // namespace

ResultBytes WriteResultRow(const ResultValues& values) {
    ResultBytes row{};
    std::span<uint8_t> bytes(row);
    le::Put<int32_t>(bytes, o::kKind, int32_t(values.kind));
    ForEachInteger(values, [&](std::size_t at, int32_t v) { le::Put<int32_t>(bytes, at, v); });
    ForEachReal(values, [&](std::size_t at, double v) { le::Put<double>(bytes, at, v); });
    if (values.kind == ResultKind::DecayFit) {
        for (std::size_t k = 0; k < values.standardErrors.size(); ++k)
            le::Put<float>(bytes, o::kStandardErrors + 4 * k, float(values.standardErrors[k]));
        le::Put<int32_t>(bytes, o::kFitStatus, values.fitStatus);
    } else {
        ForEachFluctuation(values, [&](std::size_t at, double v) { le::Put<double>(bytes, at, v); });
    }
    return row;
}

bool operator==(const ResultValues& a, const ResultValues& b) { return WriteResultRow(a) == WriteResultRow(b); }

ResultValues ReadResultRow(const ResultBytes& row) {
    ResultValues values;
    std::span<const uint8_t> bytes(row);
    values.kind = ResultKind(le::Get<int32_t>(bytes, o::kKind));
    ForEachInteger(values, [&](std::size_t at, int32_t& v) { v = le::Get<int32_t>(bytes, at); });
    ForEachReal(values, [&](std::size_t at, double& v) { v = le::Get<double>(bytes, at); });
    if (values.kind == ResultKind::DecayFit) {
        values.fitStatus = le::Get<int32_t>(bytes, o::kFitStatus);
        for (std::size_t k = 0; k < values.standardErrors.size(); ++k)
            values.standardErrors[k] = values.fitStatus ? le::Get<float>(bytes, o::kStandardErrors + 4 * k)
                                                        : kNotMeasured;
    } else {
        ForEachFluctuation(values, [&](std::size_t at, double& v) { v = le::Get<double>(bytes, at); });
    }
    return values;
}

std::vector<ResultColumn> ResultColumns(ResultKind kind) {
    switch (kind) {
        case ResultKind::DecayFit: {
            std::vector<ResultColumn> columns = {
                {"Amplitude", o::kAmplitude}, {"Time", o::kTime}, {"Baseline", o::kBaseline},
                {"Rise", o::kRise}, {"Area", o::kArea}, {"Half-width", o::kHalfWidth},
                {"Decay90-37%", o::kDecay9037}, {"Tau1", o::kTau1}, {"A1", o::kA1},
                {"Tau2", o::kTau2}, {"A2", o::kA2}, {"Tau3", o::kTau3}, {"A3", o::kA3},
                {"Offset", o::kOffset}, {"R-Sqr", o::kRSquared}, {"Stdev", o::kStdev}};
            for (std::size_t k = 0; k < kStandardErrorTitles.size(); ++k)
                columns.push_back({kStandardErrorTitles[k], o::kStandardErrors + 4 * k, true});
            return columns;
        }
        case ResultKind::Fluctuation:
            return {{"Amplitude", o::kAmplitude}, {"i", o::kUnitCurrent}, {"N", o::kChannels},
                    {"Po", o::kOpenProbability}, {"Base Var", o::kBaselineVariance},
                    {"R-Sqr", o::kRSquared}};
        case ResultKind::SpikeShape: return MeasureColumns(columns::kSpikeShape);
        case ResultKind::SpikeTrain: return MeasureColumns(columns::kSpikeTrain);
        case ResultKind::FieldPotential: return MeasureColumns(columns::kFieldPotential);
        case ResultKind::EvokedCurrent: return MeasureColumns(columns::kEvokedCurrent);
        case ResultKind::Multipeak: return MeasureColumns(columns::kMultipeak);
        case ResultKind::ManualPoint: return MeasureColumns(columns::kManualPoint);
        case ResultKind::Amperometric: return MeasureColumns(columns::kAmperometric);
        case ResultKind::Diffusion: return MeasureColumns(columns::kDiffusion);
        case ResultKind::Ecg: return MeasureColumns(columns::kEcg);
        case ResultKind::None: break;
    }
    return {{"Amplitude", o::kAmplitude}, {"Time", o::kTime}, {"Baseline", o::kBaseline},
            {"Rise", o::kRise}, {"Area", o::kArea}, {"Half-width", o::kHalfWidth},
            {"Tau1", o::kTau1}, {"Tau2", o::kTau2}, {"Stdev", o::kStdev},
            {"Threshold", o::kThreshold}, {"Width", o::kWidth}, {"AHP Area", o::kAhpArea},
            {"AHP Peak", o::kAhpPeak}, {"Decay%", o::kDecayPercent}};
}

double ResultCell(const ResultBytes& row, const ResultColumn& column) {
    const std::span<const uint8_t> bytes(row);
    if (!column.standardError) return le::Get<double>(bytes, column.offset);
    return le::Get<int32_t>(bytes, o::kFitStatus) ? le::Get<float>(bytes, column.offset) : kNotMeasured;
}

}  // namespace vess::group
