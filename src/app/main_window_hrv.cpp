// The heart-rate menu of the main window: the RR plots and exports, the beat
// scans and the three heart-rate windows, all over the open events.
#include <QMenu>
#include <QMenuBar>

#include "app/main_window.h"
#include "graphs/ui/graph_frame.h"
#include "hrv/plot_commands.h"
#include "hrv/scans.h"
#include "hrv/tachogram.h"
#include "hrv/ui/geometric_window.h"
#include "hrv/ui/spectrum_window.h"
#include "hrv/ui/time_domain_window.h"
#include "recording/template_header.h"
#include "recording/workspace.h"

namespace vess {

namespace {

void Show(const std::optional<PlotData>& plot) {
    if (plot) ShowPlot(*plot);
}

// One window of each kind, a child of the main window, raised when asked again.
template <class W, class... Args>
void ShowOnce(QWidget* owner, const char* objectName, Args&&... args) {
    W* w = owner->findChild<W*>(objectName);
    if (!w) {
        w = new W(std::forward<Args>(args)..., owner);
        w->setWindowFlag(Qt::Window);
        w->setAttribute(Qt::WA_DeleteOnClose);
    }
    w->show();
    w->raise();
    w->activateWindow();
}

}  // namespace

void MainWindow::BuildHeartRateMenu() {
    QMenu* m = menuBar()->addMenu(tr("Heart &Rate"));
    m->setObjectName("menu_HeartRate");
    actions_["menu_HeartRate"] = m->menuAction();
    // Every command may sort the events by time or regroup them: the grid
    // and trace are redrawn after each.
    const auto add = [this](QMenu* menu, const char* name, const QString& text, auto command) {
        QAction* a = AddAction(menu, name, text, {}, nullptr, nullptr);
        connect(a, &QAction::triggered, this, [this, command] {
            command();
            AfterEdit(true);
        });
    };
    add(m, "menu_HRV", tr("&Time Domain Measurements..."), [this] {
        ShowOnce<hrv::TimeDomainWindow>(this, "frmHRV", ws_, dialogs_, *jobs_, ws_.iniPath.parent_path());
    });
    add(m, "menu_HRV_Geo", tr("&Geometrical Methods..."),
        [this] { ShowOnce<hrv::GeometricWindow>(this, "frmHRVGeo", ws_, dialogs_); });
    add(m, "menu_HRV_Spectrum", tr("&Frequency Domain (Spectrum)..."),
        [this] { ShowOnce<hrv::SpectrumWindow>(this, "frmHRVSpectrum", ws_, dialogs_, *jobs_); });
    m->addSeparator();
    add(m, "menu_RRHisto", tr("RR Interval &Histogram..."),
        [this] { Show(hrv::RRHistogramCommand(ws_, dialogs_)); });
    add(m, "menu_DeltaRRHisto", tr("&Delta RR Interval Histogram..."),
        [this] { Show(hrv::DeltaRRHistogramCommand(ws_, dialogs_)); });
    add(m, "menu_LorenzPlot", tr("&Lorenz Plot"), [this] { Show(hrv::LorenzPlotCommand(ws_, dialogs_)); });
    QMenu* t = m->addMenu(tr("Ta&chogram"));
    add(t, "menu_TachogramPlot", tr("&Plot"), [this] { Show(hrv::TachogramPlotCommand(ws_, dialogs_)); });
    add(t, "menu_TachogramASCII", tr("Save as &ASCII..."), [this] { hrv::SaveTachogramAsciiCommand(ws_, dialogs_); });
    add(t, "menu_TachogramABF", tr("Save as A&BF File..."), [this] {
        const auto folder = ws_.iniPath.parent_path();
        EnsureTemplateHeader(folder);  // our own template, made when missing
        hrv::SaveTachogramAbfCommand(ws_, dialogs_, folder);
    });
    m->addSeparator();
    add(m, "menu_ScanMissingBeats", tr("Scan for &Missing Beats..."),
        [this] { hrv::ScanMissingBeatsCommand(ws_, dialogs_); });
    add(m, "menu_ScanRejectRRIntervals", tr("&Reject Short RR Intervals..."),
        [this] { hrv::ScanRejectRRIntervalsCommand(ws_, dialogs_); });
}

}  // namespace vess
