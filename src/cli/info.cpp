// vess info FILE.abf [--channel N]: the file-information report and the
// values derived for one channel.
#include <algorithm>
#include <iostream>
#include <limits>
#include <span>
#include <string>
#include <vector>

#include <fmt/format.h>

#include "cli/commands.h"
#include "recording/number_text.h"
#include "recording/open_recording.h"
#include "recording/recording.h"
#include "recording/sample_range.h"

namespace vess::cli {

namespace {

std::string DerivedValues(const Recording& rec) {
    std::string out;
    const int adc = rec.Header().adcSamplingSeq[rec.Channel()];
    out += fmt::format("\nDerived values\n");
    out += fmt::format("Channels: {}\n", rec.ChannelCount());
    out += fmt::format("Channel: {} (ADC {})\n", rec.Channel(), adc);
    out += fmt::format("Units: {}\n", rec.Units());
    out += fmt::format("Interval per channel (us): {}\n", rec.IntervalUs());
    out += fmt::format("Blocks (256 points): {}\n", rec.BlockCount());
    out += fmt::format("Points per channel: {}\n", rec.PointsPerChannel());
    out += fmt::format("Sweeps: {}\n", rec.SweepStarts().size());
    out += fmt::format("Duration (s): {:.6f}\n",
                       double(rec.PointsPerChannel()) * rec.IntervalUs() * 1e-6);
    out += fmt::format("Gain: {:.9g}\n", rec.Gain());
    out += fmt::format("Offset: {:.9g}\n", rec.Offset());
    const int64_t shown = std::min<int64_t>(3, rec.PointsPerChannel());
    std::string counts, values;
    for (int64_t i = 0; i < shown; ++i) {
        const int16_t c = rec.Sample(i);
        counts += fmt::format("{}{}", i ? ", " : "", c);
        values += fmt::format("{}{}", i ? ", " : "", FixedOrSignificant(rec.Bit2pA(c), 5));
    }
    out += fmt::format("First samples (counts): {}\n", counts);
    out += fmt::format("First values ({}): {}\n", rec.Units(), values);
    out += fmt::format("Last value ({}): {}\n", rec.Units(),
                       FixedOrSignificant(rec.Bit2pA(rec.Sample(rec.PointsPerChannel() - 1)), 5));
    out += fmt::format("Tags: {}\n", rec.Tags().size());
    for (std::size_t i = 0; i < rec.Tags().size(); ++i) {
        const AbfTag& tag = rec.Tags()[i];
        std::string comment = tag.comment;
        while (!comment.empty() && (comment.back() == ' ' || comment.back() == '\0'))
            comment.pop_back();
        out += fmt::format("  Tag {}: time {}, type {}, {}\n", i + 1, tag.time, tag.type, comment);
    }
    return out;
}

// Every sample of the channel read once, a million at a time: its range.
// Also the baseline of whole-file timings (one plain read of the file).
std::string ScannedRange(const Recording& rec) {
    std::vector<int16_t> block(std::size_t(1) << 20);
    int16_t low = std::numeric_limits<int16_t>::max(), high = std::numeric_limits<int16_t>::min();
    const int64_t n = rec.PointsPerChannel();
    for (int64_t i = 0; i < n; i += int64_t(block.size())) {
        const std::span<int16_t> part(block.data(), std::size_t(std::min<int64_t>(int64_t(block.size()), n - i)));
        rec.ReadSamples(i, part);
        FoldRange(part, low, high);
    }
    if (n <= 0) return "Sample range: no samples\n";
    return fmt::format("Sample range (counts): {} to {}\nSample range ({}): {} to {}\n", low, high, rec.Units(),
                       FixedOrSignificant(rec.Bit2pA(low), 5), FixedOrSignificant(rec.Bit2pA(high), 5));
}

}  // namespace

void AddInfoCommand(CLI::App& app) {
    struct Options {
        std::string file;
        int channel = 0;
        bool scan = false;
    };
    auto opts = std::make_shared<Options>();
    auto* cmd = app.add_subcommand("info", "Show the header and derived values of an ABF file");
    cmd->add_option("file", opts->file, "ABF file (ABF 1.x or ABF 2)")->required();
    cmd->add_option("--channel,-c", opts->channel, "0-based channel position")->capture_default_str();
    cmd->add_flag("--scan", opts->scan, "read every sample of the channel and give its range");
    cmd->callback([opts] {
        AbfError error = AbfError::None;
        std::string detail;
        auto rec = Recording::Open(opts->file, &error, &detail);
        if (!rec) {
            const OpenRefusal refusal =
                RefusalFor(error, std::filesystem::path(opts->file).filename().string(), detail);
            std::cerr << "vess info: " << refusal.caption << ": " << refusal.text;
            // The refusal of a floating-point file already lists its channels.
            if (error != AbfError::FloatingPoint) std::cerr << " (" << detail << ")";
            std::cerr << "\n";
            throw CLI::RuntimeError(1);
        }
        if (opts->channel < 0 || opts->channel >= rec->ChannelCount()) {
            std::cerr << fmt::format("vess info: {} has channels 0 to {}, not {}\n", opts->file,
                                     rec->ChannelCount() - 1, opts->channel);
            throw CLI::RuntimeError(1);
        }
        rec->SetChannel(uint8_t(opts->channel));
        std::cout << rec->InfoReport() << DerivedValues(*rec);
        if (opts->scan) std::cout << ScannedRange(*rec);
        std::cout << std::flush;
    });
}

}  // namespace vess::cli
