// A zoom of the trace view: the stretch of the screen (window indices) and
// the levels (counts) shown. A zoom is a way of looking at the screen; it
// never changes which samples form the screen or how they are analysed.
#pragma once

namespace vess {

struct TraceZoom {
    double firstIndex = 0, lastIndex = 0;    // window indices at the left and right edges
    double bottomCounts = 0, topCounts = 0;  // levels at the bottom and top edges

    bool operator==(const TraceZoom&) const = default;
};

// The narrowest zoom: a few samples wide, a few counts high.
inline constexpr double kMinZoomPoints = 8;
inline constexpr double kMinZoomCounts = 4;

// Factor for a wheel turn of angleDelta eighths of a degree (120 a notch):
// one notch away from the user shows 0.8 of the span.
double WheelZoomFactor(int angleDelta);

// Time scaled by factor around window index at, which stays where it was;
// the result lies within 0 .. windowLen.
TraceZoom ZoomTime(const TraceZoom& view, double at, double factor, double windowLen);
// Levels scaled by factor around the level at.
TraceZoom ZoomLevel(const TraceZoom& view, double at, double factor);
// The rectangle between two corners (window index, counts), in either order,
// clipped to the screen; the view unchanged when it is narrower or lower
// than the narrowest zoom (a click, not a drag).
TraceZoom ZoomToRectangle(const TraceZoom& view, double index1, double counts1, double index2,
                          double counts2, double windowLen);

}  // namespace vess
