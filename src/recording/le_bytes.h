// Little-endian reads and writes of fixed-width fields at byte offsets, used
// by every binary file of the program (event, parameter and results files).
// Callers check the span is long enough; these helpers do not.
#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>

namespace vess::le {

template <class T>
T Get(std::span<const uint8_t> bytes, std::size_t offset) {
    static_assert(std::is_integral_v<T> || std::is_floating_point_v<T>);
    using U = std::conditional_t<sizeof(T) == 1, uint8_t,
              std::conditional_t<sizeof(T) == 2, uint16_t,
              std::conditional_t<sizeof(T) == 4, uint32_t, uint64_t>>>;
    U v = 0;
    for (std::size_t k = 0; k < sizeof(T); ++k) v |= U(U(bytes[offset + k]) << (8 * k));
    return std::bit_cast<T>(v);
}

template <class T>
void Put(std::span<uint8_t> bytes, std::size_t offset, T value) {
    static_assert(std::is_integral_v<T> || std::is_floating_point_v<T>);
    using U = std::conditional_t<sizeof(T) == 1, uint8_t,
              std::conditional_t<sizeof(T) == 2, uint16_t,
              std::conditional_t<sizeof(T) == 4, uint32_t, uint64_t>>>;
    const U v = std::bit_cast<U>(value);
    for (std::size_t k = 0; k < sizeof(T); ++k) bytes[offset + k] = uint8_t(v >> (8 * k));
}

// out[k] = the 16-bit value at byte offset + k * stride, for sample arrays:
// copied as they stand when they are packed and this machine is
// little-endian too.
inline void GetInt16s(std::span<const uint8_t> bytes, std::size_t stride, std::size_t offset,
                      std::span<int16_t> out) {
    if (stride == 2 && offset == 0 && std::endian::native == std::endian::little) {
        std::memcpy(out.data(), bytes.data(), out.size() * 2);
        return;
    }
    for (std::size_t k = 0; k < out.size(); ++k) out[k] = Get<int16_t>(bytes, offset + k * stride);
}

// A fixed-width text field as stored (no terminator, may hold blanks).
inline std::string GetText(std::span<const uint8_t> bytes, std::size_t offset, std::size_t width) {
    return std::string(reinterpret_cast<const char*>(bytes.data() + offset), width);
}

// Writes text left-aligned, cut at width and padded with blanks.
inline void PutText(std::span<uint8_t> bytes, std::size_t offset, std::size_t width,
                    std::string_view text) {
    const std::size_t n = std::min(width, text.size());
    std::copy_n(text.begin(), n, bytes.begin() + std::ptrdiff_t(offset));
    std::fill_n(bytes.begin() + std::ptrdiff_t(offset + n), width - n, uint8_t(' '));
}

}  // namespace vess::le
