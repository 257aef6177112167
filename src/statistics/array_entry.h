// Values typed into the array grid: the grid shows "#,##0.000", so what the
// user types back may carry thousands separators; a row past the end of an
// array grows it.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "recording/data_array.h"

namespace vess {

// The number in text, with blanks around it and "," thousands separators
// allowed ("1,234.500" reads 1234.5); nothing when it is not a number.
std::optional<double> ParseTypedValue(std::string_view text);

// Writes element index (1-based). An index past the upper bound grows the
// array, the new elements between being 0, so that typing into the grid's
// first empty row appends; indices below 1 are ignored.
void SetArrayElement(DataArray& array, int32_t index, float value);

}  // namespace vess
