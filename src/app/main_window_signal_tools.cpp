// The noise and trace tools of the signal menu: noise measures and spectrum,
// difference and variance-mean traces of the displayed screen (or of the
// stretch between the cursors), the event-free ABF file, sweep start times
// into a work array and a picture series of screens.
#include <QAction>
#include <QMenu>
#include <QSignalBlocker>
#include <QString>

#include "app/job_runner.h"
#include "app/main_window.h"
#include "detection/ui/trace_view.h"
#include "graphs/ui/graph_frame.h"
#include "recording/template_header.h"
#include "signal/event_free_file.h"
#include "signal/signal_tool_commands.h"
#include "signal/synch_array.h"
#include "signal/tool_texts.h"

namespace vess {

namespace {

QString Q(std::string_view text) { return QString::fromUtf8(text.data(), qsizetype(text.size())); }

void Show(const std::optional<PlotData>& plot) {
    if (plot) ShowPlot(*plot);
}

}  // namespace

void MainWindow::AddSignalToolActions(QMenu* m) {
    using namespace tool_texts;
    const auto add = [&](QMenu* menu, const char* name, std::string_view text, std::function<void()> run) {
        QAction* a = menu->addAction(Q(text));
        a->setObjectName(name);
        connect(a, &QAction::triggered, this, [this, run] {
            if (Busy() || !ws_.recording) return;
            run();
        });
        actions_[name] = a;
        return a;
    };
    // The stretch between the cursors when both are placed, else the screen.
    const auto cursors = [this]() -> std::optional<CursorSpan> {
        const auto c = trace_->CursorsOn() ? trace_->Cursors() : std::nullopt;
        if (!c) return std::nullopt;
        return CursorSpan{c->index1, c->index2};
    };
    add(m, "menu_NoiseMeasures", kNoiseMenu, [=, this] { NoiseMeasuresCommand(ws_, dialogs_, cursors()); });
    add(m, "menu_NoiseSpectrum", kSpectrumMenu, [=, this] {
        auto request = PrepareNoiseSpectrum(ws_, dialogs_, cursors());
        if (!request) return;
        jobs_->Start(MakeJob(std::string(kSpectrumMenu),
                             [r = std::move(*request)](const JobProgress&) { return NoiseSpectrumPlot(r); },
                             [](PlotData plot) { Show(plot); }),
                     this);
    });
    QAction* line = m->addAction(Q(kLineFrequencyMenu));
    line->setObjectName("menu_LineFrequency60");
    line->setCheckable(true);
    line->setChecked(ws_.settings.lineFrequencyHz == 60);
    connect(line, &QAction::toggled, this, [this](bool on) { ws_.settings.lineFrequencyHz = on ? 60 : 50; });
    actions_["menu_LineFrequency60"] = line;
    // The settings may have been loaded since the menu was built.
    connect(m, &QMenu::aboutToShow, line, [this, line] {
        const QSignalBlocker block(line);
        line->setChecked(ws_.settings.lineFrequencyHz == 60);
    });
    add(m, "menu_DifferenceTrace", kDifferenceMenu,
        [=, this] { Show(DifferenceTraceCommand(ws_, dialogs_, cursors())); });
    add(m, "menu_VarianceMean", kVarianceMeanMenu,
        [=, this] { Show(VarianceMeanCommand(ws_, dialogs_, cursors())); });
    m->addSeparator();
    add(m, "menu_EventFree", kEventFreeMenu, [this] {
        const auto folder = ws_.iniPath.parent_path();
        EnsureTemplateHeader(folder);  // our own template, made when missing
        ShowFailure(dialogs_, EventFreeCommand(ws_, dialogs_, folder));
    });
    add(m, "menu_SynchArray", kSynchMenu, [this] {
        if (SynchArrayCommand(ws_, dialogs_)) ArraysChanged();
    });
    add(m, "menu_PictureSeries", kPictureMenu, [this] {
        PictureSeriesCommand(ws_, dialogs_, [this](int32_t, const std::filesystem::path& file) {
            RefreshTrace();
            return trace_->grab().save(QString::fromStdString(file.string()), "PNG");
        });
        RefreshTrace();
    });
}

}  // namespace vess
