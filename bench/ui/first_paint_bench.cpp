// First paint of a 2-hour recording in the main window (offscreen): from the
// file being opened to the trace drawn. "OverviewFirst" reads the overview
// strip's extremes of the whole file before the paint, as the window did
// when the strip read them itself; "OverviewAsJob" is the window as it is,
// the overview read by a background job after the screen is drawn. The file
// is in the page cache for both (the first run reads it once).
// "NextWindow" presses Next window (threshold detection of the next screen
// and the trace's new frame, the paint itself left to the event loop), one
// screen an iteration, against the command line's detection of one screen.
// Its argument is how many events the table holds before the timing starts
// (screens pressed through untimed), to show the cost does not grow with it.
//
// The recording: VESS_LONG_ABF names one (e.g. made with
// `vess synth long.abf --seconds 7200`); otherwise a 2-hour 20 kHz file is
// synthesised into the temporary folder once and kept there.
#include <QApplication>
#include <QPushButton>

#include <benchmark/benchmark.h>

#include <filesystem>

#include "app/background_job.h"
#include "app/main_window.h"
#include "detection/overview.h"
#include "detection/ui/trace_view.h"
#include "recording/scripted_dialogs.h"
#include "recording/synth.h"

namespace {

std::filesystem::path LongRecording() {
    if (const char* named = std::getenv("VESS_LONG_ABF")) return named;
    const auto path = std::filesystem::temp_directory_path() / "vess_bench_2h.abf";
    if (!std::filesystem::exists(path)) {
        vess::SynthOptions options;
        options.seconds = 7200;
        if (const std::string why = vess::WriteSynthetic(path, vess::Synthesise(options)); !why.empty()) {
            std::fprintf(stderr, "cannot write %s: %s\n", path.c_str(), why.c_str());
            std::exit(1);
        }
    }
    return path;
}

void FirstPaint(benchmark::State& state, bool overviewFirst) {
    const QString path = QString::fromStdString(LongRecording().string());
    vess::Workspace ws;
    vess::ScriptedDialogs dialogs;
    vess::MainWindow window(ws, dialogs);
    window.resize(1400, 900);
    window.show();
    for (auto _ : state) {
        window.OpenPath(path);
        if (overviewFirst) benchmark::DoNotOptimize(vess::RecordingBlockExtremes(*ws.recording));
        benchmark::DoNotOptimize(window.Trace()->grab());
        state.PauseTiming();
        window.OverviewReader().Wait();  // each run starts with no read under way
        state.ResumeTiming();
    }
    state.counters["hours"] = double(ws.recording->PointsPerChannel()) * ws.recording->IntervalUs() / 3.6e9;
}

void BM_NextWindow(benchmark::State& state) {
    vess::Workspace ws;
    vess::ScriptedDialogs dialogs;
    vess::MainWindow window(ws, dialogs);
    window.resize(1400, 900);
    window.show();
    window.OpenPath(QString::fromStdString(LongRecording().string()));
    window.OverviewReader().Wait();
    auto* next = window.findChild<QPushButton*>("Command2");
    for (int32_t shown = -1; ws.events.Count() < state.range(0) && shown != ws.screenStartBlock;) {
        shown = ws.screenStartBlock;
        next->click();
    }
    for (auto _ : state) next->click();
    state.counters["events"] = double(ws.events.Count());
}

void BM_FirstPaint_OverviewFirst(benchmark::State& state) { FirstPaint(state, true); }
void BM_FirstPaint_OverviewAsJob(benchmark::State& state) { FirstPaint(state, false); }
BENCHMARK(BM_FirstPaint_OverviewFirst)->Unit(benchmark::kMillisecond)->Iterations(5);
BENCHMARK(BM_FirstPaint_OverviewAsJob)->Unit(benchmark::kMillisecond)->Iterations(5);
BENCHMARK(BM_NextWindow)->Arg(0)->Arg(10000)->Unit(benchmark::kMicrosecond)->Iterations(20000);

}  // namespace

int main(int argc, char** argv) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
