// Trace and curve data as text: a header line, the column titles and one
// "time<TAB>amplitude" line per point, each amplitude divided by the
// normalisation factor the user gives. The same text goes to the clipboard
// (through a temporary file) or into a text file.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "group_analysis/decay_fit.h"
#include "group_analysis/trace_set.h"
#include "recording/command_result.h"
#include "recording/dialogs.h"

namespace vess::group {

// The curve the curve data commands put out: an extracted trace, or the
// last fitted curve.
struct ResultCurve {
    std::string header;          // the first line of the text
    std::vector<double> timeMs;
    std::vector<double> values;  // units
};

// "Group Analysis: " file " Group # " g, and " Trace # " t when given.
std::string GroupAnalysisHeader(const std::string& fileName, int group,
                                std::optional<int32_t> trace = std::nullopt);
// "Curve Fit Group # " g " Trace # " t.
std::string CurveFitHeader(int group, int32_t trace);

// Trace t of the set, in units against time from the start of the stretch.
ResultCurve TraceCurve(const TraceSet& set, const UnitScale& scale, int32_t t, std::string header);
// A fitted curve: values at points from, from + 1, ... of the set's traces.
ResultCurve FittedCurve(const TraceSet& set, int32_t from, const std::vector<double>& values,
                        std::string header);

// The text: header, "Time (ms) <TAB>Amplitude (units)", then the points,
// values divided by divideBy; lines end in CR LF.
std::string CurveText(const ResultCurve& curve, const std::string& units, double divideBy);

// Asks the normalisation factor; std::nullopt when cancelled or not a
// number. A factor of 0 leaves the values as they are.
std::optional<double> AskNormalization(Dialogs& dialogs);

// menu_copydata / menu_saveascii: asks which trace (0 = the average) and
// the factor, and gives that trace's text; cancelled for an empty set.
Outcome<std::string> TraceDataText(const TraceSet& set, const UnitScale& scale, const std::string& fileName,
                                   int group, Dialogs& dialogs);
// menu_extractcurvedata / menu_savecurvedata: asks the factor and gives the
// result curve's text; fails without a curve.
Outcome<std::string> CurveDataText(const std::optional<ResultCurve>& curve, const std::string& units,
                                   Dialogs& dialogs);

// Asks for a "Text File (*.txt)" name, asks before replacing an existing
// file, and writes the text.
CommandResult SaveTextFileCommand(const std::string& text, Dialogs& dialogs);

}  // namespace vess::group
