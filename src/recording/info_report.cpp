// The file-information report: the header values one per line after their
// labels, then each channel's scaling, then the file comment.
#include <fmt/format.h>

#include "recording/abf_layout.h"
#include "recording/abf_parse.h"
#include "recording/le_bytes.h"
#include "recording/recording.h"
#include "recording/texts.h"

namespace vess {

namespace {

std::string Trimmed(std::string s) {
    while (!s.empty() && (s.back() == ' ' || s.back() == '\0')) s.pop_back();
    while (!s.empty() && s.front() == ' ') s.erase(s.begin());
    return s;
}

class Report {
public:
    explicit Report(std::string_view title, const std::string& fileName) {
        text_ = fmt::format("{}{}\n", title, fileName);
    }
    template <class T>
    void Line(std::string_view label, const T& value) {
        const bool spaced = !label.empty() && label.back() == ' ';
        text_ += fmt::format("{}{}{}\n", label, spaced ? "" : " ", value);
    }
    template <class T>
    void ChannelLine(std::string_view label, int channel, const T& value) {
        text_ += fmt::format("{}{}) {}\n", label, channel, value);
    }
    void Raw(const std::string& s) { text_ += s; }
    std::string Take() { return std::move(text_); }

private:
    std::string text_;
};

// The scaling of channel position `channel`, from the arrays of its ADC.
void ScalingLines(Report& r, int channel, const AbfHeader& h, std::size_t adc) {
    namespace t = texts;
    r.ChannelLine(t::kInfoADCProgrammableGain, channel, h.adcProgrammableGain[adc]);
    r.ChannelLine(t::kInfoInstrumentScaleFactor, channel, h.instrumentScaleFactor[adc]);
    r.ChannelLine(t::kInfoInstrumentOffset, channel, h.instrumentOffset[adc]);
    r.ChannelLine(t::kInfoSignalGain, channel, h.signalGain[adc]);
    r.ChannelLine(t::kInfoSignalOffset, channel, h.signalOffset[adc]);
}

// The file comment closes the report.
std::string CommentAndTake(Report& r, const AbfHeader& h) {
    r.Raw(fmt::format("{}\n{}\n", texts::kInfoFileComment, Trimmed(h.fileComment)));
    return r.Take();
}

// An ABF 2 file's own fields under their own labels, then each channel's
// scaling as for ABF 1.x.
std::string Abf2Report(const Recording& rec, const Abf2Info& info) {
    namespace t = texts;
    const AbfHeader& h = rec.Header();
    const uint32_t v = info.creatorVersion;
    Report r(t::kInfoTitle, rec.FileName());
    r.Line(t::kInfoFileSignature, h.fileSignature);
    r.Line(t::kInfoFileVersionNumber, info.VersionText());
    r.Line(t::kInfoFileInfoSize, info.fileInfoSize);
    r.Line(t::kInfoFileType, info.fileType);
    r.Line(t::kInfoCreatorName, info.creatorName);
    r.Line(t::kInfoCreatorVersion,
           fmt::format("{}.{}.{}.{}", v >> 24, (v >> 16) & 0xFF, (v >> 8) & 0xFF, v & 0xFF));
    r.Line(t::kInfoProtocolPath, info.protocolPath);
    r.Line(t::kInfoDataFormat, h.dataFormat);
    r.Line(t::kInfoFileStartDate, info.fileStartDate);
    r.Line(t::kInfoFileStartTimeMS, info.fileStartTimeMs);
    r.Line(t::kInfoStopwatchTime, info.stopwatchTime);
    r.Line(t::kInfoOperationMode, info.operationMode);
    r.Line(t::kInfoActualAcqLength, h.actualAcqLength);
    r.Line(t::kInfoActualEpisodes, info.actualEpisodes);
    r.Line(t::kInfoEpisodesPerRun, info.episodesPerRun);
    r.Line(t::kInfoNumSamplesPerEpisode, info.numSamplesPerEpisode);
    r.Line(t::kInfoSweepCount, rec.SweepStarts().size());
    r.Line(t::kInfoADCSequenceInterval, info.adcSequenceInterval);
    r.Line(t::kInfoADCNumChannels, h.adcNumChannels);
    r.Line(t::kInfoADCRange, h.adcRange);
    r.Line(t::kInfoADCResolution, h.adcResolution);
    for (std::size_t c = 0; c < info.channels.size(); ++c) {
        const Abf2Channel& ch = info.channels[c];
        const auto adc = std::size_t(ch.adcNum);
        const int n = int(c);
        r.ChannelLine(t::kInfoADCNum, n, ch.adcNum);
        r.ChannelLine(t::kInfoADCChannelName, n, ch.name);
        r.ChannelLine(t::kInfoADCUnits, n, ch.units);
        r.ChannelLine(t::kInfoTelegraphEnable, n, ch.telegraphEnable);
        r.ChannelLine(t::kInfoTelegraphAdditGain, n, ch.telegraphAdditGain);
        ScalingLines(r, n, h, adc);
    }
    return CommentAndTake(r, h);
}

}  // namespace

std::string Recording::InfoReport() const {
    using namespace abf;
    namespace t = texts;
    if (abf2_) return Abf2Report(*this, *abf2_);
    const std::span<const uint8_t> b(headerBytes_);
    const AbfHeader& h = header_;
    Report r(t::kInfoTitle, FileName());
    r.Line(t::kInfoFileSignature, h.fileSignature);
    r.Line(t::kInfoFileVersionNumber, h.fileVersionNumber);
    r.Line(t::kInfoHeaderVersionNumber, le::Get<float>(b, kHeaderVersionNumber));
    r.Line(t::kInfoFileType, le::Get<int16_t>(b, kFileType));
    r.Line(t::kInfoCreatorInfo, Trimmed(h.creatorInfo));
    r.Line(t::kInfoMSBinFormat, le::Get<int16_t>(b, kMSBinFormat));
    r.Line(t::kInfoDataFormat, h.dataFormat);
    r.Line(t::kInfoFileStartDate, le::Get<int32_t>(b, kFileStartDate));
    r.Line(t::kInfoFileStartTime, le::Get<int32_t>(b, kFileStartTime));
    r.Line(t::kInfoStopwatchTime, le::Get<int32_t>(b, kStopwatchTime));
    r.Line(t::kInfoOperationMode, le::Get<int16_t>(b, kOperationMode));
    r.Line(t::kInfoActualAcqLength, h.actualAcqLength);
    r.Line(t::kInfoNumPointsIgnored, le::Get<int16_t>(b, kNumPointsIgnored));
    r.Line(t::kInfoActualEpisodes, le::Get<int32_t>(b, kActualEpisodes));
    r.Line(t::kInfoEpisodesPerRun, le::Get<int32_t>(b, kEpisodesPerRun));
    r.Line(t::kInfoNumSamplesPerEpisode, le::Get<int32_t>(b, kNumSamplesPerEpisode));
    r.Line(t::kInfoEpisodeStartToStart, le::Get<float>(b, kEpisodeStartToStart));
    r.Line(t::kInfoRunsPerTrial, le::Get<int32_t>(b, kRunsPerTrial));
    r.Line(t::kInfoRunStartToStart, le::Get<float>(b, kRunStartToStart));
    r.Line(t::kInfoSecondsPerRun, le::Get<float>(b, kSecondsPerRun));
    r.Line(t::kInfoNumberOfTrials, le::Get<int32_t>(b, kNumberOfTrials));
    r.Line(t::kInfoTrialStartToStart, le::Get<float>(b, kTrialStartToStart));
    r.Line(t::kInfoADCSampleInterval, intervalUs_);
    r.Line(t::kInfoADCNumChannels, h.adcNumChannels);
    r.Line(t::kInfoADCRange, h.adcRange);
    r.Line(t::kInfoADCResolution, h.adcResolution);
    r.Line(t::kInfoAutosampleAdditGain, h.autosampleAdditGain);
    r.Line(t::kInfoAutosampleEnable, h.autosampleEnable);
    r.Line(t::kInfoAutosampleADCNum, h.autosampleAdcNum);
    for (int c = 0; c < ChannelCount(); ++c) {
        // Values of the physical ADC that the channel position samples.
        const auto adc = std::size_t(AdcOfChannel(c));
        r.ChannelLine(t::kInfoADCSamplingSeq, c, h.adcSamplingSeq[std::size_t(c)]);
        r.ChannelLine(t::kInfoADCUnits, c, Trimmed(h.adcUnits[adc]));
        ScalingLines(r, c, h, adc);
    }
    return CommentAndTake(r, h);
}

}  // namespace vess
