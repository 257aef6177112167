// Any bytes as a parameter file: refused or read without reading outside the
// buffer; what was read, written again and read back, gives the same bytes.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "recording/event_file.h"
#include "recording/parameter_file.h"

namespace {

void Check(std::span<const uint8_t> bytes) {
    const auto file = vess::ParseParameterFile(bytes, vess::AnalysisParameters{});
    if (file.problem != vess::EventFileProblem::None) return;
    const auto first = vess::BuildParameterFile(bytes, file.params, 0, "fuzz.abf");
    const auto again = vess::ParseParameterFile(first, vess::AnalysisParameters{});
    if (again.problem != vess::EventFileProblem::None || !again.hasProductTag) __builtin_trap();
    const auto second = vess::BuildParameterFile(first, again.params, 0, "fuzz.abf");
    if (first != second) __builtin_trap();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    Check({data, size});
    // The input laid over a blank header from the creator field on.
    std::vector<uint8_t> composed = vess::BlankHeaderCopy();
    const std::size_t creator = std::min<std::size_t>(size, 16);
    std::copy_n(data, creator, composed.begin() + vess::evt::kCreator);
    std::copy_n(data + creator, std::min<std::size_t>(size - creator, 94),
                composed.begin() + vess::evt::kAreaThreshold);
    Check(composed);
    return 0;
}
