// The heart-rate plots of the main form's menus, over every interval of the
// events (in time order, asked for when not): menu_RRHisto,
// menu_DeltaRRHisto, menu_LorenzPlot and menu_TachogramPlot.
#pragma once

#include <optional>

#include "graphs/plot_data.h"
#include "recording/command_result.h"
#include "recording/dialogs.h"

namespace vess {
struct Workspace;
}

namespace vess::hrv {

// The bin question of the histograms ("Bin Size"; an empty answer or 0
// stops), the bin rule with its limit ("Too many bins"), then the plot.
// Cancelled when a question was cancelled or there are too few beats;
// failed for too many bins.
Outcome<PlotData> RRHistogramCommand(Workspace& ws, Dialogs& dialogs);
Outcome<PlotData> DeltaRRHistogramCommand(Workspace& ws, Dialogs& dialogs);
Outcome<PlotData> LorenzPlotCommand(Workspace& ws, Dialogs& dialogs);
Outcome<PlotData> TachogramPlotCommand(Workspace& ws, Dialogs& dialogs);

}  // namespace vess::hrv
