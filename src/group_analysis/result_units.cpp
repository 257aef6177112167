#include "group_analysis/result_units.h"

#include <array>
#include <utility>

namespace vess::group {

namespace {

using U = ColumnUnit;

// Titles shared by the kinds of rows; a title that is not listed has no unit.
constexpr std::array<std::pair<std::string_view, ColumnUnit>, 98> kUnits = {{
    // Levels and amplitudes.
    {"Amplitude", U::Signal}, {"Baseline", U::Signal}, {"A1", U::Signal}, {"A2", U::Signal},
    {"A3", U::Signal}, {"Offset", U::Signal}, {"Stdev", U::Signal}, {"SE A1", U::Signal},
    {"SE A2", U::Signal}, {"SE A3", U::Signal}, {"SE Offset", U::Signal}, {"i", U::Signal},
    {"Threshold", U::Signal}, {"Peak", U::Signal}, {"Amp (Base)", U::Signal}, {"AHP Peak", U::Signal},
    {"Thr (d2V)", U::Signal}, {"FV Amp", U::Signal}, {"fEPSP Amp", U::Signal}, {"PSC Amp", U::Signal},
    {"PS Amp", U::Signal}, {"Local Base", U::Signal}, {"Mean Amp", U::Signal}, {"Largest Amp", U::Signal},
    {"Imax", U::Signal}, {"Foot Amp", U::Signal}, {"P Amp", U::Signal}, {"R Amp", U::Signal},
    {"S Amp", U::Signal}, {"T Amp", U::Signal}, {"Value", U::Signal}, {"dValue", U::Signal},
    // Times and durations.
    {"Time", U::Ms}, {"Rise", U::Ms}, {"Half-width", U::Ms}, {"Decay90-37%", U::Ms}, {"Tau1", U::Ms},
    {"Tau2", U::Ms}, {"Tau3", U::Ms}, {"SE Tau1", U::Ms}, {"SE Tau2", U::Ms}, {"SE Tau3", U::Ms},
    {"Thr Time", U::Ms}, {"Peak Time", U::Ms}, {"Width", U::Ms}, {"Decay%", U::Ms}, {"AHP Time", U::Ms},
    {"ISI", U::Ms}, {"Latency", U::Ms}, {"Mean ISI", U::Ms}, {"Stim Time", U::Ms}, {"FV Latency", U::Ms},
    {"Onset Latency", U::Ms}, {"Peak Latency", U::Ms}, {"PS Latency", U::Ms}, {"Slope At", U::Ms},
    {"Interval", U::Ms}, {"Mean Interval", U::Ms}, {"Time to Peak", U::Ms}, {"Decay", U::Ms},
    {"Foot Dur", U::Ms}, {"P On", U::Ms}, {"P Peak", U::Ms}, {"P Off", U::Ms}, {"QRS On", U::Ms},
    {"R Peak", U::Ms}, {"QRS Off", U::Ms}, {"T On", U::Ms}, {"T Peak", U::Ms}, {"T Off", U::Ms},
    {"PR", U::Ms}, {"QRS", U::Ms}, {"QT", U::Ms}, {"RR", U::Ms}, {"QTc Bazett", U::Ms},
    {"QTc Frid", U::Ms}, {"dTime", U::Ms},
    // Derived.
    {"Area", U::SignalMs}, {"AHP Area", U::SignalMs}, {"Max Rise", U::SignalPerMs},
    {"Max Decay", U::SignalPerMs}, {"fEPSP Slope", U::SignalPerMs}, {"PSC Slope", U::SignalPerMs},
    {"Rise Slope", U::SignalPerMs}, {"Base Var", U::SignalSquared}, {"Frequency", U::Hz},
    {"Charge", U::Charge}, {"Foot Charge", U::Charge},
    // The diffusion model's fit is in concentrations whatever the channel.
    {"Release", U::Micromolar}, {"Vmax", U::MicromolarPerS}, {"Km", U::Micromolar},
    // Counts and ratios.
    {"R-Sqr", U::None}, {"N", U::None}, {"Po", U::None}, {"Count", U::None}, {"Adaptation", U::None},
    {"Molecules", U::None}, {"Iterations", U::None},
}};

}  // namespace

ColumnUnit UnitOfColumn(ResultKind kind, std::string_view title) {
    // The diffusion fit's residual SD is a concentration too.
    if (kind == ResultKind::Diffusion && title == "Stdev") return U::Micromolar;
    for (const auto& [name, unit] : kUnits)
        if (name == title) return unit;
    return U::None;
}

std::string UnitText(ColumnUnit unit, std::string_view signalUnit) {
    const std::string s(signalUnit);
    switch (unit) {
        case U::None: return {};
        case U::Ms: return "ms";
        case U::Hz: return "Hz";
        case U::Micromolar: return "µM";
        case U::MicromolarPerS: return "µM/s";
        default: break;
    }
    if (s.empty()) return {};
    switch (unit) {
        case U::Signal: return s;
        case U::SignalMs: return s + "·ms";
        case U::SignalPerMs: return s + "/ms";
        case U::SignalSquared: return s + "²";
        case U::Charge:
            // A current's integral over seconds: the prefix carries over (pA·s = pC).
            if (s.size() == 2 && s[1] == 'A') return std::string(1, s[0]) + "C";
            if (s == "µA") return "µC";
            if (s == "A") return "C";
            return s + "·s";
        default: return {};
    }
}

std::string ColumnHeading(ResultKind kind, std::string_view title, std::string_view signalUnit) {
    const std::string unit = UnitText(UnitOfColumn(kind, title), signalUnit);
    std::string heading(title);
    return unit.empty() ? heading : heading + " (" + unit + ")";
}

}  // namespace vess::group
