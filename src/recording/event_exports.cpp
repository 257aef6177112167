#include "recording/event_exports.h"

#include "recording/event_grid.h"
#include "recording/file_io.h"
#include "recording/recording.h"
#include "recording/save_path.h"
#include "recording/texts.h"
#include "recording/workspace.h"

namespace vess {

namespace {

constexpr std::string_view kEol = "\r\n";

std::string Quoted(std::string_view s) { return "\"" + std::string(s) + "\""; }

std::string SuggestedName(const Workspace& ws, std::string_view extension) {
    if (!ws.recording) return {};
    return ws.recording->Path().stem().string() + "." + std::string(extension);
}

FileDialogRequest Request(const Workspace& ws, std::string_view caption, std::string_view filter,
                          std::string_view extension) {
    return {std::string(caption), std::string(filter), std::string(extension),
            SuggestedName(ws, extension)};
}

}  // namespace

std::string EventsAtfText(const Recording* rec, const EventTable& table) {
    const std::string unit = rec ? rec->Units() : "counts";
    std::string out;
    out += std::string(texts::kAtfTag) + "\t" + std::string(texts::kAtfVersion) + std::string(kEol);
    out += "0\t2" + std::string(kEol);
    out += Quoted(texts::kTimeMsTitle) + "\t" + Quoted(texts::AmplitudeTitle(unit)) + std::string(kEol);
    for (int32_t i = 1; i <= table.Count(); ++i) {
        const auto column = [&](EventField f) {
            return FormatCell(EventCellValue(rec, table[i], i, int(f) + 1));
        };
        out += column(EventField::Time) + "\t" + column(EventField::Amplitude) + std::string(kEol);
    }
    return out;
}

std::string EventsAsciiText(const Recording* rec, const EventTable& table) {
    std::string out;
    for (int c = 1; c < kEventGridColumns; ++c) {
        if (c > 1) out += '\t';
        out += EventColumnCaption(c);
    }
    out += kEol;
    for (int32_t i = 1; i <= table.Count(); ++i) {
        for (int c = 1; c < kEventGridColumns; ++c) {
            if (c > 1) out += '\t';
            out += FormatCell(EventCellValue(rec, table[i], i, c));
        }
        out += kEol;
    }
    return out;
}

std::string EventGridText(const Recording* rec, std::span<const EventRecord> records, char sep) {
    const std::string units = rec ? rec->Units() : std::string();
    std::string out;
    for (int c = 0; c < kEventGridColumns; ++c) {
        if (c) out += sep;
        out += rec ? EventColumnLabel(c, units) : EventColumnRawLabel(c);
    }
    out += '\n';
    for (std::size_t i = 0; i < records.size(); ++i) {
        for (int c = 0; c < kEventGridColumns; ++c) {
            if (c) out += sep;
            out += FormatCell(EventCellValue(rec, records[i], int(i + 1), c));
        }
        out += '\n';
    }
    return out;
}

CommandResult SaveDataCommand(Workspace& ws, Dialogs& dialogs) {
    const auto path = ChooseSavePath(
        dialogs, Request(ws, texts::kSaveDataCaption, texts::kTextFileFilter, texts::kTextFileExtension),
        ExistingFile::AskReplace);
    if (!path) return path.status();
    return WriteResult(WriteFileAtomic(*path, EventsAtfText(ws.recording.get(), ws.events)));
}

CommandResult SaveToAsciiFileCommand(Workspace& ws, Dialogs& dialogs) {
    const auto path = ChooseSavePath(
        dialogs, Request(ws, texts::kSaveAsciiCaption, texts::kAsciiFileFilter, texts::kAsciiFileExtension),
        ExistingFile::Refuse);
    if (!path) return path.status();
    return WriteResult(WriteFileAtomic(*path, EventsAsciiText(ws.recording.get(), ws.events)));
}

CommandResult SaveGridCsvCommand(Workspace& ws, Dialogs& dialogs) {
    const auto path = ChooseSavePath(
        dialogs, Request(ws, texts::kSaveGridCsvCaption, texts::kCsvFileFilter, texts::kCsvFileExtension),
        ExistingFile::AskReplace);
    if (!path) return path.status();
    return WriteResult(WriteFileAtomic(*path, EventGridText(ws.recording.get(), ws.events.Records(), ',')));
}

}  // namespace vess
