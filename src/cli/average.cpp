// vess average FILE.EVT --group G [--align peak|rise|rise50] [--blocks B]
// [--baseline] [--type average|scaled] [--csv OUT.csv]: the average of a
// group's events, exactly the trace 0 the group analysis window draws, as
// time (ms) and value (units).
#include <cmath>
#include <iterator>
#include <iostream>
#include <map>

#include <fmt/format.h>

#include "cli/commands.h"
#include "cli/named_recording.h"
#include "group_analysis/trace_set.h"
#include "recording/event_record.h"
#include "recording/file_io.h"

namespace vess::cli {

namespace {

// The average as CSV, handed out a few thousand lines at a time so that a
// long trace is never held as one text.
class AverageCsv {
public:
    AverageCsv(const Recording& rec, const group::TraceSet& set) : rec_(rec), set_(set) {
        chunk_ = fmt::format("Time (ms),Value ({})\n", rec.Units());
    }
    std::span<const uint8_t> Next() {
        if (!headerGiven_) {
            headerGiven_ = true;
            return Bytes();
        }
        chunk_.clear();
        const auto row = set_.Row(0);
        for (int lines = 0; next_ < set_.length && lines < 4096; ++lines, ++next_)
            fmt::format_to(std::back_inserter(chunk_), "{:.6g},{:.9g}\n", set_.TimeMs(next_),
                           rec_.Bit2pA(row[std::size_t(next_)]));
        return Bytes();
    }

private:
    std::span<const uint8_t> Bytes() const {
        return {reinterpret_cast<const uint8_t*>(chunk_.data()), chunk_.size()};
    }
    const Recording& rec_;
    const group::TraceSet& set_;
    std::string chunk_;
    bool headerGiven_ = false;
    int32_t next_ = 0;
};

void Fail(const std::string& message) {
    std::cerr << "vess average: " << message << "\n";
    throw CLI::RuntimeError(1);
}

// The first event of the group whose time is not a number (1-based), or 0.
int32_t EventWithoutTime(const EventTable& events, int group) {
    for (int32_t i = 1; i <= events.Count(); ++i)
        if (events[i].group == group && !std::isfinite(events[i].time)) return i;
    return 0;
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
    cmd->add_option("--group", o->group, "group number")->required()->check(CLI::Range(0, kLastGroup));
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
        if (group::TracePoints(o->blocks) < 1)
            Fail(fmt::format("--blocks {:g} gives a trace of no point: at least 1/256 of a block is needed",
                             o->blocks));
        if (const int32_t bad = EventWithoutTime(events, o->group))
            Fail(fmt::format("event {} of group {} has no time (not a number); it cannot be aligned", bad,
                             o->group));
        const std::string tooLarge =
            group::TraceSetSizeProblem(group::TraceSetBytes(*rec, events, options, true));
        if (!tooLarge.empty()) Fail(tooLarge);
        const group::TraceSet set = group::BuildGroupAverage(*rec, events, f.params, options);
        if (set.Empty()) Fail(fmt::format("no event in group {}", o->group));
        const std::string count = fmt::format("Traces averaged: {}\n", set.count);
        AverageCsv csv(*rec, set);
        if (o->csv.empty() || o->csv == "-") {
            if (o->csv.empty()) std::cout << count;
            else std::cerr << count;
            for (auto bytes = csv.Next(); !bytes.empty(); bytes = csv.Next())
                std::cout.write(reinterpret_cast<const char*>(bytes.data()), std::streamsize(bytes.size()));
            std::cout << std::flush;
            return;
        }
        std::cerr << count;
        if (const std::string error = WriteFileAtomic(o->csv, [&csv] { return csv.Next(); }); !error.empty())
            Fail(error);
    });
}

}  // namespace vess::cli
