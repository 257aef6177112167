#include "recording/event_file.h"

#include <algorithm>

#include "recording/file_io.h"
#include "recording/le_bytes.h"
#include "recording/texts.h"
#include "recording/value_ranges.h"

namespace vess {

namespace {

bool Contains(std::string_view text, std::string_view part) {
    return text.find(part) != std::string_view::npos;
}

EventFileVersion VersionOf(std::string_view creator) {
    if (Contains(creator, texts::kCurrentVersionTag)) return EventFileVersion::Current;
    if (Contains(creator, texts::kVersion3Tag)) return EventFileVersion::V3;
    return EventFileVersion::Oldest;
}

// A "3.0" record is the first 24 bytes of the current layout.
EventRecord ReadV3Record(std::span<const uint8_t> b) {
    std::array<uint8_t, kEventRecordBytes> full{};
    std::copy_n(b.begin(), evt::kOldRecordBytes, full.begin());
    return ReadEventRecord(full);
}

// The oldest record: time (float), amplitude, noise, rise, decay and
// baseline (int16 each), area (float), group (byte), packed from its start.
EventRecord ReadOldestRecord(std::span<const uint8_t> b) {
    EventRecord r;
    r.time = le::Get<float>(b, 0);
    r.amplitude = le::Get<int16_t>(b, 4);
    r.noise = le::Get<int16_t>(b, 6);
    r.riseTime = le::Get<int16_t>(b, 8);
    r.decayTime = le::Get<int16_t>(b, 10);
    r.baseline = le::Get<int16_t>(b, 12);
    r.area = le::Get<float>(b, 14);
    r.group = b[18];
    return r;
}

}  // namespace

bool EventFileContents::HasProductTag() const { return Contains(creator, texts::kProductTag); }

AnalysisParameters ReadParameterFields(std::span<const uint8_t> h, AnalysisParameters p,
                                       bool withNumberPointsPeak) {
    p.AreaThreshold = le::Get<float>(h, evt::kAreaThreshold);
    p.PeakDirection = le::Get<int16_t>(h, evt::kPeakDirection);
    if (withNumberPointsPeak) p.NumberPointsPeak = le::Get<int16_t>(h, evt::kNumberPointsPeak);
    p.ThresholdAmplitude = le::Get<float>(h, evt::kThresholdAmplitude);
    p.PeriodToSearchMax = le::Get<int32_t>(h, evt::kPeriodToSearchMax);
    p.PeriodStartBaseline = le::Get<int32_t>(h, evt::kPeriodStartBaseline);
    p.PeriodFindDecayTime = le::Get<int32_t>(h, evt::kPeriodFindDecayTime);
    p.DecayPercent = le::Get<float>(h, evt::kDecayPercent);
    p.PeriodBaselineAverage = le::Get<int32_t>(h, evt::kPeriodBaselineAverage);
    return p;
}

void WriteParameterFields(std::span<uint8_t> h, std::string_view creator,
                          const AnalysisParameters& p, bool withNumberPointsPeak,
                          int32_t eventCount, std::string_view dataFileName) {
    le::PutText(h, evt::kCreator, evt::kCreatorChars, creator);
    le::Put(h, evt::kAreaThreshold, p.AreaThreshold);
    le::Put(h, evt::kPeakDirection, p.PeakDirection);
    if (withNumberPointsPeak) le::Put(h, evt::kNumberPointsPeak, p.NumberPointsPeak);
    le::Put(h, evt::kEventCount, eventCount);
    le::Put(h, evt::kThresholdAmplitude, p.ThresholdAmplitude);
    le::Put(h, evt::kPeriodToSearchMax, p.PeriodToSearchMax);
    le::Put(h, evt::kPeriodStartBaseline, p.PeriodStartBaseline);
    le::Put(h, evt::kPeriodFindDecayTime, p.PeriodFindDecayTime);
    le::Put(h, evt::kDecayPercent, p.DecayPercent);
    le::Put(h, evt::kPeriodBaselineAverage, p.PeriodBaselineAverage);
    le::PutText(h, evt::kDataFileName, evt::kDataFileNameChars, dataFileName);
}

EventFileContents ParseEventFile(std::span<const uint8_t> bytes) {
    EventFileContents c;
    if (bytes.size() < evt::kHeaderBytes) {
        c.problem = EventFileProblem::TooShort;
        return c;
    }
    c.header.assign(bytes.begin(), bytes.begin() + evt::kHeaderBytes);
    c.creator = le::GetText(bytes, evt::kCreator, evt::kCreatorChars);
    c.comment = le::GetText(bytes, evt::kComment, evt::kCommentChars);
    c.params = ReadParameterFields(bytes, AnalysisParameters{}, true);
    c.eventCount = le::Get<int32_t>(bytes, evt::kEventCount);
    c.storedName = TrimBlanks(le::GetText(bytes, evt::kDataFileName, evt::kDataFileNameChars));
    c.version = VersionOf(c.creator);
    c.detail = ParameterProblem(c.params);
    if (!c.detail.empty()) {
        c.problem = EventFileProblem::BadParameters;
        return c;
    }

    const std::size_t recordBytes =
        c.version == EventFileVersion::Current ? kEventRecordBytes : evt::kOldRecordBytes;
    const std::size_t room = (bytes.size() - evt::kHeaderBytes) / recordBytes;
    if (c.eventCount < 0 || std::size_t(c.eventCount) > room) {
        c.problem = EventFileProblem::BadCount;
        return c;
    }
    c.records.reserve(std::size_t(c.eventCount));
    for (std::size_t i = 0; i < std::size_t(c.eventCount); ++i) {
        const auto rec = bytes.subspan(evt::kHeaderBytes + i * recordBytes, recordBytes);
        switch (c.version) {
            case EventFileVersion::Current: c.records.push_back(ReadEventRecord(rec)); break;
            case EventFileVersion::V3: c.records.push_back(ReadV3Record(rec)); break;
            case EventFileVersion::Oldest: c.records.push_back(ReadOldestRecord(rec)); break;
        }
        if (c.version != EventFileVersion::Current) c.records.back().peakDirection = c.params.PeakDirection;
    }
    return c;
}

EventFileContents ReadEventFile(const std::filesystem::path& path) {
    std::string why;
    const auto bytes = ReadFileBytes(path, &why);
    if (!bytes) {
        EventFileContents c;
        c.problem = EventFileProblem::CannotRead;
        c.detail = why;
        return c;
    }
    return ParseEventFile(*bytes);
}

Outcome<EventFileContents> ReadCheckedEventFile(const std::filesystem::path& path,
                                                const std::string* expectedDataName) {
    EventFileContents file = ReadEventFile(path);
    const std::string name = path.filename().string();
    const auto refuse = [&](std::string_view caption, std::string text) {
        return CommandResult::Failed(caption, std::move(text));
    };
    // The creator decides whether this is an event file at all; a file too
    // short to hold one, or unreadable, is reported as such first.
    if (file.problem == EventFileProblem::CannotRead || file.problem == EventFileProblem::TooShort)
        return refuse(texts::kDamagedFileCaption, name + ": " + DescribeProblem(file));
    if (!file.HasProductTag())
        return refuse(texts::kNotEventFileCaption, std::string(texts::kNotEventFileText));
    if (!file.Ok()) return refuse(texts::kDamagedFileCaption, name + ": " + DescribeProblem(file));
    if (expectedDataName && file.storedName != *expectedDataName)
        return refuse(texts::kFileNotMatchingCaption,
                      texts::FileNotMatchingText(file.storedName, *expectedDataName));
    return file;
}

std::string DescribeProblem(const EventFileContents& c) {
    switch (c.problem) {
        case EventFileProblem::None: return {};
        case EventFileProblem::CannotRead:
            return c.detail.empty() ? "The file cannot be read." : "The file cannot be read (" + c.detail + ").";
        case EventFileProblem::TooShort:
            return "The file is shorter than the 2048-byte header of an event file; nothing is loaded.";
        case EventFileProblem::BadCount:
            return "The file says it holds " + std::to_string(c.eventCount) +
                   " events, which it does not; it is damaged or truncated and nothing is loaded.";
        case EventFileProblem::BadParameters:
            return "Its detection parameters cannot be used (" + c.detail +
                   "); it is damaged and nothing is loaded.";
    }
    return {};
}

std::vector<uint8_t> BlankHeaderCopy() {
    std::vector<uint8_t> h(evt::kHeaderBytes, 0);
    le::PutText(h, 0, 4, "ABF ");
    return h;
}

std::vector<uint8_t> BuildEventFile(std::span<const uint8_t> headerBytes,
                                    const AnalysisParameters& params,
                                    std::span<const EventRecord> records,
                                    std::string_view dataFileName) {
    std::vector<uint8_t> out(headerBytes.begin(), headerBytes.end());
    if (out.size() < evt::kHeaderBytes) out.resize(evt::kHeaderBytes, 0);
    // The short comment is carried into the long one, unless it is blank:
    // then the long comment's own text is kept.
    if (out.size() >= evt::kLongComment + evt::kLongCommentChars) {
        const std::string comment = le::GetText(out, evt::kComment, evt::kCommentChars);
        if (comment.find_first_not_of(std::string_view(" \0", 2)) != std::string::npos)
            le::PutText(out, evt::kLongComment, evt::kLongCommentChars, comment);
    }
    WriteParameterFields(out, texts::kEventFileCreator.substr(0, evt::kCreatorChars), params, true,
                         int32_t(records.size()), dataFileName);
    const std::size_t end = evt::kHeaderBytes + records.size() * kEventRecordBytes;
    if (out.size() < end) out.resize(end, 0);
    for (std::size_t i = 0; i < records.size(); ++i)
        WriteEventRecord(records[i], std::span(out).subspan(evt::kHeaderBytes + i * kEventRecordBytes,
                                                            kEventRecordBytes));
    return out;
}

std::string WriteEventFile(const std::filesystem::path& path, std::span<const uint8_t> headerBytes,
                           const AnalysisParameters& params, const EventTable& table,
                           std::string_view dataFileName) {
    return WriteFileAtomic(path, BuildEventFile(headerBytes, params, table.Records(), dataFileName));
}

}  // namespace vess
