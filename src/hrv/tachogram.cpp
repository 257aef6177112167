#include "hrv/tachogram.h"

#include <algorithm>
#include <cmath>

#include <fmt/format.h>

#include "hrv/rr_intervals.h"
#include "hrv/texts.h"
#include "recording/abf_layout.h"
#include "recording/file_io.h"
#include "recording/le_bytes.h"
#include "recording/rounding.h"
#include "recording/save_path.h"
#include "recording/texts.h"
#include "recording/workspace.h"

namespace vess::hrv {

namespace {

std::string S(std::string_view v) { return std::string(v); }

constexpr int32_t kSamplesPerEpisode = 8192;

std::string RecordingName(const Workspace& ws) {
    return ws.recording ? ws.recording->FileName() : std::string();
}

}  // namespace

double TachogramCountsPerMs(std::span<const double> rrMs) {
    double longest = 0;
    for (double rr : rrMs)
        if (std::isfinite(rr)) longest = std::max(longest, std::fabs(rr));
    double counts = kTachogramCountsPerMs;
    // Coarser by tens until the longest interval fits the 16-bit samples.
    while (counts > 1e-6 && longest * counts > 32767.0) counts /= 10;
    return counts;
}

std::string TachogramAtfText(const std::string& recordingName, std::span<const double> rrMs) {
    std::string out = "ATF\t1.0\r\n1\t2\r\n";
    out += fmt::format("\"{}{}\"\r\n", texts::kTachogramRecord, recordingName);
    out += fmt::format("\"{}\"\t\"{} {}\"\r\n", texts::kTachogramXAxis, texts::kTachogramYAxis,
                       texts::kTachogramUnit);
    for (std::size_t i = 0; i < rrMs.size(); ++i) out += fmt::format("{}\t{:.3f}\r\n", i + 1, rrMs[i]);
    return out;
}

TachogramAbf BuildTachogramAbf(std::span<const uint8_t> tpl, std::span<const double> rrMs,
                               const std::string& comment) {
    using namespace abf;
    TachogramAbf out;
    if (tpl.size() < kHeaderBytes || le::GetText(tpl, kFileSignature, 4) != "ABF ") {
        out.error = "The template header is not an ABF 1.x header.";
        return out;
    }
    // Keep the extended header when the template has one.
    const bool extended = le::Get<float>(tpl, kFileVersionNumber) >= kExtendedVersion - 0.001f &&
                          tpl.size() >= kExtendedHeaderBytes;
    const std::size_t headerBytes = extended ? kExtendedHeaderBytes : kHeaderBytes;
    const auto n = int32_t(rrMs.size());
    out.bytes.assign(tpl.begin(), tpl.begin() + std::ptrdiff_t(headerBytes));
    out.bytes.resize(headerBytes + rrMs.size() * 2);
    std::span<uint8_t> b(out.bytes);

    le::Put<int16_t>(b, kOperationMode, 3);
    le::Put<int32_t>(b, kActualAcqLength, n);
    le::Put<int32_t>(b, kActualEpisodes, (n + kSamplesPerEpisode - 1) / kSamplesPerEpisode);
    le::Put<int32_t>(b, kDataSectionPtr, int32_t(headerBytes / kBlockBytes));
    le::Put<int32_t>(b, kTagSectionPtr, 0);
    le::Put<int32_t>(b, kNumTagEntries, 0);
    le::Put<int16_t>(b, kDataFormat, 0);
    le::Put<int16_t>(b, kADCNumChannels, 1);
    le::Put<float>(b, kADCSampleInterval, float(kTachogramIntervalUs));
    le::Put<float>(b, kSecondsPerRun, float(n * kTachogramIntervalUs * 1e-6));
    le::Put<int32_t>(b, kNumSamplesPerEpisode, kSamplesPerEpisode);
    le::Put<float>(b, kADCRange, 10.0f);
    le::Put<int32_t>(b, kADCResolution, 32768);
    le::Put<int16_t>(b, kAutosampleEnable, 0);
    le::Put<float>(b, kAutosampleAdditGain, 1.0f);
    le::PutText(b, kCreatorInfo, kCreatorInfoChars, texts::kTachogramTitle);
    le::PutText(b, kFileComment, kFileCommentChars, comment);
    for (std::size_t k = 0; k < std::size_t(kAdcCount); ++k) {
        le::Put<int16_t>(b, kADCPtoLChannelMap + 2 * k, int16_t(k == 0 ? 0 : -1));
        le::Put<int16_t>(b, kADCSamplingSeq + 2 * k, int16_t(k == 0 ? 0 : -1));
    }
    le::PutText(b, kADCChannelName, kADCChannelNameChars, "RR");
    le::PutText(b, kADCUnits, kADCUnitsChars, "ms");
    le::Put<float>(b, kADCProgrammableGain, 1.0f);
    const double countsPerMs = TachogramCountsPerMs(rrMs);
    le::Put<float>(b, kInstrumentScaleFactor, float(10.0 * countsPerMs / 32768.0));
    le::Put<float>(b, kInstrumentOffset, 0.0f);
    le::Put<float>(b, kSignalGain, 1.0f);
    le::Put<float>(b, kSignalOffset, 0.0f);
    if (extended) {
        le::Put<int16_t>(b, kTelegraphEnable, 0);
        le::Put<float>(b, kTelegraphAdditGain, 1.0f);
    }
    for (std::size_t i = 0; i < rrMs.size(); ++i)
        le::Put<int16_t>(b, headerBytes + 2 * i, RoundClamp16(rrMs[i] * countsPerMs));
    return out;
}

CommandResult SaveTachogramAsciiCommand(Workspace& ws, Dialogs& dialogs) {
    if (!EnsureTimeOrder(ws, dialogs)) return CommandResult::Cancelled();
    const auto path = ChooseSavePath(
        dialogs, {S(texts::kSaveAsAscii), S(vess::texts::kTextFileFilter), S(vess::texts::kTextFileExtension), {}},
        ExistingFile::AskReplace);
    if (!path) return path.status();
    const std::vector<double> rr = Differences(WorkspaceBeatTimesMs(ws));
    return WriteResult(WriteFileAtomic(*path, TachogramAtfText(RecordingName(ws), rr)));
}

CommandResult SaveTachogramAbfCommand(Workspace& ws, Dialogs& dialogs, const std::filesystem::path& templateFolder) {
    const auto templatePath = templateFolder / S(vess::texts::kTemplateHeaderFileName);
    const auto tpl = ReadFileBytes(templatePath);
    if (!tpl) return CommandResult::Failed(S(vess::texts::kErrorCaption), S(vess::texts::kTemplateMissingText));
    if (!EnsureTimeOrder(ws, dialogs)) return CommandResult::Cancelled();
    const std::vector<double> rr = Differences(WorkspaceBeatTimesMs(ws));
    const TachogramAbf abf = BuildTachogramAbf(*tpl, rr, S(texts::kTachogramRecord) + RecordingName(ws));
    if (CommandResult built = WriteResult(abf.error); !built) return built;
    const auto path = ChooseSavePath(
        dialogs, {S(vess::texts::kSaveAsAbf), S(vess::texts::kAbfFileFilter), S(vess::texts::kAbfFileExtension), {}},
        ExistingFile::AskReplace);
    if (!path) return path.status();
    if (CommandResult written = WriteResult(WriteFileAtomic(*path, abf.bytes)); !written) return written;
    dialogs.Message(S(texts::kTachogramMenu), S(texts::kTachogramSaved) + path->filename().string());
    return CommandResult::Ok();
}

}  // namespace vess::hrv
