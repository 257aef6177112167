// The recording named in an event file, opened from the event file's folder.
#pragma once

#include <filesystem>
#include <memory>

#include "recording/event_file.h"
#include "recording/recording.h"

namespace vess::cli {

// On the channel of the first event; null when the file is not there or not
// readable.
std::unique_ptr<Recording> OpenNamedRecording(const std::filesystem::path& eventFile,
                                              const EventFileContents& contents);

}  // namespace vess::cli
