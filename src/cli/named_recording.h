// The data file that an event file names, opened from the event file's folder.
#pragma once

#include <filesystem>
#include <memory>

#include "recording/event_file.h"
#include "recording/recording.h"

namespace vess::cli {

// The recording named in the event file, from the event file's folder, on
// the channel of the first event; null when it is not there or not readable.
std::unique_ptr<Recording> OpenNamedRecording(const std::filesystem::path& eventFile,
                                              const EventFileContents& f);

}  // namespace vess::cli
