#include "cli/trace_command.h"

#include <fstream>
#include <optional>
#include <sstream>

#include "group_analysis/trace_csv.h"

namespace vess::cli {

using group::SampledTrace;

namespace {

// The text trace of a fit, with at least three points evenly spaced.
std::optional<SampledTrace> ReadSampledTrace(std::istream& in, std::string& error) {
    const std::optional<group::TextTrace> t = group::ReadTextTrace(in, error);
    if (!t) return std::nullopt;
    const std::vector<double>& x = t->x;
    if (x.size() < 3) {
        error = "the trace needs at least three points";
        return std::nullopt;
    }
    const double dt = (x.back() - x.front()) / double(x.size() - 1);
    for (std::size_t i = 1; i < x.size(); ++i)
        if (!(dt > 0) || std::fabs(x[i] - x[i - 1] - dt) > 1e-3 * dt) {
            error = fmt::format("the times are not evenly spaced (line {})", i + 2);
            return std::nullopt;
        }
    return SampledTrace{x.front(), dt, t->y};
}

}  // namespace

// The stretch between --from and --to.
SampledTrace Load(const Common& o, const char* command) {
    std::ifstream file;
    if (o.file != "-") file.open(o.file);
    if (o.file != "-" && !file) {
        std::cerr << "vess " << command << ": cannot read " << o.file << "\n";
        throw CLI::RuntimeError(1);
    }
    std::string error;
    auto trace = ReadSampledTrace(o.file == "-" ? std::cin : file, error);
    if (!trace) {
        std::cerr << "vess " << command << ": " << o.file << ": " << error << "\n";
        throw CLI::RuntimeError(1);
    }
    SampledTrace out{.startMs = 0, .intervalMs = trace->intervalMs, .y = {}};
    for (std::size_t i = 0; i < trace->Size(); ++i) {
        const double t = trace->TimeAt(double(i));
        if (t < o.from - 1e-9 || t > o.to + 1e-9) continue;
        if (out.y.empty()) out.startMs = t;
        out.y.push_back(trace->y[i]);
    }
    if (out.Size() < 3) {
        std::cerr << "vess " << command << ": fewer than three points between --from and --to\n";
        throw CLI::RuntimeError(1);
    }
    return out;
}

std::string Key(std::string_view title) {
    std::string k;
    for (char c : title) {
        if (std::isalnum(static_cast<unsigned char>(c))) k += char(std::tolower(static_cast<unsigned char>(c)));
        else if (!k.empty() && k.back() != '_') k += '_';
    }
    while (!k.empty() && k.back() == '_') k.pop_back();
    return k;
}

CLI::App* AddTraceCommand(CLI::App& app, const char* name, const char* about, Common& o) {
    auto* cmd = app.add_subcommand(name, about);
    cmd->add_option("file", o.file, "trace CSV with a header line: time (ms), value ('-' for standard input)")
        ->required();
    cmd->add_option("--from", o.from, "first cursor: analyse from this time (ms)");
    cmd->add_option("--to", o.to, "second cursor: analyse up to this time (ms)");
    cmd->add_flag("--json", o.json, "print the rows as JSON");
    return cmd;
}

}  // namespace vess::cli
