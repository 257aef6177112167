// A plot's numbers as text, for the clipboard and for files: tab-separated
// columns, one pair (x, y) per series, or a triple when a series carries
// colour values; a colour map becomes an x, y, z column triple.
#pragma once

#include <string>
#include <string_view>

#include "graphs/plot.h"

namespace vess {

// The save dialog of every picture of a plot: the format follows the
// extension typed (PNG, SVG or PDF), PNG when there is none.
inline constexpr std::string_view kPictureFilter = "Picture (*.png *.svg *.pdf)";
inline constexpr std::string_view kPictureExtension = "png";

// The first line holds the column titles: the x axis text (or "X") and the
// series' name (or the y axis text, or "Y"), and the series' zAxis (or "Z")
// for colour-coded points. Rows follow up to the longest series; a shorter
// series leaves its cells empty. Lines end with CR LF, as other programs
// expect from pasted tables; numbers are in their shortest exact form.
std::string PlotToTabSeparated(const PlotData& plot);

}  // namespace vess
