// The unit of each column of the results grid, for its heading: the
// recording's unit for levels and amplitudes, ms for times, derived units
// for areas, slopes and charges, none for counts and ratios. The headings of
// saved and exported results keep the bare titles.
#pragma once

#include <string>
#include <string_view>

#include "group_analysis/result_row.h"

namespace vess::group {

enum class ColumnUnit {
    None,
    Signal,           // the recording's unit (pA, mV, ...)
    Ms,
    SignalMs,         // areas
    SignalPerMs,      // slopes
    SignalSquared,    // variances
    Hz,
    Charge,           // the time integral of a current in s: pC for pA
    Micromolar,
    MicromolarPerS,
};

// The unit of the column titled title in rows of the given kind.
ColumnUnit UnitOfColumn(ResultKind kind, std::string_view title);
// The unit as written after a value: "pA", "ms", "pA·ms", "pA/ms", "pA²",
// "Hz", "pC", "µM", "µM/s"; empty for None, and for the units built on the
// recording's when that is not known (empty).
std::string UnitText(ColumnUnit unit, std::string_view signalUnit);
// "Amplitude (pA)", "Tau1 (ms)", "R-Sqr".
std::string ColumnHeading(ResultKind kind, std::string_view title, std::string_view signalUnit);

}  // namespace vess::group
