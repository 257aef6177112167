// Any bytes as the tachogram's template header: building never fails
// silently, and a tachogram built on it opens as a recording of the
// intervals.
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "hrv/tachogram.h"
#include "recording/recording.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    const std::vector<double> rr{800, 812.5, 790, 805, 3300};
    const vess::hrv::TachogramAbf abf =
        vess::hrv::BuildTachogramAbf(std::span<const uint8_t>(data, size), rr, "fuzz");
    if (abf.bytes.empty()) {
        if (abf.error.empty()) __builtin_trap();
        return 0;
    }
    vess::AbfError error{};
    const auto rec = vess::Recording::FromBytes(abf.bytes, "t.abf", &error);
    if (!rec || rec->PointsPerChannel() != int64_t(rr.size())) __builtin_trap();
    return 0;
}
