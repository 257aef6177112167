// Any text as the trace of vess fit: reading never fails, and a short
// simplex search over what was read always ends (not-a-number included).
#include <cstddef>
#include <cstdint>
#include <sstream>
#include <string>

#include "group_analysis/simplex.h"
#include "group_analysis/trace_csv.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    std::istringstream in(std::string(reinterpret_cast<const char*>(data), size));
    std::string error;
    const auto trace = vess::group::ReadTextTrace(in, error);
    if (!trace) {
        if (error.empty()) __builtin_trap();
        return 0;
    }
    if (trace->x.size() != trace->y.size() || trace->x.size() < 2) __builtin_trap();
    vess::group::SimplexOptions options;
    options.maxIterations = 200;
    options.maxRestarts = 2;
    const auto r = vess::group::FitExponentials({1, true}, {1, trace->y.front(), 0, 0, 0, 0, trace->y.back()},
                                                trace->x, trace->y, options);
    if (r.iterations > options.maxIterations * (options.maxRestarts + 1)) __builtin_trap();
    return 0;
}
