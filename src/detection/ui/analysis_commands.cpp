// The Analysis menu of the main window: the analysis buttons' commands
// (this window, the next, non-stop, stop, reset), the commands on the
// selected event, noise and threshold, and the detection method's
// suggestion, kernel and accuracy check. Each is a core command followed by
// a redraw.
#include "detection/ui/analysis_commands.h"

#include <QObject>

#include "app/job_runner.h"
#include "detection/accuracy_check.h"
#include "detection/double_peak.h"
#include "detection/editing.h"
#include "detection/kernel_command.h"
#include "detection/method_texts.h"
#include "detection/noise_commands.h"
#include "detection/point_commands.h"
#include "detection/screen_commands.h"
#include "detection/suggest_from_recording.h"
#include "detection/ui/accuracy_window.h"
#include "detection/ui/texts.h"
#include "graphs/ui/graph_frame.h"
#include "recording/command_result.h"
#include "recording/ui/command_registry.h"
#include "recording/ui/tool_windows.h"
#include "recording/workspace.h"

namespace vess {

void RecalculateSelectedEvent(CommandHost& host) {
    Workspace& ws = host.Ws();
    if (!ws.HasSelectedEvent() || host.Busy()) return;
    const auto r = RecalculateEvent(ws, ws.selectedEvent);
    host.Redraw(ShowFailure(host.Asker(), r.status()) && r->eventIndex > 0);
}

void ShowDoublePeak(CommandHost& host, const Outcome<DoublePeakResult>& r, int32_t countBefore) {
    Workspace& ws = host.Ws();
    const bool stored = ws.events.Count() != countBefore;
    if (ShowFailure(host.Asker(), r.status()) && r->eventIndex > 0) ws.selectedEvent = r->eventIndex;
    host.EventsStored(ws.events.Count() - countBefore);
    host.Redraw(stored);
}

namespace {

using namespace ui_text;

constexpr const char* kMenu = "&Analysis";

bool WhenEventsInRecordingAndIdle(const CommandState& s) { return WhenEventsAndIdle(s) && s.RecordingOpen(); }

// Detection of this or the next window: the last event found is selected.
template <class Detect>
void DetectScreen(CommandHost& host, Detect detect) {
    Workspace& ws = host.Ws();
    if (!ws.recording || host.NonStopRunning() || !host.ReadyToDetect(false)) return;
    const AnalyzeWindowResult result = detect(ws);
    ShowFailure(host.Asker(), result.status);
    const int32_t added = result.eventsAdded;
    host.EventsStored(added);
    if (added > 0) ws.selectedEvent = ws.events.Count();
    host.Redraw(false);
}

void NonStop(CommandHost& host) {
    if (!host.Ws().recording || host.NonStopRunning() || !host.ReadyToDetect(true)) return;
    host.StartNonStop();
}

void Reset(CommandHost& host) {
    Workspace& ws = host.Ws();
    if (host.NonStopRunning() || !ResetEvents(ws, host.Asker())) return;
    ws.selectedEvent = 0;
    host.ClearReadouts();
    host.Redraw(true);
}

void DoublePeak(CommandHost& host) {
    Workspace& ws = host.Ws();
    if (host.Busy() || !ws.recording) return;
    const int32_t before = ws.events.Count();
    ShowDoublePeak(host, AnalyzeDoublePeak(ws, ws.selectedEvent), before);
}

void ScanDoublePeak(CommandHost& host) {
    Workspace& ws = host.Ws();
    if (host.Busy() || !ws.recording) return;
    // The scan inserts rows: keep the same event selected, not the same row.
    const bool hadSelection = ws.HasSelectedEvent();
    const EventRecord selected = hadSelection ? ws.events[ws.selectedEvent] : EventRecord{};
    const auto scan = ScanDoublePeaks(ws, host.Asker());
    const int32_t added = ShowFailure(host.Asker(), scan.status()) ? scan->peaksAdded : 0;
    if (hadSelection && added > 0) {
        for (int32_t k = 1; k <= ws.events.Count(); ++k)
            if (ws.events[k] == selected) {
                ws.selectedEvent = k;
                break;
            }
    }
    KeepSelectionValid(ws);
    host.Redraw(added > 0);
}

void BaselineAndThreshold(CommandHost& host) {
    if (host.Busy() || !host.Ws().recording) return;
    // Yes changes ThresholdAmplitude: the parameter boxes show it at once.
    const auto threshold = BaselineThreshold(host.Ws(), host.Asker());
    if (ShowFailure(host.Asker(), threshold.status()) && threshold->applied) host.RedrawAll(false);
}

void RmsNoise(CommandHost& host) {
    if (host.Busy() || !host.Ws().recording) return;
    ShowFailure(host.Asker(), ShowRmsNoise(host.Ws(), host.Asker()).status());
    host.RedrawTrace(false);
}

// The check runs as a job over a copy of the channel's first minutes: the
// main window stays usable, and the table and plot come when it ends. Asked
// again while one runs, the window is only raised.
void CheckAccuracy(CommandHost& host) {
    if (host.NonStopRunning()) return;
    Workspace& ws = host.Ws();
    const auto make = [&host](QWidget* owner) {
        auto* w = new AccuracyWindow(host.Jobs(), owner);
        QObject::connect(w, &AccuracyWindow::Finished, owner,
                         [&host](const AccuracyReport& report) { ShowPlot(host.Tools(), AccuracyPlot(report)); });
        return w;
    };
    // Shown and raised, not activated: the keys stay with the trace.
    AccuracyWindow* check = host.Tools().Find<AccuracyWindow>();
    if (check && check->Running()) {
        check->show();
        check->raise();
        return;
    }
    if (host.Jobs().Running()) return;
    if (!ws.recording) {
        host.Asker().Message(method_texts::kCheckCaption, method_texts::kNoRecording);
        return;
    }
    Outcome<AccuracyInput> input = PrepareAccuracyCheck(ws, AccuracyOptions{});
    if (!ShowFailure(host.Asker(), input.status())) return;
    if (!check) check = host.Tools().Show<AccuracyWindow>(make);
    check->Start(std::move(input.value()));
    check->show();
    check->raise();
}

void AddAnalysisCommands(CommandRegistry& r) {
    r.AddMenu({kMenu, "menu_Analysis", -70});
    double order = 0;
    const auto add = [&](const char* name, const char* caption, QList<QKeySequence> keys, const char* tip,
                         bool (*enabled)(const CommandState&), void (*run)(CommandHost&),
                         bool separatorBefore = false) {
        r.Add({.objectName = name,
               .menuPath = kMenu,
               .caption = QObject::tr(caption),
               .keys = std::move(keys),
               .toolTip = tip ? QString(tip) : QString(),
               .order = order++,
               .separatorBefore = separatorBefore,
               .enabledWhen = enabled,
               .run = run});
    };
    add("menu_Analyze", "Analyze This Window", {QKeySequence(Qt::Key_F9)}, kTipAnalyze, WhenRecordingOpenAndIdle,
        [](CommandHost& h) {
            DetectScreen(h, [](Workspace& ws) { return AnalyzeCurrentScreen(ws); });
        });
    add("menu_AnalyzeNext", "Analyze Next Window", {QKeySequence(Qt::Key_F10), QKeySequence("N")},
        kTipAnalyzeNext, WhenRecordingOpenAndIdle, [](CommandHost& h) {
            DetectScreen(h, [&h](Workspace& ws) {
                NextWindowResult r = AnalyzeNextWindow(ws);
                if (r.moved) h.OfferScreen(std::move(r.screen));
                return r.analysis;
            });
        });
    add("menu_NonStop", "Non-stop Analysis", {QKeySequence(Qt::Key_F11)}, kTipNonStop, WhenRecordingOpenAndIdle,
        NonStop);
    add("menu_Stop", "Stop Non-stop Analysis", {QKeySequence(Qt::Key_F12)}, kTipStop,
        [](const CommandState& s) { return s.nonStopRunning; }, [](CommandHost& h) { h.StopNonStop(); });
    add("menu_Reset", "Reset (Erase All Events)...", {}, nullptr, WhenEventsAndIdle, Reset);
    add("menu_RecalculatePeak", "Recalculate Selected Event", {QKeySequence("I")}, kTipRecalculate,
        WhenEventSelectedAndIdle, RecalculateSelectedEvent, true);
    add("menu_DoublePeak", "Analyze Selected Event for Double Peak", {QKeySequence("L")}, kTipDoublePeak,
        WhenEventSelectedAndIdle, DoublePeak);
    add("menu_ScanDoublePeak", "Scan All Events for Double Peaks", {}, nullptr, WhenEventsInRecordingAndIdle,
        ScanDoublePeak);
    add("menu_BaselineThreshold", "Baseline and Threshold...", {}, nullptr, WhenRecordingOpenAndIdle,
        BaselineAndThreshold);
    add("menu_RMSNoise", "RMS Noise of This Window", {}, nullptr, WhenRecordingOpenAndIdle, RmsNoise);
    add("menu_SuggestFromRecording", method_texts::kSuggestAction, {}, nullptr, WhenRecordingOpenAndIdle,
        [](CommandHost& h) {
            if (h.Busy()) return;
            ShowFailure(h.Asker(), SuggestFromRecordingCommand(h.Ws(), h.Asker()));
            h.RedrawAll(false);
        },
        true);
    add("menu_LearnKernel", method_texts::kLearnKernelAction, {}, nullptr, WhenRecordingOpenAndIdle,
        [](CommandHost& h) {
            if (h.Busy()) return;
            ShowFailure(h.Asker(), LearnKernelCommand(h.Ws(), h.Asker()));
            h.RedrawAll(false);
        });
    add("menu_CheckAccuracy", method_texts::kCheckAction, {}, nullptr, WhenRecordingOpenAndIdle, CheckAccuracy);
}

const CommandRegistration registration{AddAnalysisCommands};

}  // namespace
}  // namespace vess
