#include "recording/event_grid.h"

#include <array>
#include <cmath>

#include <fmt/format.h>

#include "recording/recording.h"
#include "recording/texts.h"

namespace vess {

namespace {

enum class Shown { AsStored, CountsNoOffset, CountsWithOffset, PointsToMs };

struct Column {
    std::string_view caption;
    Shown shown;
};

// Columns 1..17 in EventField order.
constexpr std::array<Column, kEventFieldCount> kColumns{{
    {texts::kColTime, Shown::AsStored},
    {texts::kColAmplitude, Shown::CountsNoOffset},
    {texts::kColRiseTime, Shown::PointsToMs},
    {texts::kColDecayTime, Shown::PointsToMs},
    {texts::kColArea, Shown::AsStored},
    {texts::kColBaseline, Shown::CountsWithOffset},
    {texts::kColNoise, Shown::CountsNoOffset},
    {texts::kColGroup, Shown::AsStored},
    {texts::kColChannel, Shown::AsStored},
    {texts::kColRise1090, Shown::AsStored},
    {texts::kColHalfWidth, Shown::AsStored},
    {texts::kColRise50, Shown::PointsToMs},
    {texts::kColPeakDirection, Shown::AsStored},
    {texts::kColBurstNumber, Shown::AsStored},
    {texts::kColBurstEventNumber, Shown::AsStored},
    {texts::kColSlope1090, Shown::AsStored},
    {texts::kColRelativeTime, Shown::PointsToMs},
}};

bool IsDataColumn(int column) { return column >= 1 && column <= kEventFieldCount; }

}  // namespace

EventField FieldOfColumn(int column) { return EventField(column - 1); }

std::string_view EventColumnCaption(int column) {
    if (!IsDataColumn(column)) return "Event";
    return kColumns[std::size_t(column - 1)].caption;
}

std::string EventColumnLabel(int column, const std::string& units) {
    const std::string caption(EventColumnCaption(column));
    if (!IsDataColumn(column)) return caption;
    const EventField field = FieldOfColumn(column);
    const Shown shown = kColumns[std::size_t(column - 1)].shown;
    if (field == EventField::Time || shown == Shown::PointsToMs || field == EventField::Rise1090 ||
        field == EventField::HalfWidth)
        return caption + " (ms)";
    if (units.empty()) return caption;
    if (field == EventField::Area)
        return units == "pA" ? std::string(texts::kAreaFcLabel) : caption + " (" + units + " x ms)";
    if (field == EventField::Slope1090) return caption + " (" + units + std::string(texts::kPerMsecSuffix) + ")";
    if (shown == Shown::CountsNoOffset || shown == Shown::CountsWithOffset)
        return caption + " (" + units + ")";
    return caption;
}

std::string EventColumnRawLabel(int column) {
    if (!IsDataColumn(column)) return std::string(EventColumnCaption(column));
    switch (kColumns[std::size_t(column - 1)].shown) {
        case Shown::CountsNoOffset:
        case Shown::CountsWithOffset: return std::string(EventColumnCaption(column)) + " (counts)";
        case Shown::PointsToMs: return std::string(EventColumnCaption(column)) + " (points)";
        case Shown::AsStored: break;
    }
    return EventColumnLabel(column, {});
}

CellValue EventCellValue(const Recording* rec, const EventRecord& r, int row, int column) {
    if (!IsDataColumn(column)) return int32_t(row);
    return WithEventField(FieldOfColumn(column), [&](auto member) -> CellValue {
        const auto v = r.*member;
        switch (kColumns[std::size_t(column - 1)].shown) {
            case Shown::AsStored: return v;
            case Shown::CountsNoOffset:
                if (!rec) return int32_t(v);
                return rec->Bit2pA2(int32_t(v));
            case Shown::CountsWithOffset:
                if (!rec) return int32_t(v);
                return rec->Bit2pA(int32_t(v));
            case Shown::PointsToMs:
                if (!rec) return int32_t(v);
                return rec->Bit2msec(int32_t(v));
        }
        return v;
    });
}

CellValue EventCellValue(const Recording& rec, const EventRecord& r, int row, int column) {
    return EventCellValue(&rec, r, row, column);
}

std::string FormatCell(const CellValue& value) {
    return std::visit(
        [](auto v) -> std::string {
            // A measurement that could not be made (not a number) is left
            // empty rather than shown as "nan".
            if constexpr (std::is_same_v<decltype(v), float>)
                return std::isnan(v) ? std::string() : fmt::format("{}", v);
            else return fmt::format("{}", int32_t(v));
        },
        value);
}

}  // namespace vess
