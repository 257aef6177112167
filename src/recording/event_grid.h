// What the event grid shows: column 0 is the event number (1-based), columns
// 1..17 the captioned fields of EventRecord. Values are fetched from the
// record at display time: byte fields as bytes, 16-bit fields that need no
// conversion as 16-bit integers, everything converted as a 32-bit float
// (counts to units with or without offset, points to milliseconds).
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <variant>

#include "recording/event_record.h"

namespace vess {

class Recording;

inline constexpr int kEventGridColumns = 1 + kEventFieldCount;

using CellValue = std::variant<uint8_t, int16_t, int32_t, float>;

// The field shown in column 1..17.
EventField FieldOfColumn(int column);
// The plain caption of column 0..17 (column 0: "Event").
std::string_view EventColumnCaption(int column);
// The caption with its unit for display, e.g. "Amplitude (pA)", "Area (fC)"
// for currents in pA, "Slope10-90 (pA/msec)". units may be empty (raw counts
// and points when no recording is known).
std::string EventColumnLabel(int column, const std::string& units);

// The caption for values shown without a recording: "(counts)" for
// amplitudes and levels, "(points)" for durations kept in sample points.
std::string EventColumnRawLabel(int column);

// The value of one cell. With recording null, amplitudes and levels stay in
// ADC counts and durations in sample points (as 32-bit integers).
CellValue EventCellValue(const Recording* recording, const EventRecord& record, int row, int column);
CellValue EventCellValue(const Recording& recording, const EventRecord& record, int row, int column);

// Text of a cell value for the grid and text exports: integers in full,
// floats in their shortest form that reads back to the same float, and an
// empty text for a measurement that could not be made (a half-width whose
// trace never fell to half is stored as not a number).
std::string FormatCell(const CellValue& value);

}  // namespace vess
