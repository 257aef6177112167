#include "recording/abf_writer.h"

#include <chrono>
#include <cmath>
#include <system_error>

#include <fmt/format.h>

#include "recording/abf_layout.h"
#include "recording/file_io.h"
#include "recording/le_bytes.h"
#include "recording/recording.h"

namespace vess {

namespace {

// We write version 1.83 files with the full extended header, the form that
// acquisition programs of that version write and that every ABF 1.x reader
// expects of it; the data section follows at block 12.
constexpr float kWrittenVersion = 1.83f;
constexpr int32_t kDataBlock = int32_t(abf::kExtendedHeaderBytes / abf::kBlockBytes);
constexpr int16_t kGapFree = 3;
constexpr int32_t kSamplesPerChunk = 8192;  // "episode" size of gap-free data

struct StartTime {
    int32_t date;
    int32_t seconds;
};

StartTime Now() {
    using namespace std::chrono;
    const auto now = system_clock::now();
    const auto day = floor<days>(now);
    const year_month_day ymd{day};
    const auto secs = duration_cast<seconds>(now - day).count();
    return {int32_t(int(ymd.year()) * 10000 + int(unsigned(ymd.month())) * 100 +
                    int(unsigned(ymd.day()))),
            int32_t(secs)};
}

}  // namespace

AbfWriteLayout ChannelWriteLayout(const Recording& rec) {
    AbfWriteLayout abfLayout;
    abfLayout.intervalUs = rec.IntervalUs();
    abfLayout.adcRange = rec.Header().adcRange;
    abfLayout.adcResolution = rec.Header().adcResolution;
    AbfChannelLayout channel;
    channel.units = rec.Units();
    channel.programmableGain = 1;
    channel.signalGain = 1;
    channel.instrumentScaleFactor = rec.Gain();
    channel.instrumentOffset = 0;
    channel.signalOffset = rec.Offset();
    abfLayout.channels = {channel};
    return abfLayout;
}

std::vector<uint8_t> BuildAbfHeader(const AbfWriteLayout& abfLayout, int64_t frames) {
    using namespace abf;
    std::vector<uint8_t> h(kExtendedHeaderBytes, 0);
    std::span<uint8_t> b(h);
    const int nch = int(abfLayout.channels.size());
    const int64_t samples = frames * nch;
    const int32_t chunk = kSamplesPerChunk / nch * nch;
    StartTime start{abfLayout.fileStartDate, abfLayout.fileStartTimeS};
    if (start.date == 0) start = Now();

    le::PutText(b, kFileSignature, 4, "ABF ");
    le::Put<float>(b, kFileVersionNumber, kWrittenVersion);
    le::Put<int16_t>(b, kOperationMode, kGapFree);
    le::Put<int32_t>(b, kActualAcqLength, int32_t(samples));
    le::Put<int32_t>(b, kActualEpisodes, int32_t((samples + chunk - 1) / chunk));
    le::Put<int32_t>(b, kFileStartDate, start.date);
    le::Put<int32_t>(b, kFileStartTime, start.seconds);
    le::Put<float>(b, kHeaderVersionNumber, kWrittenVersion);
    le::Put<int16_t>(b, kFileType, 1);
    le::Put<int32_t>(b, kDataSectionPtr, kDataBlock);
    le::Put<int16_t>(b, kDataFormat, 0);
    le::Put<int16_t>(b, kADCNumChannels, int16_t(nch));
    le::Put<float>(b, kADCSampleInterval, float(abfLayout.intervalUs / nch));
    le::Put<float>(b, kSecondsPerRun, float(double(frames) * abfLayout.intervalUs * 1e-6));
    le::Put<int32_t>(b, kNumSamplesPerEpisode, chunk);
    le::Put<int32_t>(b, kEpisodesPerRun, 1);
    le::Put<int32_t>(b, kRunsPerTrial, 1);
    le::Put<int32_t>(b, kNumberOfTrials, 1);
    le::Put<float>(b, kADCRange, abfLayout.adcRange);
    le::Put<float>(b, kDACRange, 10.0f);
    le::Put<int32_t>(b, kADCResolution, abfLayout.adcResolution);
    le::Put<int32_t>(b, kDACResolution, 32768);
    le::Put<float>(b, kAutosampleAdditGain, 1.0f);
    le::PutText(b, kCreatorInfo, kCreatorInfoChars, abfLayout.creator);
    le::PutText(b, kFileComment, kFileCommentChars, abfLayout.comment);
    for (int i = 0; i < kAdcCount; ++i) {
        const auto k = std::size_t(i);
        // Logical channel i is ADC i; unused ADCs map to -1 and default scaling.
        le::Put<int16_t>(b, kADCPtoLChannelMap + 2 * k, int16_t(i < nch ? i : -1));
        le::Put<int16_t>(b, kADCSamplingSeq + 2 * k, int16_t(i < nch ? i : -1));
        const AbfChannelLayout def;
        const AbfChannelLayout& c = i < nch ? abfLayout.channels[k] : def;
        le::PutText(b, kADCChannelName + k * kADCChannelNameChars, kADCChannelNameChars,
                    i < nch ? c.name : fmt::format("IN {}", i));
        le::PutText(b, kADCUnits + k * kADCUnitsChars, kADCUnitsChars, c.units);
        le::Put<float>(b, kADCProgrammableGain + 4 * k, c.programmableGain);
        le::Put<float>(b, kADCDisplayAmplification + 4 * k, 1.0f);
        le::Put<float>(b, kADCDisplayOffset + 4 * k, 0.0f);
        le::Put<float>(b, kInstrumentScaleFactor + 4 * k, c.instrumentScaleFactor);
        le::Put<float>(b, kInstrumentOffset + 4 * k, c.instrumentOffset);
        le::Put<float>(b, kSignalGain + 4 * k, c.signalGain);
        le::Put<float>(b, kSignalOffset + 4 * k, c.signalOffset);
        le::Put<float>(b, kSignalLowpassFilter + 4 * k, 100000.0f);
        le::Put<float>(b, kSignalHighpassFilter + 4 * k, 0.0f);
        const bool telegraph = c.telegraphAdditGain > 0;
        le::Put<int16_t>(b, kTelegraphEnable + 2 * k, int16_t(telegraph ? 1 : 0));
        le::Put<float>(b, kTelegraphAdditGain + 4 * k, telegraph ? c.telegraphAdditGain : 1.0f);
        // The telegraph gains count only while autosampling is enabled;
        // channels without one keep a gain of 1.
        if (telegraph) le::Put<int16_t>(b, kAutosampleEnable, 1);
    }
    return h;
}

std::string BuildAbfFile(const AbfWriteLayout& abfLayout, std::span<const int16_t> interleaved,
                         std::vector<uint8_t>& bytes) {
    const std::size_t nch = abfLayout.channels.size();
    if (nch < 1 || nch > std::size_t(kMaxChannels))
        return fmt::format("An ABF file holds 1 to {} channels, not {}.", kMaxChannels, nch);
    if (interleaved.size() % nch != 0)
        return "The samples do not make whole frames of all channels.";
    if (!std::isfinite(abfLayout.intervalUs) || abfLayout.intervalUs <= 0)
        return "The sample interval must be a positive number of microseconds.";
    if (interleaved.size() > std::size_t(INT32_MAX))
        return "Too many samples for an ABF 1.x file.";

    const int64_t frames = int64_t(interleaved.size() / nch);
    bytes = BuildAbfHeader(abfLayout, frames);
    const std::size_t dataAt = bytes.size();
    bytes.resize(dataAt + interleaved.size() * 2);
    std::span<uint8_t> out(bytes);
    for (std::size_t i = 0; i < interleaved.size(); ++i)
        le::Put<int16_t>(out, dataAt + 2 * i, interleaved[i]);
    return {};
}

std::string WriteAbf(const std::filesystem::path& path, const AbfWriteLayout& abfLayout,
                     std::span<const int16_t> interleaved) {
    std::vector<uint8_t> bytes;
    if (std::string problem = BuildAbfFile(abfLayout, interleaved, bytes); !problem.empty())
        return problem;
    // Written beside the target and renamed over it, so a failure never
    // leaves a half-written file in its place.
    return WriteFileAtomic(path, bytes);
}

}  // namespace vess
