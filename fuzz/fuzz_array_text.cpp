// Any text as an array text file: reading never fails or claims more rows
// than the text has bytes, and what was read, written again, reads back to
// the same text.
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "statistics/array_text.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const auto arrays = vess::ParseArraysAtf(text);
    if (!arrays) return 0;
    if (std::size_t(arrays->array1.UpperBound()) > size || std::size_t(arrays->array2.UpperBound()) > size)
        __builtin_trap();
    const std::string once = vess::ArraysAtfText("x.abf", arrays->array1, arrays->array2);
    const auto again = vess::ParseArraysAtf(once);
    if (!again) __builtin_trap();
    if (vess::ArraysAtfText("x.abf", again->array1, again->array2) != once) __builtin_trap();
    return 0;
}
