#include "graphs/ui/plot_canvas.h"

namespace vess {

PlotCanvas::PlotCanvas(QWidget* parent) : QCustomPlot(parent) {
    setInteractions(QCP::iRangeDrag | QCP::iRangeZoom);
    // Large data stay responsive: no antialiasing while dragging and the
    // fast polyline path of QCustomPlot.
    setNoAntialiasingOnDrag(true);
    setPlottingHints(QCP::phFastPolylines | QCP::phCacheLabels);
    setMinimumSize(240, 180);
    setFocusPolicy(Qt::ClickFocus);
    selectionRect()->setPen(QPen(Qt::black, 1, Qt::DashLine));
    selectionRect()->setBrush(QColor(0, 0, 255, 30));
}

void PlotCanvas::mousePressEvent(QMouseEvent* event) {
    const bool rectangle =
        event->button() == Qt::LeftButton && event->modifiers().testFlag(Qt::ControlModifier);
    setSelectionRectMode(rectangle ? QCP::srmZoom : QCP::srmNone);
    QCustomPlot::mousePressEvent(event);
}

void PlotCanvas::mouseDoubleClickEvent(QMouseEvent* event) {
    QCustomPlot::mouseDoubleClickEvent(event);
    if (event->button() == Qt::LeftButton) emit ResetRequested();
}

}  // namespace vess
