// vess filter FILE.abf [--channel N] --kind K [--pass P] --cutoff HZ [--order N]
// [--ripple DB] [--attenuation DB] [--zero-phase] [--response F,...]
// [--out FILTERED.abf]: the gain of the filter at given frequencies and the
// filtered channel as an ABF file.
#include <iostream>
#include <string>
#include <vector>

#include <fmt/format.h>

#include "cli/commands.h"
#include "cli/filter_options.h"
#include "recording/recording.h"
#include "signal/filter_channel.h"

namespace vess::cli {

namespace {

struct FilterState {
    std::string file, out;
    int channel = 0;
    FilterOptions filter;
    std::vector<double> response;
};

int RunFilter(const FilterState& s) {
    AbfError error = AbfError::None;
    std::string detail;
    auto rec = Recording::Open(s.file, &error, &detail);
    if (!rec) {
        std::cerr << "vess filter: " << s.file << ": " << (detail.empty() ? "cannot open the recording" : detail) << "\n";
        return 1;
    }
    if (s.channel >= rec->ChannelCount()) {
        std::cerr << fmt::format("vess filter: {} has channels 0 to {}, not {}\n", s.file, rec->ChannelCount() - 1,
                                 s.channel);
        return 1;
    }
    rec->SetChannel(uint8_t(s.channel));
    const FilterChoice choice = ResolveFilter(s.filter, FilterChoice{});
    const FilterDesign design = DesignFilter(choice, SampleRateHz(*rec));
    if (!design.error.empty()) {
        std::cerr << "vess filter: " << design.error << "\n";
        return 1;
    }
    for (double f : s.response)
        std::cout << fmt::format("{:g} {:.6f}\n", f, DesignResponseDb(design, f, SampleRateHz(*rec)));
    if (s.out.empty()) return 0;
    if (const CommandResult applied = ApplyFilter(*rec, choice); !applied) {
        std::cerr << "vess filter: " << applied.message() << "\n";
        return 1;
    }
    rec->ReadFiltered(true);
    if (const std::string why = WriteChannelAbf(*rec, s.out); !why.empty()) {
        std::cerr << "vess filter: " << why << "\n";
        return 1;
    }
    return 0;
}

}  // namespace

void AddFilterCommand(CLI::App& app) {
    auto state = std::make_shared<FilterState>();
    auto* cmd = app.add_subcommand("filter", "filter one channel of a recording (low- or high-pass IIR)");
    cmd->add_option("FILE", state->file, "ABF 1.x or ABF 2 recording")->required();
    cmd->add_option("--channel", state->channel, "channel position, 0-based")->check(CLI::NonNegativeNumber);
    AddFilterOptions(*cmd, state->filter, true);
    cmd->add_option("--response", state->response,
                    "print 'frequency dB' of one causal pass at these frequencies (Hz)")
        ->delimiter(',');
    cmd->add_option("--out", state->out, "write the filtered channel to this ABF file");
    cmd->callback([state] {
        if (const int status = RunFilter(*state); status != 0) throw CLI::RuntimeError(status);
    });
}

}  // namespace vess::cli
