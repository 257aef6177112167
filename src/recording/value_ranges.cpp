#include "recording/value_ranges.h"

#include <cmath>

#include <fmt/format.h>

namespace vess {

std::string ScalingProblem(const ChannelScaling& s) {
    if (!std::isfinite(s.adcRange) || s.adcRange <= 0 || !(s.adcResolution > 0))
        return fmt::format("ADC range {} V and resolution {} cannot scale samples", s.adcRange,
                           s.adcResolution);
    if (!std::isfinite(s.gain) || s.gain == 0)
        return fmt::format("the channel's gain is {}", s.gain);
    if (!std::isfinite(s.offset)) return fmt::format("the channel's offset is {}", s.offset);
    const double unitsPerCount = s.adcRange / s.gain / s.adcResolution;
    if (!std::isfinite(unitsPerCount) || unitsPerCount == 0 ||
        !std::isfinite(float(unitsPerCount * 32768.0)))
        return fmt::format("gain {} with ADC range {} V and resolution {} gives {} units per count",
                           s.gain, s.adcRange, s.adcResolution, unitsPerCount);
    return {};
}

std::string SampleIntervalProblem(double intervalUs) {
    if (std::isfinite(intervalUs) && intervalUs >= kMinSampleIntervalUs &&
        intervalUs <= kMaxSampleIntervalUs)
        return {};
    return fmt::format("the sample interval is {} us, outside {} to {} us", intervalUs,
                       kMinSampleIntervalUs, kMaxSampleIntervalUs);
}

namespace {

std::string PeriodProblem(const char* name, int32_t us) {
    if (us >= 0 && us <= kMaxPeriodUs) return {};
    return fmt::format("{} is {} us, outside 0 to {} us", name, us, kMaxPeriodUs);
}

std::string ThresholdProblem(const char* name, float value) {
    if (std::isfinite(value) && std::fabs(value) <= kMaxThresholdMagnitude) return {};
    return fmt::format("{} is {}, outside -{} to {}", name, value, kMaxThresholdMagnitude,
                       kMaxThresholdMagnitude);
}

}  // namespace

std::string ParameterProblem(const AnalysisParameters& p) {
    for (const std::string& problem :
         {ThresholdProblem("ThresholdAmplitude", p.ThresholdAmplitude),
          ThresholdProblem("AreaThreshold", p.AreaThreshold),
          PeriodProblem("PeriodToSearchMax", p.PeriodToSearchMax),
          PeriodProblem("PeriodStartBaseline", p.PeriodStartBaseline),
          PeriodProblem("PeriodFindDecayTime", p.PeriodFindDecayTime),
          PeriodProblem("PeriodBaselineAverage", p.PeriodBaselineAverage)})
        if (!problem.empty()) return problem;
    if (!std::isfinite(p.DecayPercent) || p.DecayPercent < 0 || p.DecayPercent > 1)
        return fmt::format("DecayPercent is {}, outside 0 to 1", p.DecayPercent);
    if (p.NumberPointsPeak < 0 || p.NumberPointsPeak > kMaxNumberPointsPeak)
        return fmt::format("NumberPointsPeak is {}, outside 1 to {}", p.NumberPointsPeak,
                           kMaxNumberPointsPeak);
    return {};
}

}  // namespace vess
