// The trace view's zoom gestures: the wheel over the plot, and the Shift+left
// drag that either zooms to a rectangle or, released where it was pressed,
// is the Shift+left click that re-measures an event.
#include <QMouseEvent>
#include <QRubberBand>
#include <QWheelEvent>

#include <cstdlib>

#include "detection/ui/trace_view.h"
#include "recording/screen.h"

namespace vess {
namespace {
constexpr int kDragPixels = 4;  // less is a click
}  // namespace

void TraceView::wheelEvent(QWheelEvent* event) {
    const int delta = event->angleDelta().y();
    if (!screen_ || delta == 0 || !PlotRect().contains(event->position().toPoint())) {
        event->ignore();
        return;
    }
    const double factor = WheelZoomFactor(delta);
    if (event->modifiers() & Qt::ControlModifier)
        zoom_ = ZoomLevel(View(), CountsAtY(event->position().y()), factor);
    else
        zoom_ = ZoomTime(View(), IndexAtXUnclamped(event->position().x()), factor,
                         double(screen_->WindowLen()));
    TraceChanged();
    event->accept();
}

void TraceView::DragTo(const QPoint& at) {
    if (!band_) band_ = new QRubberBand(QRubberBand::Rectangle, this);
    band_->setGeometry(QRect(*dragFrom_, at).normalized() & PlotRect());
    band_->show();
}

void TraceView::mouseReleaseEvent(QMouseEvent* event) {
    if (!dragFrom_ || event->button() != Qt::LeftButton) return;
    const QPoint from = *dragFrom_, to = event->position().toPoint();
    dragFrom_.reset();
    if (band_) band_->hide();
    if (!screen_) return;
    if (std::abs(to.x() - from.x()) < kDragPixels && std::abs(to.y() - from.y()) < kDragPixels) {
        emit TraceClicked(IndexAtX(from.x()), Qt::LeftButton, Qt::ShiftModifier);
        return;
    }
    const TraceZoom zoomed =
        ZoomToRectangle(View(), IndexAtXUnclamped(from.x()), CountsAtY(from.y()),
                        IndexAtXUnclamped(to.x()), CountsAtY(to.y()), double(screen_->WindowLen()));
    if (zoomed == View()) return;
    zoom_ = zoomed;
    TraceChanged();
}

}  // namespace vess
