// The marks of stored events over the cached trace: peak, baseline, start and
// decay of every event of the screen, styled by the event's group, with a
// marker at the top or bottom edge for a peak beyond the levels shown.
#include <QPainter>
#include <QPainterPath>

#include "detection/ui/trace_style.h"
#include "detection/ui/trace_view.h"
#include "recording/event_table.h"
#include "recording/rounding.h"
#include "recording/screen.h"
#include "recording/settings.h"

namespace vess {

using namespace trace_style;

void TraceView::DrawMarks(QPainter& p) const {
    if (!screen_ || !events_ || events_->Empty()) return;
    p.setRenderHint(QPainter::Antialiasing, true);
    // The selected event last, so that its marks are on top.
    const auto [first, end] = RowsOnScreen();
    for (int32_t k = first; k < end; ++k) {
        if (k == selected_) continue;
        const auto peak = PeakIndexOf((*events_)[k]);
        if (peak && *peak >= 0 && *peak < screen_->WindowLen()) DrawEventMarks(p, (*events_)[k], *peak, false);
    }
    if (events_->HasRow(selected_)) {
        const auto peak = PeakIndexOf((*events_)[selected_]);
        if (peak && *peak >= 0 && *peak < screen_->WindowLen())
            DrawEventMarks(p, (*events_)[selected_], *peak, true);
    }
}

void TraceView::DrawEventMarks(QPainter& p, const EventRecord& r, int64_t peak, bool selected) const {
    const QRect plot = PlotRect();
    const MarkStyle style = StyleOf(r.group);
    auto colour = [&](const QColor& c) { return style.faded ? Faded(c) : c; };
    auto cross = [&](double x, double y, const QColor& c, double size) {
        p.setPen(QPen(colour(c), 1.6));
        p.drawLine(QPointF(x - size, y - size), QPointF(x + size, y + size));
        p.drawLine(QPointF(x - size, y + size), QPointF(x + size, y - size));
    };
    auto dot = [&](double x, double y, const QColor& c) {
        p.setPen(QPen(colour(c.darker(130)), 1));
        p.setBrush(colour(c));
        p.drawEllipse(QPointF(x, y), 3.0, 3.0);
        p.setBrush(Qt::NoBrush);
    };

    const double x = XOfIndex(peak + 0.5);
    if (selected) p.fillRect(QRectF(x - 6, plot.top(), 12, plot.height()), kSelectColour);
    const double dir = r.peakDirection > 0 ? 1 : -1;
    const int64_t start = peak - r.riseTime;
    const int64_t decay = peak + r.decayTime;
    const double decayLevel = screen_->GetSampleValue(decay - 1) / 3.0 +
                              screen_->GetSampleValue(decay) / 3.0 +
                              screen_->GetSampleValue(decay + 1) / 3.0;
    dot(XOfIndex(start + 0.5), YOfCounts(screen_->GetSampleValue(start)), kStartColour);
    dot(XOfIndex(decay + 0.5), YOfCounts(decayLevel), kDecayColour);
    const double intervalUs = screen_->Rec().IntervalUs();
    const int64_t baseLen = params_ ? RoundEven(params_->PeriodBaselineAverage / intervalUs) : 0;
    if (baseLen > 0 && r.baseOffset > 0) {
        const int64_t middle = peak - r.baseOffset + RoundEven(double(baseLen) / 2.0);
        cross(XOfIndex(middle + 0.5), YOfCounts(r.baseline + r.noise), kBaseColour, 4);
    }

    // A group's colour is worn by the peak mark and a band under the plot's
    // top edge, so that groups stand apart even where marks crowd.
    const double y = YOfCounts(r.baseline + dir * r.amplitude);
    const bool above = y < plot.top(), below = y > plot.bottom();
    if (above || below) {
        // An arrowhead at the edge, pointing the way the peak lies.
        const double edge = above ? plot.top() + 1 : plot.bottom() - 1;
        const double inward = above ? 9 : -9;
        QPainterPath arrow;
        arrow.moveTo(x, edge);
        arrow.lineTo(x - 6, edge + inward);
        arrow.lineTo(x + 6, edge + inward);
        arrow.closeSubpath();
        p.fillPath(arrow, colour(style.peak));
    } else {
        cross(x, y, style.peak, 4);
    }
    if (r.group == kGroupRejected) {
        // Rejected: the faded peak is also struck through.
        p.setPen(QPen(kRejectedColour, 1.2));
        const double yy = std::clamp(y, double(plot.top()) + 10, double(plot.bottom()) - 10);
        p.drawEllipse(QPointF(x, yy), 7.0, 7.0);
        p.drawLine(QPointF(x - 5, yy + 5), QPointF(x + 5, yy - 5));
    } else if (r.group != 0) {
        p.fillRect(QRectF(x - 5, plot.top() + 1, 10, 4), style.peak);
    }
}

}  // namespace vess
