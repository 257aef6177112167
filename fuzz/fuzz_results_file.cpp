// Any bytes as a results file (.RSL): reading never fails, never yields more
// rows than the bytes hold, and the rows read are written back to a file
// that reads to the same rows.
#include <cstddef>
#include <cstdint>
#include <span>

#include "group_analysis/results_commands.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    const auto rows = vess::group::ParseResultsFile(std::span<const uint8_t>(data, size));
    if (!rows) return 0;
    if (rows->size() * vess::kResultRowBytes > size) __builtin_trap();
    vess::ResultsTable table;
    table.Assign(*rows);
    const auto again = vess::group::ParseResultsFile(vess::group::BuildResultsFile(table));
    if (!again || *again != *rows) __builtin_trap();
    return 0;
}
