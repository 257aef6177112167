// Any text as a batch list: every line that names a file gives one path,
// relative ones under the list's folder, and the plan gives each path one
// event file (a second claim on one event file is refused, not written).
#include <cstddef>
#include <cstdint>
#include <set>
#include <string_view>

#include "batch/batch_files.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const auto paths = vess::ParseRecordingList(text, "/lists");
    if (paths.size() > size) __builtin_trap();
    std::set<std::filesystem::path> written;
    for (const vess::BatchItem& item : vess::PlanBatch(paths, "/out")) {
        if (item.file.empty() || !item.file.is_absolute()) __builtin_trap();
        if (item.refusal.empty() && !written.insert(item.eventFile.lexically_normal()).second) __builtin_trap();
    }
    return 0;
}
