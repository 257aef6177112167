#include "detection/trace_zoom.h"

#include <algorithm>
#include <cmath>

namespace vess {

double WheelZoomFactor(int angleDelta) { return std::pow(0.8, double(angleDelta) / 120.0); }

TraceZoom ZoomTime(const TraceZoom& view, double at, double factor, double windowLen) {
    TraceZoom out = view;
    const double span = std::clamp((view.lastIndex - view.firstIndex) * factor,
                                   std::min(kMinZoomPoints, windowLen), windowLen);
    const double share = view.lastIndex > view.firstIndex
                             ? (at - view.firstIndex) / (view.lastIndex - view.firstIndex)
                             : 0.5;
    out.firstIndex = std::clamp(at - share * span, 0.0, windowLen - span);
    out.lastIndex = out.firstIndex + span;
    return out;
}

TraceZoom ZoomLevel(const TraceZoom& view, double at, double factor) {
    TraceZoom out = view;
    const double height = view.topCounts - view.bottomCounts;
    const double span = std::max(height * factor, kMinZoomCounts);
    const double share = height > 0 ? (at - view.bottomCounts) / height : 0.5;
    out.bottomCounts = at - share * span;
    out.topCounts = out.bottomCounts + span;
    return out;
}

TraceZoom ZoomToRectangle(const TraceZoom& view, double index1, double counts1, double index2,
                          double counts2, double windowLen) {
    const double first = std::clamp(std::min(index1, index2), 0.0, windowLen);
    const double last = std::clamp(std::max(index1, index2), 0.0, windowLen);
    const double bottom = std::min(counts1, counts2), top = std::max(counts1, counts2);
    if (last - first < kMinZoomPoints || top - bottom < kMinZoomCounts) return view;
    return {first, last, bottom, top};
}

}  // namespace vess
