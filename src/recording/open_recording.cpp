#include "recording/open_recording.h"

#include <charconv>
#include <system_error>

#include "recording/rate_defaults.h"
#include "recording/texts.h"

namespace vess {

namespace {

std::string Trim(const std::string& s) {
    const auto first = s.find_first_not_of(" \t\r\n");
    if (first == std::string::npos) return {};
    const auto last = s.find_last_not_of(" \t\r\n");
    return s.substr(first, last - first + 1);
}

}  // namespace

OpenRefusal RefusalFor(AbfError error, const std::string& fileName, const std::string& detail) {
    const std::string damaged(texts::kDamagedAbfCaption);
    const auto why = [&](std::string_view text) { return texts::WithReason(text, fileName, detail); };
    switch (error) {
        case AbfError::NotAbf:
            return {std::string(texts::kNotAbfCaption), std::string(texts::kNotAbfText)};
        case AbfError::FloatingPoint:
            return {std::string(texts::kNotIntegerCaption), texts::NotIntegerText(detail)};
        case AbfError::CannotOpen:
            return {std::string(texts::kCannotOpenCaption), texts::CannotOpenText(fileName, detail)};
        case AbfError::TooShort: return {damaged, why(texts::kTooShortText)};
        case AbfError::BadChannelCount: return {damaged, why(texts::kBadChannelCountText)};
        case AbfError::BadSamplingSequence:
            return {damaged, why(texts::kBadSamplingSequenceText)};
        case AbfError::BadInterval: return {damaged, why(texts::kBadIntervalText)};
        case AbfError::BadScaling: return {damaged, why(texts::kBadScalingText)};
        case AbfError::BadDataPointer: return {damaged, why(texts::kBadDataPointerText)};
        case AbfError::BadAcqLength: return {damaged, why(texts::kBadAcqLengthText)};
        case AbfError::BadTagPointer: return {damaged, why(texts::kBadTagPointerText)};
        case AbfError::BadProtocolSection:
            return {damaged, why(texts::kBadProtocolSectionText)};
        case AbfError::BadAdcSection: return {damaged, why(texts::kBadAdcSectionText)};
        case AbfError::BadStringsSection:
            return {damaged, why(texts::kBadStringsSectionText)};
        case AbfError::BadSynchSection: return {damaged, why(texts::kBadSynchSectionText)};
        case AbfError::BadStringIndex: return {damaged, why(texts::kBadStringIndexText)};
        case AbfError::DuplicateAdc: return {damaged, why(texts::kDuplicateAdcText)};
        case AbfError::None: break;
    }
    return {damaged, detail};
}

std::optional<uint8_t> AskChannel(const std::vector<ChannelLabel>& labels, Dialogs& dialogs) {
    const int channels = int(labels.size());
    std::vector<std::string> items;
    for (int c = 0; c < channels; ++c) items.push_back(ChannelLabelText(c, labels[std::size_t(c)]));
    for (;;) {
        const auto answer = dialogs.Choose(std::string(texts::kChannelCaption),
                                           texts::ChannelPrompt(channels), items, 0);
        if (!answer) return std::nullopt;
        const std::string text = Trim(*answer);
        if (text.empty()) return std::nullopt;  // an empty answer is Cancel
        int channel = -1;
        const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), channel);
        if (ec == std::errc() && end == text.data() + text.size() && channel >= 0 &&
            channel < channels)
            return uint8_t(channel);
        dialogs.Message(std::string(texts::kInvalidChannelCaption),
                        texts::InvalidChannelText(text, channels));
    }
}

CommandResult OpenDataFile(Workspace& ws, const std::filesystem::path& path, Dialogs& dialogs,
                           const std::function<CommandResult()>& saveEvents) {
    if (!ws.events.Empty()) {
        const std::string current = ws.recording ? ws.recording->FileName() : std::string();
        if (dialogs.AskYesNo(std::string(texts::kSavePreviousEventsCaption),
                             texts::SavePreviousEventsText(ws.events.Count(), current))) {
            // A save that did not happen (cancelled or failed) stops the
            // opening, so the events are not silently dropped.
            if (saveEvents)
                if (CommandResult saved = saveEvents(); !saved.ok()) return saved;
        }
    }

    AbfError error = AbfError::None;
    std::string detail;
    std::unique_ptr<Recording> rec = Recording::Open(path, &error, &detail);
    if (!rec) {
        OpenRefusal refusal = RefusalFor(error, path.filename().string(), detail);
        return CommandResult::Failed(std::move(refusal.caption), std::move(refusal.text));
    }

    uint8_t channel = 0;
    if (rec->ChannelCount() > 1) {
        const auto chosen = AskChannel(ChannelLabels(*rec), dialogs);
        if (!chosen) return CommandResult::Cancelled();
        channel = *chosen;
    }
    rec->SetChannel(channel);

    ws.recording = std::move(rec);
    ws.events.Clear();
    ws.history.Clear();
    ws.history.MarkSaved();
    ws.screenStartBlock = 0;
    ws.selectedEvent = 0;
    ws.analysedBlocks.Clear();
    ApplyRateDefaults(ws);
    return CommandResult::Ok();
}

bool ReportReadFault(Workspace& ws, Dialogs& dialogs, const std::function<bool()>& saveEvents) {
    if (!ws.recording || ws.recording->ReadFault().empty() || ws.recording->ReadFaultReported())
        return false;
    ws.recording->MarkReadFaultReported();
    const std::string caption(texts::kReadFaultCaption);
    if (ws.events.Empty()) {
        dialogs.Message(caption, ws.recording->ReadFault());
        return true;
    }
    if (dialogs.AskYesNo(caption, texts::ReadFaultKeepEventsText(ws.recording->ReadFault(),
                                                                 ws.events.Count())) &&
        saveEvents)
        saveEvents();
    return true;
}

}  // namespace vess
