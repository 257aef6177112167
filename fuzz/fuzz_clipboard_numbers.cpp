// Any text pasted as numbers: at most one finite number a line, and the
// numbers put back on the clipboard paste to the same values.
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

#include "statistics/array_text.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const std::vector<float> values = vess::ParseClipboardNumbers(text);
    if (values.size() > size) __builtin_trap();
    vess::DataArray array, none;
    array.Assign(values);
    const std::vector<float> back = vess::ParseClipboardNumbers(vess::ArraysClipboardText(array, none));
    if (back.size() != values.size()) __builtin_trap();
    for (std::size_t i = 0; i < values.size(); ++i)
        if (!std::isfinite(values[i]) || std::memcmp(&back[i], &values[i], sizeof(float)) != 0) __builtin_trap();
    return 0;
}
