// Ticks and their labels along a plot axis: round steps, and labels placed
// so that none overlaps its neighbour or the unit written at the axis end.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace vess {

// A round step (1, 2 or 5 times a power of ten) giving about `wanted` steps
// over range; 1 for an empty range.
double NiceStep(double range, int wanted);

// A value printed with the decimals its step needs.
std::string TickLabel(double value, double step);

struct AxisTick {
    double value = 0;
    double position = 0;  // pixels from the axis start
    std::string label;    // empty when the label is left out for lack of room
};

// Ticks of a horizontal axis of lengthPx pixels showing from..to, about one
// per minSpacingPx (finer when that would leave no label). Labels are centred on their tick (the first may reach
// into the margin before the axis); a label that would overlap the one before
// it or reach into the last reservedEndPx pixels (where the unit is written)
// is left out, its tick kept.
std::vector<AxisTick> AxisTicks(double from, double to, double lengthPx, double minSpacingPx,
                                double reservedEndPx,
                                const std::function<double(const std::string&)>& textWidthPx);

}  // namespace vess
