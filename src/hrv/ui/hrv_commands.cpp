// The heart-rate menu of the main window: the RR plots and exports, the beat
// scans and the three heart-rate windows, all over the open events.
#include <QMenu>

#include "graphs/ui/graph_frame.h"
#include "hrv/plot_commands.h"
#include "hrv/scans.h"
#include "hrv/tachogram.h"
#include "hrv/ui/geometric_window.h"
#include "hrv/ui/spectrum_window.h"
#include "hrv/ui/time_domain_window.h"
#include "recording/template_header.h"
#include "recording/ui/command_registry.h"
#include "recording/ui/tool_windows.h"
#include "recording/workspace.h"

namespace vess {
namespace {

constexpr const char* kMenu = "Heart &Rate";

void Show(CommandHost& host, const Outcome<PlotData>& plot) {
    if (ShowFailure(host.Asker(), plot.status())) ShowPlot(host.Tools(), plot.value());
}

// A window deleted when closed, so that the next opening reads the events
// afresh.
template <class W>
W* Closing(W* w) {
    w->setAttribute(Qt::WA_DeleteOnClose);
    return w;
}

void AddHeartRateCommands(CommandRegistry& r) {
    r.AddMenu({kMenu, "menu_HeartRate", 10});
    double order = 0;
    // Every command may sort the events by time or regroup them: the grid
    // and trace are redrawn after each.
    const auto add = [&](const char* menu, const char* name, const char* caption, auto command,
                         bool separatorBefore = false) {
        r.Add({.objectName = name,
               .menuPath = menu,
               .caption = QObject::tr(caption),
               .order = order++,
               .separatorBefore = separatorBefore,
               .run =
                   [command](CommandHost& host) {
                       command(host);
                       host.Redraw(true);
                   }});
    };
    add(kMenu, "menu_HRV", "&Time Domain Measurements...", [](CommandHost& h) {
        h.Tools().Show<hrv::TimeDomainWindow>([&h](QWidget* owner) {
            return Closing(new hrv::TimeDomainWindow(h.Ws(), h.Asker(), h.Jobs(),
                                                     h.Ws().iniPath.parent_path(), owner));
        });
    });
    add(kMenu, "menu_HRV_Geo", "&Geometrical Methods...", [](CommandHost& h) {
        h.Tools().Show<hrv::GeometricWindow>(
            [&h](QWidget* owner) { return Closing(new hrv::GeometricWindow(h.Ws(), h.Asker(), owner)); });
    });
    add(kMenu, "menu_HRV_Spectrum", "&Frequency Domain (Spectrum)...", [](CommandHost& h) {
        h.Tools().Show<hrv::SpectrumWindow>([&h](QWidget* owner) {
            return Closing(new hrv::SpectrumWindow(h.Ws(), h.Asker(), h.Jobs(), owner));
        });
    });
    add(kMenu, "menu_RRHisto", "RR Interval &Histogram...",
        [](CommandHost& h) { Show(h, hrv::RRHistogramCommand(h.Ws(), h.Asker())); }, true);
    add(kMenu, "menu_DeltaRRHisto", "&Delta RR Interval Histogram...",
        [](CommandHost& h) { Show(h, hrv::DeltaRRHistogramCommand(h.Ws(), h.Asker())); });
    add(kMenu, "menu_LorenzPlot", "&Lorenz Plot",
        [](CommandHost& h) { Show(h, hrv::LorenzPlotCommand(h.Ws(), h.Asker())); });
    const char* tachogram = "Heart &Rate/Ta&chogram";
    add(tachogram, "menu_TachogramPlot", "&Plot",
        [](CommandHost& h) { Show(h, hrv::TachogramPlotCommand(h.Ws(), h.Asker())); });
    add(tachogram, "menu_TachogramASCII", "Save as &ASCII...",
        [](CommandHost& h) { ShowFailure(h.Asker(), hrv::SaveTachogramAsciiCommand(h.Ws(), h.Asker())); });
    add(tachogram, "menu_TachogramABF", "Save as A&BF File...", [](CommandHost& h) {
        const auto folder = h.Ws().iniPath.parent_path();
        EnsureTemplateHeader(folder);  // our own template, made when missing
        ShowFailure(h.Asker(), hrv::SaveTachogramAbfCommand(h.Ws(), h.Asker(), folder));
    });
    add(kMenu, "menu_ScanMissingBeats", "Scan for &Missing Beats...",
        [](CommandHost& h) { ShowFailure(h.Asker(), hrv::ScanMissingBeatsCommand(h.Ws(), h.Asker())); }, true);
    add(kMenu, "menu_ScanRejectRRIntervals", "&Reject Short RR Intervals...",
        [](CommandHost& h) { ShowFailure(h.Asker(), hrv::ScanRejectRRIntervalsCommand(h.Ws(), h.Asker())); });
}

const CommandRegistration registration{AddHeartRateCommands};

}  // namespace
}  // namespace vess
