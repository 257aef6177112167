// Any bytes as an event file: the reader must refuse or accept without
// reading outside the buffer or allocating from an unchecked count, and an
// accepted file in the current layout must be written back byte for byte.
// The bytes are also laid over a valid header (creator and parameter fields
// from the input, records after it) so that the record paths are reached
// without a corpus.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "recording/event_file.h"
#include "recording/event_grid.h"

namespace {

void Check(std::span<const uint8_t> bytes) {
    const vess::EventFileContents file = vess::ParseEventFile(bytes);
    (void)vess::DescribeProblem(file);
    if (!file.Ok()) return;
    for (std::size_t i = 0; i < std::min<std::size_t>(file.records.size(), 4); ++i)
        for (int c = 0; c < vess::kEventGridColumns; ++c)
            (void)vess::FormatCell(vess::EventCellValue(nullptr, file.records[i], int(i + 1), c));
    if (file.version != vess::EventFileVersion::Current) return;
    const auto rebuilt = vess::BuildEventFile(file.header, file.params, file.records,
                                              std::string_view(file.storedName));
    const std::size_t end = vess::evt::kHeaderBytes + file.records.size() * vess::kEventRecordBytes;
    if (rebuilt.size() != end || !std::equal(rebuilt.begin() + vess::evt::kHeaderBytes, rebuilt.end(),
                                             bytes.begin() + vess::evt::kHeaderBytes))
        __builtin_trap();
    if (vess::ParseEventFile(rebuilt).records.size() != file.records.size()) __builtin_trap();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    const std::span<const uint8_t> input(data, size);
    Check(input);

    // creator (16) + parameter fields and name (94) from the input, then records.
    std::vector<uint8_t> composed = vess::BlankHeaderCopy();
    const std::size_t creator = std::min<std::size_t>(size, 16);
    std::copy_n(data, creator, composed.begin() + vess::evt::kCreator);
    const std::size_t fields = std::min<std::size_t>(size - creator, 94);
    std::copy_n(data + creator, fields, composed.begin() + vess::evt::kAreaThreshold);
    composed.insert(composed.end(), data + creator + fields, data + size);
    Check(composed);
    return 0;
}
