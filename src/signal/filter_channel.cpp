#include "signal/filter_channel.h"

#include <algorithm>
#include <bit>
#include <cerrno>
#include <cstring>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

#include "recording/abf_writer.h"
#include "recording/file_io.h"
#include "recording/le_bytes.h"
#include "recording/rounding.h"
#include "signal/filter_texts.h"
#include "signal/gaussian_filter.h"
#include "signal/sos_runner.h"

namespace vess {

namespace {

constexpr int64_t kBlock = 1 << 16;

// A file in the temporary folder for this process alone, with its name kept
// until Release so that it can be opened again for reading.
class TempFile {
public:
    TempFile() {
        name_ = (std::filesystem::temp_directory_path() / "vess-filter-XXXXXX").string();
        fd_ = ::mkstemp(name_.data());
        if (fd_ < 0) error_ = std::strerror(errno);
    }
    ~TempFile() {
        if (fd_ >= 0) ::close(fd_);
        if (!name_.empty() && fd_ >= 0) ::unlink(name_.c_str());
    }
    TempFile(const TempFile&) = delete;
    TempFile& operator=(const TempFile&) = delete;

    const std::string& Error() const { return error_; }
    // values rounded to 16-bit counts, written from sample index on.
    bool WriteCounts(int64_t index, const std::vector<double>& values) {
        rounded_.resize(values.size());
        for (std::size_t i = 0; i < values.size(); ++i) rounded_[i] = RoundClamp16(values[i]);
        return WriteCounts(index, rounded_);
    }
    // counts as little-endian 16-bit values from sample index on.
    bool WriteCounts(int64_t index, const std::vector<int16_t>& counts) {
        bytes_.resize(counts.size() * 2);
        if constexpr (std::endian::native == std::endian::little) std::memcpy(bytes_.data(), counts.data(), bytes_.size());
        else
            for (std::size_t i = 0; i < counts.size(); ++i) le::Put<int16_t>(bytes_, i * 2, counts[i]);
        return Io(::pwrite, index * 2, bytes_.data(), bytes_.size());
    }
    // Opens the written bytes for reading and removes the name, so the
    // file lives as long as the returned handle.
    std::unique_ptr<DataFile> Release() {
        DataFile::OpenResult r = DataFile::Open(name_);
        if (!r.file) error_ = r.error;
        return std::move(r.file);
    }

private:
    template <typename Fn>
    bool Io(Fn fn, int64_t offset, void* data, std::size_t bytes) {
        auto* p = static_cast<char*>(data);
        while (bytes > 0 && error_.empty()) {
            const ssize_t n = fn(fd_, p, bytes, off_t(offset));
            if (n < 0 && errno == EINTR) continue;
            if (n <= 0) error_ = n < 0 ? std::strerror(errno) : "the temporary file ended early";
            else {
                p += n;
                offset += n;
                bytes -= std::size_t(n);
            }
        }
        return error_.empty();
    }
    std::string name_;
    int fd_ = -1;
    std::vector<int16_t> rounded_;  // one block's counts, kept from block to block
    std::vector<uint8_t> bytes_;
    std::string error_;
};

struct Pass {
    int64_t points;
    const FilterProgress& progress;
    double done = 0, share = 1;
    bool Report(int64_t at) const { return !progress || progress(done + share * double(at) / double(points)); }
};

// One block of recorded samples from at, as doubles.
void ReadBlock(const Recording& rec, int64_t at, int64_t n, std::vector<int16_t>& raw, std::vector<double>& x) {
    raw.resize(std::size_t(n));
    rec.ReadRawSamples(at, raw);
    x.assign(raw.begin(), raw.end());
}

// The forward pass: recorded samples in, filtered values out through sink,
// which is also given the state the block started from, and with rounded set
// the values as counts (otherwise no counts).
template <typename Sink>
bool Forward(const Recording& rec, SosRunner& runner, const Pass& pass, bool rounded, Sink sink) {
    std::vector<int16_t> raw, counts;
    std::vector<double> x;
    for (int64_t at = 0; at < pass.points; at += kBlock) {
        const int64_t n = std::min(kBlock, pass.points - at);
        ReadBlock(rec, at, n, raw, x);
        if (at == 0) runner.SettleAt(x[0]);
        const SosRunner::State start = runner.CurrentState();
        if (rounded) {
            counts.resize(std::size_t(n));
            runner.Process(x, counts);
        } else {
            runner.Process(x);
        }
        if (!sink(at, x, counts, start) || !pass.Report(at + n)) return false;
    }
    return true;
}

// Zero phase without keeping the forward output: the forward pass runs once
// to note the state at the start of every block (a few hundred bytes a
// block) and the last output; then, last block first, each block's forward
// output is computed again from its noted state, run backward through the
// filter and written as counts. The recomputed block is the same to the bit.
// The forward recomputation of a block runs side by side with the backward
// pass of the block after it: two pipelines' worth of work in one loop.
bool ForwardBackward(const Recording& rec, const std::vector<Biquad>& sections, const FilterProgress& progress,
                     TempFile& out) {
    const int64_t points = std::max<int64_t>(rec.PointsPerChannel(), 0);
    SosRunner forward(sections), backward(sections);
    std::vector<SosRunner::State> starts;
    double last = 0;
    const bool noted = Forward(rec, forward, Pass{points, progress, 0, 1.0 / 3}, false,
                               [&](int64_t, const std::vector<double>& y, const std::vector<int16_t>&,
                                   const SosRunner::State& start) {
                                   starts.push_back(start);
                                   last = y.back();
                                   return true;
                               });
    if (!noted) return false;
    const Pass pass{points, progress, 1.0 / 3, 2.0 / 3};
    const int64_t blocks = int64_t(starts.size());
    if (blocks == 0) return true;
    std::vector<int16_t> raw, counts;
    std::vector<double> y, before;
    // Block's recorded samples into x, the forward filter set to its start.
    auto takeUp = [&](int64_t block, std::vector<double>& x) {
        const int64_t at = block * kBlock;
        ReadBlock(rec, at, std::min(kBlock, points - at), raw, x);
        forward.RestoreState(starts[std::size_t(block)]);
    };
    takeUp(blocks - 1, y);
    forward.Process(y);
    backward.SettleAt(last);
    // Each block's backward pass runs side by side with the forward pass of
    // the block before it, which the next step runs backward.
    for (int64_t block = blocks - 1; block >= 0; --block) {
        std::reverse(y.begin(), y.end());
        counts.resize(y.size());
        if (block > 0) {
            takeUp(block - 1, before);
            ProcessSideBySide(forward, before, backward, y, counts);
        } else {
            backward.Process(y, counts);
        }
        std::reverse(counts.begin(), counts.end());
        const int64_t at = block * kBlock;
        if (!out.WriteCounts(at, counts) || !pass.Report(points - at)) return false;
        std::swap(y, before);
    }
    return true;
}

// A centred kernel, block by block: each block is read with half the
// kernel's length more on each side, the trace held at its first and last
// samples beyond its ends.
bool Centred(const Recording& rec, const std::vector<double>& kernel, const FilterProgress& progress,
             TempFile& out) {
    const int64_t points = std::max<int64_t>(rec.PointsPerChannel(), 0);
    const int64_t half = int64_t(kernel.size() / 2);
    const Pass pass{points, progress};
    std::vector<int16_t> raw;
    std::vector<double> padded, y;
    for (int64_t at = 0; at < points; at += kBlock) {
        const int64_t n = std::min(kBlock, points - at);
        const int64_t first = std::max<int64_t>(at - half, 0), end = std::min(at + n + half, points);
        raw.resize(std::size_t(end - first));
        rec.ReadRawSamples(first, raw);
        padded.assign(std::size_t(first - (at - half)), double(raw.front()));
        padded.insert(padded.end(), raw.begin(), raw.end());
        padded.resize(std::size_t(n + 2 * half), double(raw.back()));
        y.resize(std::size_t(n));
        ConvolveCentred(padded, kernel, y);
        if (!out.WriteCounts(at, y) || !pass.Report(at + n)) return false;
    }
    return true;
}

}  // namespace

double SampleRateHz(const Recording& recording) { return 1e6 / recording.IntervalUs(); }

FilteredChannel FilterChannel(const Recording& rec, const FilterChoice& choice, const FilterProgress& progress) {
    FilteredChannel result;
    const FilterDesign design = DesignFilter(choice, SampleRateHz(rec));
    if (!design.error.empty()) {
        result.status = CommandResult::Failed(design.error);
        return result;
    }
    TempFile out;
    const int64_t points = std::max<int64_t>(rec.PointsPerChannel(), 0);
    bool finished = out.Error().empty();
    if (finished && !design.kernel.empty()) {
        finished = Centred(rec, design.kernel, progress, out);
    } else if (finished && !choice.zeroPhase) {
        SosRunner forward(design.sections);
        finished = Forward(rec, forward, Pass{points, progress}, true,
                           [&](int64_t at, const std::vector<double>&, const std::vector<int16_t>& counts,
                               const SosRunner::State&) { return out.WriteCounts(at, counts); });
    } else if (finished) {
        finished = ForwardBackward(rec, design.sections, progress, out);
    }
    if (!out.Error().empty()) result.status = CommandResult::Failed(out.Error());
    else if (!finished) result.status = CommandResult::Cancelled();
    if (result.status.ok()) result.counts = out.Release();
    return result;
}

CommandResult ApplyFilter(Recording& recording, const FilterChoice& choice, const FilterProgress& progress) {
    FilteredChannel f = FilterChannel(recording, choice, progress);
    if (!f.status) return f.status;
    recording.AttachFiltered(std::move(f.counts));
    return CommandResult::Ok();
}

std::string WriteChannelAbf(const Recording& rec, const std::filesystem::path& path) {
    AbfWriteLayout choice;
    choice.intervalUs = rec.IntervalUs();
    choice.adcRange = rec.Header().adcRange;
    choice.adcResolution = rec.Header().adcResolution;
    AbfChannelLayout& channel = choice.channels.front();
    channel.units = rec.Units();
    channel.programmableGain = rec.Gain();
    channel.instrumentScaleFactor = 1;
    channel.instrumentOffset = rec.Offset();
    const int64_t points = rec.PointsPerChannel();
    if (points > INT32_MAX) return "Too many samples for an ABF 1.x file.";
    std::vector<uint8_t> chunk = BuildAbfHeader(choice, points);
    std::vector<int16_t> samples;
    int64_t at = 0;
    bool headerGiven = false;
    return WriteFileAtomic(path, [&]() -> std::span<const uint8_t> {
        if (!headerGiven) {
            headerGiven = true;
            return chunk;
        }
        const int64_t n = std::min(kBlock, points - at);
        if (n <= 0) return {};
        samples.resize(std::size_t(n));
        rec.ReadSamples(at, samples);
        at += n;
        chunk.resize(samples.size() * 2);
        for (std::size_t i = 0; i < samples.size(); ++i) le::Put<int16_t>(chunk, i * 2, samples[i]);
        return chunk;
    });
}

}  // namespace vess
