#include "signal/filter_commands.h"

#include <algorithm>

#include <fmt/format.h>

#include "signal/filter_texts.h"

namespace vess {

FilterChoice FilterChoiceFromSettings(const Settings& s) {
    FilterChoice choice;
    choice.kind = FilterKind(std::clamp(s.filterKind, kMinFilterType, kMaxFilterType));
    choice.pass = s.filterPass == 1 ? FilterPass::High : FilterPass::Low;
    choice.cutoffHz = s.filterCutoffHz;
    choice.order = s.filterOrder;
    choice.rippleDb = s.filterRippleDb;
    choice.attenuationDb = s.filterAttenuationDb;
    choice.zeroPhase = s.filterZeroPhase;
    return choice;
}

void StoreFilterChoice(const FilterChoice& choice, Settings& s) {
    s.filterKind = int32_t(choice.kind);
    s.filterPass = choice.pass == FilterPass::High ? 1 : 0;
    s.filterCutoffHz = choice.cutoffHz;
    s.filterOrder = choice.order;
    s.filterRippleDb = choice.rippleDb;
    s.filterAttenuationDb = choice.attenuationDb;
    s.filterZeroPhase = choice.zeroPhase;
}

namespace {

// Checks the choice against the open recording, fails with why it is
// refused, and stores it in the settings when it is not.
CommandResult AcceptFilterChoice(Workspace& ws, const FilterChoice& choice) {
    std::string why = ws.recording ? FilterChoiceProblem(choice, SampleRateHz(*ws.recording))
                                   : std::string(texts::kFilterNoRecording);
    if (!why.empty()) return CommandResult::Failed(texts::kFilterCaption, std::move(why));
    StoreFilterChoice(choice, ws.settings);
    return CommandResult::Ok();
}

}  // namespace

Outcome<FilterRequest> PrepareFilter(Workspace& ws, const FilterChoice& choice) {
    if (CommandResult accepted = AcceptFilterChoice(ws, choice); !accepted) return accepted;
    return FilterRequest{ws.recording->Path(), ws.recording->Channel(), choice};
}

FilteredChannel FilterFromFile(const FilterRequest& request, const FilterProgress& progress) {
    AbfError error{};
    std::string detail;
    const auto recording = Recording::Open(request.recording, &error, &detail);
    if (!recording) return {nullptr, CommandResult::Failed(detail.empty() ? request.recording.string() : detail)};
    recording->SetChannel(request.channel);
    return FilterChannel(*recording, request.choice, progress);
}

CommandResult AttachFiltered(Workspace& ws, FilteredChannel f) {
    if (f.status.failed())
        return CommandResult::Failed(texts::kFilterCaption, texts::FilterFailedText(f.status.message()));
    if (!f.status) return f.status;
    if (!ws.recording) return CommandResult::Cancelled();  // closed while the filter ran
    ws.recording->AttachFiltered(std::move(f.counts));
    ws.recording->ReadFiltered(ws.settings.detectOnFiltered);
    return CommandResult::Ok();
}

CommandResult ApplyFilterCommand(Workspace& ws, const FilterChoice& choice, const FilterProgress& progress) {
    if (CommandResult accepted = AcceptFilterChoice(ws, choice); !accepted) return accepted;
    return AttachFiltered(ws, FilterChannel(*ws.recording, choice, progress));
}

void RemoveFilter(Workspace& ws) {
    if (ws.recording) ws.recording->DetachFiltered();
}

void SetDetectOnFiltered(Workspace& ws, bool on) {
    ws.settings.detectOnFiltered = on;
    if (ws.recording) ws.recording->ReadFiltered(on);
}

bool DetectsOnFiltered(const Workspace& ws) { return ws.recording && ws.recording->ReadsFiltered(); }

std::string FilterName(const FilterChoice& choice) {
    const std::string order = HasOrder(choice.kind) ? fmt::format(", order {}", choice.order) : "";
    return fmt::format("{} {}-pass {:.8g} Hz{}{}", KindCaption(choice.kind), PassName(choice.pass), choice.cutoffHz,
                       order, RunsBothWays(choice) ? ", zero phase" : "");
}

std::string ShownTraceName(const Workspace& ws) {
    if (!ws.showFiltered || !ws.recording || !ws.recording->HasFiltered()) return {};
    return "filtered: " + FilterName(FilterChoiceFromSettings(ws.settings));
}

PlotData FilterResponsePlot(const FilterChoice& choice, double sampleRateHz, int points) {
    PlotData plot;
    plot.title = fmt::format("{}: {}", texts::kFilterResponseTitle, FilterName(choice));
    plot.xAxis = texts::kFilterResponseX;
    plot.yAxis = texts::kFilterResponseY;
    plot.xLog = true;
    const FilterDesign d = DesignFilter(choice, sampleRateHz);
    if (!d.error.empty()) return plot;
    PlotSeries s;
    const double lo = std::max(0.1, sampleRateHz / 1e4), hi = 0.4999 * sampleRateHz;
    const double passes = RunsBothWays(choice) ? 2.0 : 1.0;
    for (int i = 0; i < points; ++i) {
        const double f = lo * std::pow(hi / lo, double(i) / (points - 1));
        s.x.push_back(f);
        // Floored so that the zeros of the stop band do not stretch the axis.
        s.y.push_back(std::max(-200.0, passes * DesignResponseDb(d, f, sampleRateHz)));
    }
    plot.series.push_back(std::move(s));
    plot.xRange = AxisRange{lo, hi};
    return plot;
}

}  // namespace vess
