#include "group_analysis/ui/trace_picture.h"

#include <QMouseEvent>

#include <qcustomplot.h>

#include <algorithm>
#include <cmath>

#include "graphs/ui/plot_widget.h"

namespace vess::group {

namespace {
// How near (pixels) a right click must come to a trace to pick it.
constexpr double kPickPixels = 6;
}  // namespace

TracePicture::TracePicture(QWidget* parent) : QWidget(parent) {
    setObjectName("Picture1");
    setToolTip(tr("Click right button to highlight a trace"));
    setMinimumSize(400, 250);
    setFocusPolicy(Qt::StrongFocus);
    Redraw();
}

void TracePicture::SetTraces(const TraceSet* set, const UnitScale& scale) {
    set_ = set;
    scale_ = scale;
    view_.trace = 0;
    view_.highlighted = -1;
    view_.curve.clear();
    view_.marks.clear();
    cursorsPlaced_ = false;
    Redraw();
}
void TracePicture::ShowTrace(int32_t trace) {
    if (trace != view_.trace || view_.all) view_.highlighted = -1, view_.marks.clear();
    view_.trace = trace;
    view_.all = false;
    Redraw();
}
void TracePicture::ShowAll() { view_.all = true; Redraw(); }
void TracePicture::SetDecimation(int everyPoints) { view_.every = std::max(everyPoints, 1); Redraw(); }
void TracePicture::SetGainOffset(double gain, double offset) {
    view_.gain = gain > 0 ? gain : 1;
    view_.offset = offset;
    Redraw();
}
void TracePicture::SetCurve(int32_t fromPoint, std::vector<double> values) {
    view_.curveFrom = fromPoint;
    view_.curve = std::move(values);
    Redraw();
}
void TracePicture::ClearCurve() { view_.curve.clear(); Redraw(); }
void TracePicture::SetTitle(std::string title) { title_ = std::move(title); Redraw(); }
void TracePicture::SetMarks(std::vector<PlotSeries> marks) { view_.marks = std::move(marks); Redraw(); }
void TracePicture::SetHighlighted(int32_t trace) { view_.highlighted = trace; Redraw(); }
void TracePicture::SetScaleBars(bool on) { view_.scaleBars = on; Redraw(); }

void TracePicture::SetCursor(int which, int32_t point) {
    const int32_t last = set_ && set_->length > 0 ? set_->length - 1 : 0;
    (which == 0 ? view_.cursors.first : view_.cursors.second) = std::clamp(point, 0, last);
    Redraw();
    emit CursorsMoved();
}

double TracePicture::ValueAt(int32_t point) const {
    if (!set_ || set_->Empty() || point < 0 || point >= set_->length) return 0;
    return scale_.Level(set_->Row(view_.all ? 0 : view_.trace)[std::size_t(point)]);
}

// The plot is made anew for each change: a description in, a picture out,
// with nothing of the last one left over.
void TracePicture::Redraw() {
    static const TraceSet kNone;
    description_ = TracePlot(set_ ? *set_ : kNone, scale_, view_, title_);
    if (plot_) {
        // A click on the old plot may be what asked for the new one.
        plot_->hide();
        plot_->Canvas()->removeEventFilter(this);
        plot_->deleteLater();
    }
    plot_ = new PlotWidget(description_, this);
    plot_->setGeometry(rect());
    QCustomPlot* canvas = plot_->Canvas();
    // Clicks place cursors and pick traces here; the view follows the
    // display gain and offset instead of the mouse.
    canvas->setInteractions({});
    canvas->installEventFilter(this);
    canvas->setToolTip(toolTip());
    canvas->setCursor(cursor());
    plot_->show();
    canvas->replot();
}

void TracePicture::SetManualMode(bool on) {
    manual_ = on;
    setCursor(on ? Qt::CrossCursor : Qt::ArrowCursor);
    plot_->Canvas()->setCursor(cursor());
}

void TracePicture::mousePressEvent(QMouseEvent* event) { Press(event); }

void TracePicture::resizeEvent(QResizeEvent*) {
    if (!plot_) return;
    plot_->setGeometry(rect());
    plot_->Canvas()->replot();
}

bool TracePicture::eventFilter(QObject* watched, QEvent* event) {
    if (!plot_ || watched != plot_->Canvas()) return false;
    switch (event->type()) {
        case QEvent::ContextMenu: return true;  // the right button picks a trace
        case QEvent::MouseButtonPress: Press(static_cast<QMouseEvent*>(event)); return true;
        case QEvent::MouseButtonDblClick:
        case QEvent::MouseMove:
        case QEvent::MouseButtonRelease: return true;
        default: return false;
    }
}

QPointF TracePicture::PixelOf(int32_t t, int32_t point) const {
    if (!set_ || t < 0 || t > set_->count || point < 0 || point >= set_->length) return {};
    const QCustomPlot* canvas = plot_->Canvas();
    const QPointF at(canvas->xAxis->coordToPixel(set_->TimeMs(point)),
                     canvas->yAxis->coordToPixel(scale_.Level(set_->Row(t)[std::size_t(point)])));
    return plot_->Canvas()->mapTo(this, at.toPoint());
}

int32_t TracePicture::PointOf(double x) const {
    const double ms = plot_->Canvas()->xAxis->pixelToCoord(x);
    return int32_t(std::lround(ms * 1000.0 / (set_->intervalUs > 0 ? set_->intervalUs : 1)));
}

void TracePicture::Press(QMouseEvent* e) {
    if (!set_ || set_->Empty()) return;
    const double x = e->position().x();
    const int32_t point = PointOf(x);
    if (e->button() == Qt::RightButton) {
        const QCPAxis* y = plot_->Canvas()->yAxis;
        const double value = y->pixelToCoord(e->position().y());
        const double tolerance = std::fabs(y->pixelToCoord(e->position().y() + kPickPixels) - value);
        const int32_t chosen = PickedTrace(*set_, scale_, view_, PointOf(x - kPickPixels), PointOf(x + kPickPixels),
                                           value, tolerance);
        SetHighlighted(chosen);
        if (chosen >= 0) emit TraceHighlighted(chosen);
        return;
    }
    if (manual_ && e->button() == Qt::LeftButton) {
        emit PointPicked(std::clamp(point, 0, set_->length - 1));
        return;
    }
    const bool second = e->button() == Qt::MiddleButton || (e->modifiers() & Qt::ShiftModifier);
    cursorsPlaced_ = true;
    SetCursor(second ? 1 : 0, point);
}

bool TracePicture::SaveAs(const QString& path) { return plot_->SaveAs(path, width(), height()); }

void TracePicture::Render(QCPPainter& painter, int width, int height) {
    plot_->Canvas()->toPainter(&painter, width, height);
}

}  // namespace vess::group
