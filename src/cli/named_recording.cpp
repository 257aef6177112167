#include "cli/named_recording.h"

namespace vess::cli {

std::unique_ptr<Recording> OpenNamedRecording(const std::filesystem::path& eventFile,
                                              const EventFileContents& f) {
    if (f.storedName.empty()) return nullptr;
    AbfError error = AbfError::None;
    auto rec = Recording::Open(eventFile.parent_path() / f.storedName, &error);
    if (rec && !f.records.empty() && f.records[0].channel < rec->ChannelCount())
        rec->SetChannel(f.records[0].channel);
    return rec;
}

}  // namespace vess::cli
