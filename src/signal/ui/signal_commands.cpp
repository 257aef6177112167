// The Signal menu of the main window: the digital filter (its form, the
// frequency response, applying and removing it, the key that switches the
// trace view between the filtered and the recorded trace, the trace that
// detection reads), noise measures and spectrum, difference and
// variance-mean traces of the displayed screen (or of the stretch between
// the cursors), the event-free ABF file, sweep start times into a work array
// and a picture series of screens.
#include <QDialog>

#include <optional>
#include <string>

#include "app/job_runner.h"
#include "detection/ui/trace_view.h"
#include "graphs/ui/graph_frame.h"
#include "recording/job.h"
#include "recording/template_header.h"
#include "recording/command_result.h"
#include "recording/ui/command_registry.h"
#include "recording/ui/tool_windows.h"
#include "recording/workspace.h"
#include "signal/event_free_file.h"
#include "signal/filter_commands.h"
#include "signal/filter_texts.h"
#include "signal/signal_tool_commands.h"
#include "signal/synch_array.h"
#include "signal/tool_texts.h"
#include "signal/ui/filter_dialog.h"
#include "statistics/ui/data_analysis_window.h"

namespace vess {
namespace {

constexpr const char* kMenu = "&Signal";

QString Q(std::string_view text) { return QString::fromUtf8(text.data(), qsizetype(text.size())); }

void Show(CommandHost& host, const Outcome<PlotData>& plot) {
    if (ShowFailure(host.Asker(), plot.status())) ShowPlot(host.Tools(), plot.value());
}

bool FilterApplied(const CommandState& s) { return s.RecordingOpen() && s.ws.recording->HasFiltered(); }

void ShowResponse(CommandHost& host, const FilterChoice& choice) {
    Workspace& ws = host.Ws();
    if (!ws.recording) return;
    const double fs = SampleRateHz(*ws.recording);
    if (const std::string why = FilterChoiceProblem(choice, fs); !why.empty())
        return host.Asker().Message(texts::kFilterCaption, why);
    ShowPlot(host.Tools(), FilterResponsePlot(choice, fs));
}

void ApplyFilter(CommandHost& host, const FilterChoice& choice) {
    Workspace& ws = host.Ws();
    if (host.Busy()) return;
    auto request = PrepareFilter(ws, choice);
    if (!ShowFailure(host.Asker(), request.status())) return;
    host.Jobs().Start(MakeJob(std::string(texts::kFilterCaption),
                              [r = std::move(request.value())](const JobProgress& progress) {
                                  return FilterFromFile(r, [&](double done) { return progress(done, {}); });
                              },
                              [&host](FilteredChannel filtered) {
                                  if (!ShowFailure(host.Asker(), AttachFiltered(host.Ws(), std::move(filtered)))) return;
                                  host.Ws().showFiltered = true;
                                  host.RedrawTrace(true);
                              }),
                      host.Tools().Owner());
}

void RemoveFilterCommand(CommandHost& host) {
    RemoveFilter(host.Ws());
    host.RedrawTrace(true);
}

void OpenFilterDialog(CommandHost& host) {
    Workspace& ws = host.Ws();
    if (!ws.recording) return host.Asker().Message(texts::kFilterCaption, texts::kFilterNoRecording);
    host.Tools().Show<FilterDialog>([&host, &ws](QWidget* owner) {
        auto* d = new FilterDialog(FilterChoiceFromSettings(ws.settings), SampleRateHz(*ws.recording), owner);
        QObject::connect(d, &FilterDialog::ResponseRequested, owner,
                         [&host](const FilterChoice& c) { ShowResponse(host, c); });
        QObject::connect(d, &FilterDialog::ApplyRequested, owner,
                         [&host](const FilterChoice& c) { ApplyFilter(host, c); });
        QObject::connect(d, &FilterDialog::RemoveRequested, owner, [&host] { RemoveFilterCommand(host); });
        QObject::connect(d, &QDialog::finished, d, &QObject::deleteLater);
        return d;
    });
}

// The stretch between the cursors when both are placed, else the screen.
std::optional<CursorSpan> CursorsOf(CommandHost& host) {
    const TraceView* trace = host.Trace();
    const auto c = trace->CursorsOn() ? trace->Cursors() : std::nullopt;
    if (!c) return std::nullopt;
    return CursorSpan{c->index1, c->index2};
}

void NoiseSpectrum(CommandHost& host) {
    auto request = PrepareNoiseSpectrum(host.Ws(), host.Asker(), CursorsOf(host));
    if (!ShowFailure(host.Asker(), request.status())) return;
    host.Jobs().Start(MakeJob(std::string(tool_texts::kSpectrumMenu),
                              [r = std::move(request.value())](const JobProgress&) { return NoiseSpectrumPlot(r); },
                              [&host](PlotData plot) { ShowPlot(host.Tools(), plot); }),
                      host.Tools().Owner());
}

// Asks here, writes as a job over its own copy of the recording, closes here.
void EventFree(CommandHost& host) {
    const auto folder = host.Ws().iniPath.parent_path();
    EnsureTemplateHeader(folder);  // our own template, made when missing
    Outcome<EventFreeRequest> request = PrepareEventFree(host.Ws(), host.Asker(), folder);
    if (!request) return void(ShowFailure(host.Asker(), request.status()));
    const std::filesystem::path target = request->target;
    host.Jobs().Start(MakeJob(std::string(tool_texts::kEventFreeMenu),
                              [r = std::move(request.value())](const JobProgress& progress) {
                                  return WriteEventFree(r, progress);
                              },
                              [&host, target](const Outcome<EventFreeWritten>& written) {
                                  ShowFailure(host.Asker(), EventFreeClosing(host.Asker(), target, written));
                              }),
                      host.Tools().Owner());
}

void SynchArray(CommandHost& host) {
    if (!ShowFailure(host.Asker(), SynchArrayCommand(host.Ws(), host.Asker()).status())) return;
    if (auto* w = host.Tools().Find<DataAnalysisWindow>()) w->ReloadArrays();
}

void PictureSeries(CommandHost& host) {
    const auto written = PictureSeriesCommand(host.Ws(), host.Asker(), [&host](int32_t, const std::filesystem::path& file) {
        host.RedrawTrace(false);
        return host.Trace()->grab().save(QString::fromStdString(file.string()), "PNG");
    });
    ShowFailure(host.Asker(), written.status());
    host.RedrawTrace(false);
}

void AddFilterCommands(CommandRegistry& r, double& order) {
    r.Add({.objectName = "menu_Filter",
           .menuPath = kMenu,
           .caption = QObject::tr("&Digital Filter..."),
           .toolTip = "Low- or high-pass filter of the channel, its frequency response",
           .order = order++,
           .run = OpenFilterDialog});
    r.Add({.objectName = "menu_ShowFiltered",
           .menuPath = kMenu,
           .caption = QObject::tr("Show &Filtered Trace"),
           .keys = {QKeySequence(Qt::SHIFT | Qt::Key_F)},
           .toolTip = "Show the filtered or the recorded trace (Shift+F)",
           .order = order++,
           .enabledWhen = FilterApplied,
           .toggle =
               [](CommandHost& host, bool) {
                   host.Ws().showFiltered = !host.Ws().showFiltered;
                   host.RedrawTrace(true);
               },
           .checkedWhen = [](const CommandState& s) { return FilterApplied(s) && s.ws.showFiltered; }});
    r.Add({.objectName = "menu_DetectOnFiltered",
           .menuPath = kMenu,
           .caption = QObject::tr("Detect on the filtered trace"),
           .toolTip = "Detection and measurement read the filtered trace while a filter is applied",
           .order = order++,
           .toggle =
               [](CommandHost& host, bool on) {
                   SetDetectOnFiltered(host.Ws(), on);
                   host.RedrawTrace(false);
               },
           .checkedWhen = [](const CommandState& s) { return s.ws.settings.detectOnFiltered; }});
    r.Add({.objectName = "menu_RemoveFilter",
           .menuPath = kMenu,
           .caption = QObject::tr("&Remove Filter"),
           .toolTip = "Go back to the recorded trace",
           .order = order++,
           .enabledWhen = FilterApplied,
           .run = RemoveFilterCommand});
}

void AddToolCommands(CommandRegistry& r, double& order) {
    using namespace tool_texts;
    // The tools read the recording: they wait for a run or a job.
    const auto add = [&](const char* name, std::string_view caption, void (*run)(CommandHost&),
                         bool separatorBefore = false) {
        r.Add({.objectName = name,
               .menuPath = kMenu,
               .caption = Q(caption),
               .order = order++,
               .separatorBefore = separatorBefore,
               .enabledWhen = WhenRecordingOpenAndIdle,
               .run =
                   [run](CommandHost& host) {
                       if (host.Busy() || !host.Ws().recording) return;
                       run(host);
                   }});
    };
    add("menu_NoiseMeasures", kNoiseMenu,
        [](CommandHost& h) { ShowFailure(h.Asker(), NoiseMeasuresCommand(h.Ws(), h.Asker(), CursorsOf(h)).status()); }, true);
    add("menu_NoiseSpectrum", kSpectrumMenu, NoiseSpectrum);
    r.Add({.objectName = "menu_LineFrequency60",
           .menuPath = kMenu,
           .caption = Q(kLineFrequencyMenu),
           .order = order++,
           .toggle = [](CommandHost& host, bool on) { host.Ws().settings.lineFrequencyHz = on ? 60 : 50; },
           .checkedWhen = [](const CommandState& s) { return s.ws.settings.lineFrequencyHz == 60; }});
    add("menu_DifferenceTrace", kDifferenceMenu,
        [](CommandHost& h) { Show(h, DifferenceTraceCommand(h.Ws(), CursorsOf(h))); });
    add("menu_VarianceMean", kVarianceMeanMenu,
        [](CommandHost& h) { Show(h, VarianceMeanCommand(h.Ws(), h.Asker(), CursorsOf(h))); });
    add("menu_EventFree", kEventFreeMenu, EventFree, true);
    add("menu_SynchArray", kSynchMenu, SynchArray);
    add("menu_PictureSeries", kPictureMenu, PictureSeries);
}

void AddSignalCommands(CommandRegistry& r) {
    r.AddMenu({kMenu, "", -30});
    double order = 0;
    AddFilterCommands(r, order);
    AddToolCommands(r, order);
}

const CommandRegistration registration{AddSignalCommands};

}  // namespace
}  // namespace vess
