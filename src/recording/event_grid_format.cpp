#include "recording/event_grid_format.h"

#include <algorithm>
#include <cmath>

#include <fmt/format.h>

#include "recording/number_text.h"
#include "recording/recording.h"

namespace vess {
namespace {

enum class Kind { Integer, Counts, Milliseconds, Area, Slope };

Kind KindOf(int column) {
    if (column < 1 || column > kEventFieldCount) return Kind::Integer;
    switch (FieldOfColumn(column)) {
        case EventField::Amplitude:
        case EventField::Noise:
        case EventField::Baseline: return Kind::Counts;
        case EventField::Time:
        case EventField::RiseTime:
        case EventField::DecayTime:
        case EventField::Rise1090:
        case EventField::HalfWidth:
        case EventField::Rise50:
        case EventField::RelativeTime: return Kind::Milliseconds;
        case EventField::Area: return Kind::Area;
        case EventField::Slope1090: return Kind::Slope;
        default: return Kind::Integer;
    }
}

std::string Fixed(double v, int decimals) { return FixedOrSignificant(v, decimals); }

}  // namespace

int DecimalsForStep(double step) {
    step = std::abs(step);
    if (!(step > 0) || !std::isfinite(step) || step >= 1) return 0;
    return std::clamp(int(std::ceil(-std::log10(step) - 1e-9)), 0, 6);
}

int EventColumnDecimals(const Recording* rec, int column) {
    const Kind kind = KindOf(column);
    if (kind == Kind::Integer) return 0;
    if (!rec) {
        const bool stored = FieldOfColumn(column) == EventField::Time || kind == Kind::Area ||
                            kind == Kind::Slope || FieldOfColumn(column) == EventField::Rise1090 ||
                            FieldOfColumn(column) == EventField::HalfWidth;
        return stored ? 2 : 0;
    }
    const double count = rec->Bit2pA2(1), sampleMs = rec->Bit2msec(1);
    switch (kind) {
        case Kind::Counts:
        case Kind::Slope: return DecimalsForStep(count);
        case Kind::Milliseconds: return DecimalsForStep(sampleMs);
        case Kind::Area: return DecimalsForStep(count * sampleMs);
        case Kind::Integer: break;
    }
    return 0;
}

std::string FormatGridCell(const CellValue& value, int decimals) {
    return std::visit(
        [decimals](auto v) -> std::string {
            // A measurement that could not be made (not a number) stays empty.
            if constexpr (std::is_same_v<decltype(v), float>)
                return std::isnan(v) ? std::string() : Fixed(double(v), decimals);
            else return fmt::format("{}", int32_t(v));
        },
        value);
}

std::string EventColumnWidestText(const Recording* rec, int column) {
    const int decimals = EventColumnDecimals(rec, column);
    if (column < 1 || column > kEventFieldCount) return "99999";
    const EventField field = FieldOfColumn(column);
    switch (field) {
        case EventField::Group: return std::to_string(kLastGroup);
        case EventField::Channel: return "15";
        case EventField::PeakDirection: return "-1";
        case EventField::BurstNumber:
        case EventField::BurstEventNumber: return "-32768";
        default: break;
    }
    if (!rec) return Fixed(-2147483648.0, decimals);
    const double amplitude = std::abs(rec->Bit2pA2(65535));  // peak to peak of 16 bits
    const double sampleMs = rec->Bit2msec(1);
    switch (field) {
        case EventField::Time: return Fixed(rec->Bit2msec(1) * double(rec->PointsPerChannel()), decimals);
        case EventField::Amplitude:
        case EventField::Noise: return Fixed(-amplitude, decimals);
        case EventField::Baseline: {
            const std::string low = Fixed(rec->Bit2pA(-32768), decimals);
            const std::string high = Fixed(rec->Bit2pA(32767), decimals);
            return low.size() >= high.size() ? low : high;
        }
        case EventField::Area: return Fixed(-amplitude * 100.0, decimals);  // 100 ms at full scale
        case EventField::Slope1090: return Fixed(-amplitude / sampleMs, decimals);
        default: return Fixed(rec->Bit2msec(32767), decimals);  // durations in points
    }
}

}  // namespace vess
