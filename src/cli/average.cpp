// vess average FILE.EVT --group G [--align peak|rise|rise50] [--blocks B]
// [--baseline] [--type average|scaled] [--csv OUT.csv]: the average of a
// group's events, exactly the trace 0 the group analysis window draws, as
// time (ms) and value (units).
#include <fstream>
#include <iostream>
#include <map>

#include <fmt/format.h>

#include "cli/commands.h"
#include "cli/named_recording.h"
#include "group_analysis/trace_set.h"
#include "recording/file_io.h"

namespace vess::cli {

namespace {

std::string AverageCsv(const Recording& rec, const group::TraceSet& set) {
    std::string out = fmt::format("Time (ms),Value ({})\n", rec.Units());
    const auto row = set.Row(0);
    for (int32_t j = 0; j < set.length; ++j)
        out += fmt::format("{:.6g},{:.9g}\n", set.TimeMs(j), rec.Bit2pA(row[std::size_t(j)]));
    return out;
}

}  // namespace

void AddAverageCommand(CLI::App& app) {
    struct Options {
        std::string file, align = "peak", type = "average", csv;
        int group = 1;
        double blocks = 1;
        bool baseline = false;
    };
    auto o = std::make_shared<Options>();
    auto* cmd = app.add_subcommand("average", "Average the events of one group of an event file");
    cmd->add_option("file", o->file, "event file (.EVT) beside its data file")->required();
    cmd->add_option("--group", o->group, "group number")->required()->check(CLI::Range(0, 255));
    cmd->add_option("--align", o->align, "alignment point")
        ->check(CLI::IsMember({"peak", "rise", "rise50"}));
    cmd->add_option("--blocks", o->blocks, "trace length in 256-point blocks")
        ->check(CLI::PositiveNumber);
    cmd->add_flag("--baseline", o->baseline, "subtract each event's baseline");
    cmd->add_option("--type", o->type, "plain or peak-scaled average")
        ->check(CLI::IsMember({"average", "scaled"}));
    cmd->add_option("--csv", o->csv, "write the trace to this CSV file ('-' for standard output)");
    cmd->callback([o] {
        const EventFileContents f = ReadEventFile(o->file);
        if (!f.Ok()) {
            std::cerr << "vess average: " << o->file << ": " << DescribeProblem(f) << "\n";
            throw CLI::RuntimeError(1);
        }
        const auto rec = OpenNamedRecording(o->file, f);
        if (!rec) {
            std::cerr << "vess average: the data file " << f.storedName << " is not beside "
                      << o->file << "\n";
            throw CLI::RuntimeError(1);
        }
        const std::map<std::string, group::Alignment> aligns = {
            {"peak", group::Alignment::Peak}, {"rise", group::Alignment::RiseTime},
            {"rise50", group::Alignment::Rise50}};
        EventTable events;
        events.Assign(f.records);
        const group::TraceSetOptions options{
            .group = o->group,
            .type = o->type == "scaled" ? group::AnalysisType::ScaledAverage
                                        : group::AnalysisType::Average,
            .alignment = aligns.at(o->align),
            .blocks = o->blocks,
            .baselineAdjust = o->baseline};
        const group::TraceSet set = group::BuildGroupTraceSet(*rec, events, f.params, options);
        if (set.Empty()) {
            std::cerr << "vess average: no event in group " << o->group << "\n";
            throw CLI::RuntimeError(1);
        }
        const std::string csv = AverageCsv(*rec, set);
        const std::string count = fmt::format("Traces averaged: {}\n", set.count);
        if (o->csv.empty()) {
            std::cout << count << csv << std::flush;
            return;
        }
        std::cerr << count;
        if (o->csv == "-") {
            std::cout << csv << std::flush;
        } else if (const std::string error = WriteFileAtomic(o->csv, csv); !error.empty()) {
            std::cerr << "vess average: " << error << "\n";
            throw CLI::RuntimeError(1);
        }
    });
}

}  // namespace vess::cli
