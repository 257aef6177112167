// Reading samples of the chosen channel: frames of the recording or the
// filtered copy, a chunk cache for single samples, and stretches that reach
// beyond either end of the data.
#include <algorithm>

#include <fmt/format.h>

#include "recording/data_file.h"
#include "recording/le_bytes.h"
#include "recording/recording.h"
#include "recording/texts.h"

namespace vess {

namespace {

// Samples read ahead around a single Sample() request.
constexpr int64_t kChunkPoints = 4096;

// The interleaved bytes of a read, one buffer a thread, so that several
// threads can read one recording at once.
// A buffer of n bytes, kept at its largest on this thread: shrunk and grown
// again (a long read after a short one), it would be zeroed every time.
std::span<uint8_t> FrameBytes(std::size_t n) {
    thread_local std::vector<uint8_t> bytes;
    if (bytes.size() < n) bytes.resize(n);
    return {bytes.data(), n};
}

}  // namespace

bool Recording::ReadFrames(int64_t first, std::span<int16_t> out) const {
    return ReadsFiltered() ? ReadFilteredFrames(first, out) : ReadRawFrames(first, out);
}

bool Recording::ReadRawFrames(int64_t first, std::span<int16_t> out) const {
    const std::size_t frameBytes = std::size_t(ChannelCount()) * 2;
    const std::span<uint8_t> bytes = FrameBytes(out.size() * frameBytes);
    const uint64_t at = dataOffset_ + uint64_t(first) * frameBytes;
    const std::size_t got = file_->ReadAt(at, bytes);
    const std::size_t whole = std::min(out.size(), got / frameBytes);
    le::GetInt16s(bytes, frameBytes, std::size_t(channel_) * 2, out.first(whole));
    if (whole == out.size()) return true;
    std::fill(out.begin() + std::ptrdiff_t(whole), out.end(), int16_t(0));
    // A file cut short has lost its last sample too: past the end of the
    // data the trace goes on at 0 like the missing samples, without a step.
    if (file_->Error().empty()) lastSample_ = 0;
    return NoteShortRead(*file_, at + got);
}

bool Recording::ReadFilteredFrames(int64_t first, std::span<int16_t> out) const {
    const std::span<uint8_t> bytes = FrameBytes(out.size() * 2);
    const uint64_t at = uint64_t(first) * 2;
    const std::size_t got = filtered_->ReadAt(at, bytes);
    const std::size_t whole = std::min(out.size(), got / 2);
    le::GetInt16s(bytes, 2, 0, out.first(whole));
    if (whole == out.size()) return true;
    std::fill(out.begin() + std::ptrdiff_t(whole), out.end(), int16_t(0));
    return NoteShortRead(*filtered_, at + got);
}

bool Recording::NoteShortRead(const DataFile& file, uint64_t endByte) const {
    const std::lock_guard lock(faultMutex_);
    if (readFault_.empty()) {
        const std::string why = !file.Error().empty() ? file.Error()
                                                      : fmt::format("it now ends at byte {}", endByte);
        readFault_ = texts::ReadFaultText(FileName(), why);
    }
    return false;
}

// Versions are drawn from one counter, so that a recording opened where a
// closed one lay in memory never shares its numbers.
uint64_t Recording::NextSamplesVersion() {
    static std::atomic<uint64_t> next{1};
    return next.fetch_add(1, std::memory_order_relaxed);
}

void Recording::SamplesChanged() {
    chunkStart_ = -1;
    samplesVersion_ = NextSamplesVersion();
}

void Recording::AttachFiltered(std::unique_ptr<DataFile> counts) {
    filtered_ = std::move(counts);
    SamplesChanged();
    if (frames_ > 0) {
        ReadFilteredFrames(0, std::span(&filteredFirst_, 1));
        ReadFilteredFrames(frames_ - 1, std::span(&filteredLast_, 1));
    }
}

void Recording::DetachFiltered() {
    filtered_.reset();
    SamplesChanged();
}

void Recording::ReadFiltered(bool on) {
    if (on != readFiltered_) chunkStart_ = -1;
    readFiltered_ = on;
}

int16_t Recording::Sample(int64_t index) const {
    if (frames_ <= 0) return 0;
    const bool filtered = ReadsFiltered();
    if (index <= 0) return filtered ? filteredFirst_ : firstSample_;
    if (index >= frames_ - 1) return filtered ? filteredLast_ : lastSample_.load();
    if (chunkStart_ < 0 || index < chunkStart_ || index >= chunkStart_ + int64_t(chunk_.size())) {
        chunkStart_ = index / kChunkPoints * kChunkPoints;
        chunk_.resize(std::size_t(std::min(kChunkPoints, frames_ - chunkStart_)));
        ReadFrames(chunkStart_, chunk_);
    }
    return chunk_[std::size_t(index - chunkStart_)];
}

bool Recording::ReadSamples(int64_t index, std::span<int16_t> out) const {
    return ReadSamplesFrom(ReadsFiltered(), index, out);
}

bool Recording::ReadRawSamples(int64_t index, std::span<int16_t> out) const {
    return ReadSamplesFrom(false, index, out);
}

bool Recording::ReadTraceSamples(bool filtered, int64_t index, std::span<int16_t> out) const {
    return ReadSamplesFrom(filtered && HasFiltered(), index, out);
}

bool Recording::ReadSamplesFrom(bool filtered, int64_t index, std::span<int16_t> out) const {
    if (frames_ <= 0) {
        std::fill(out.begin(), out.end(), int16_t(0));
        return true;
    }
    const int64_t n = int64_t(out.size());
    // out[k] holds index + k: before the data, inside it, after it.
    const int64_t inFirst = std::clamp<int64_t>(-index, 0, n);
    const int64_t inEnd = std::clamp<int64_t>(frames_ - index, inFirst, n);
    std::fill(out.begin(), out.begin() + inFirst, filtered ? filteredFirst_ : firstSample_);
    std::fill(out.begin() + inEnd, out.end(), filtered ? filteredLast_ : lastSample_.load());
    if (inEnd == inFirst) return true;
    const auto inside = out.subspan(std::size_t(inFirst), std::size_t(inEnd - inFirst));
    return filtered ? ReadFilteredFrames(index + inFirst, inside) : ReadRawFrames(index + inFirst, inside);
}

std::vector<uint8_t> Recording::ReadDataBytes(int64_t position, std::size_t count) const {
    std::vector<uint8_t> out(count, 0);
    const int64_t size = std::max<int64_t>(frames_, 0) * ChannelCount() * 2;
    const int64_t from = std::clamp<int64_t>(position, 0, size);
    const int64_t to = std::clamp<int64_t>(position + int64_t(count), from, size);
    if (to > from)
        file_->ReadAt(dataOffset_ + uint64_t(from),
                      std::span(out).subspan(std::size_t(from - position), std::size_t(to - from)));
    return out;
}

}  // namespace vess
