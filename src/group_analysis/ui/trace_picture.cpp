#include "group_analysis/ui/trace_picture.h"

#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <cmath>

namespace vess::group {

namespace {
constexpr int kMargin = 40;
// How near (pixels) a right click must come to a trace to pick it.
constexpr double kPickPixels = 6;

// The 1, 2 or 5 times a power of ten nearest below span / 4.
double RoundBar(double span) {
    const double target = span / 4;
    if (!(target > 0)) return 0;
    const double decade = std::pow(10.0, std::floor(std::log10(target)));
    for (double m : {5.0, 2.0, 1.0})
        if (m * decade <= target) return m * decade;
    return decade;
}
}  // namespace

TracePicture::TracePicture(QWidget* parent) : QWidget(parent) {
    setObjectName("Picture1");
    setToolTip(tr("Click right button to highlight a trace"));
    setMinimumSize(400, 250);
    setFocusPolicy(Qt::StrongFocus);
    setAutoFillBackground(true);
    QPalette p = palette();
    p.setColor(QPalette::Window, Qt::black);
    setPalette(p);
}

void TracePicture::SetTraces(const TraceSet* set, const UnitScale& scale) {
    set_ = set;
    scale_ = scale;
    trace_ = 0;
    highlighted_ = -1;
    curve_.clear();
    marks_.clear();
    cursorsPlaced_ = false;
    update();
}
void TracePicture::ShowTrace(int32_t trace) {
    if (trace != trace_ || all_) highlighted_ = -1, marks_.clear();
    trace_ = trace;
    all_ = false;
    update();
}
void TracePicture::ShowAll() { all_ = true; update(); }
void TracePicture::SetDecimation(int everyPoints) { every_ = std::max(everyPoints, 1); update(); }
void TracePicture::SetGainOffset(double gain, double offset) {
    gain_ = gain > 0 ? gain : 1;
    offset_ = offset;
    update();
}
void TracePicture::SetCurve(int32_t fromPoint, std::vector<double> values) {
    curveFrom_ = fromPoint;
    curve_ = std::move(values);
    update();
}
void TracePicture::ClearCurve() { curve_.clear(); update(); }
void TracePicture::SetMarks(std::vector<PlotSeries> marks) { marks_ = std::move(marks); update(); }

void TracePicture::DrawMarks(QPainter& p, std::pair<double, double> range) const {
    const double pointsPerMs = 1000.0 / set_->intervalUs;
    for (const PlotSeries& s : marks_) {
        const Colour c = s.colour.value_or(Colour{255, 255, 0});
        p.setPen(QPen(QColor(c.r, c.g, c.b), 2));
        QPolygonF line;
        for (std::size_t k = 0; k < s.Size(); ++k) {
            const QPointF at(XOf(s.x[k] * pointsPerMs), YOf(s.y[k], range));
            if (s.kind == SeriesKind::Scatter) p.drawEllipse(at, s.pointSize / 2 + 1, s.pointSize / 2 + 1);
            else line << at;
        }
        if (!line.isEmpty()) p.drawPolyline(line);
    }
}

void TracePicture::SetCursor(int which, int32_t point) {
    const int32_t last = set_ && set_->length > 0 ? set_->length - 1 : 0;
    cursor_[which] = std::clamp(point, 0, last);
    update();
    emit CursorsMoved();
}

double TracePicture::ValueAt(int32_t point) const {
    if (!set_ || set_->Empty() || point < 0 || point >= set_->length) return 0;
    return scale_.Level(set_->Row(all_ ? 0 : trace_)[std::size_t(point)]);
}

QPointF TracePicture::PixelOf(int32_t t, int32_t point) const {
    if (!set_ || t < 0 || t > set_->count || point < 0 || point >= set_->length) return {};
    return {XOf(point), YOf(scale_.Level(set_->Row(t)[std::size_t(point)]))};
}

double TracePicture::XOf(double point) const {
    const int32_t n = set_ ? std::max(set_->length - 1, 1) : 1;
    return kMargin + double(width() - 2 * kMargin) * point / n;
}
int32_t TracePicture::PointOf(double x) const {
    const int32_t n = set_ ? std::max(set_->length - 1, 1) : 1;
    return int32_t(std::lround((x - kMargin) / double(width() - 2 * kMargin) * n));
}

// The range of the drawn rows, widened by the display gain around its
// centre and moved by the display offset (units).
std::pair<double, double> TracePicture::YRange() const {
    double lo = 1e300, hi = -1e300;
    const int32_t first = all_ ? 1 : trace_, last = all_ ? set_->count : trace_;
    for (int32_t t = first; t <= last; ++t)
        for (int16_t v : set_->Row(t)) {
            lo = std::min(lo, scale_.Level(v));
            hi = std::max(hi, scale_.Level(v));
        }
    if (hi <= lo) hi = lo + 1;
    const double mid = (lo + hi) / 2 + offset_, half = (hi - lo) / 2 * 1.1 / gain_;
    return {mid - half, mid + half};
}

double TracePicture::YOf(double units) const { return YOf(units, YRange()); }

double TracePicture::YOf(double units, std::pair<double, double> range) const {
    const auto [lo, hi] = range;
    return height() - kMargin / 2.0 - (units - lo) / (hi - lo) * (height() - kMargin);
}

void TracePicture::paintEvent(QPaintEvent*) {
    QPainter p(this);
    p.setRenderHint(QPainter::Antialiasing);
    p.setPen(QColor(90, 90, 90));
    p.drawRect(kMargin, kMargin / 2, width() - 2 * kMargin, height() - kMargin);
    if (!set_ || set_->Empty() || set_->length < 1) return;
    const auto range = YRange();
    const auto [lo, hi] = range;
    p.setPen(Qt::lightGray);
    p.drawText(2, kMargin / 2 + 12, QString::number(hi, 'f', 1));
    p.drawText(2, height() - kMargin / 2, QString::number(lo, 'f', 1));
    p.drawText(width() - kMargin - 80, height() - 4,
               QString("%1 ms").arg(set_->TimeMs(set_->length - 1), 0, 'f', 1));
    auto drawRow = [&](int32_t t, const QColor& colour) {
        QPainterPath path;
        const auto row = set_->Row(t);
        for (int32_t j = 0; j < set_->length; j += every_) {
            const QPointF pt(XOf(j), YOf(scale_.Level(row[std::size_t(j)]), range));
            if (j == 0) path.moveTo(pt);
            else path.lineTo(pt);
        }
        p.setPen(QPen(colour, 1));
        p.drawPath(path);
    };
    if (all_) {
        for (int32_t t = 1; t <= set_->count; ++t)
            if (t != highlighted_) drawRow(t, QColor(80, 160, 255));
        // The highlighted trace over the others.
        if (highlighted_ >= 1 && highlighted_ <= set_->count) drawRow(highlighted_, QColor(Qt::yellow));
    } else {
        drawRow(trace_, trace_ == highlighted_ ? QColor(Qt::yellow)
                        : trace_ == 0         ? QColor(Qt::white)
                                              : QColor(80, 200, 255));
    }
    if (!curve_.empty()) {
        QPainterPath path;
        for (std::size_t k = 0; k < curve_.size(); ++k) {
            const QPointF pt(XOf(curveFrom_ + int32_t(k)), YOf(curve_[k], range));
            if (k == 0) path.moveTo(pt);
            else path.lineTo(pt);
        }
        p.setPen(QPen(Qt::red, 2));
        p.drawPath(path);
    }
    DrawMarks(p, range);
    if (scaleBars_) DrawScaleBars(p);
    p.setPen(QPen(Qt::green, 1, Qt::DashLine));
    for (int32_t c : cursor_) p.drawLine(QPointF(XOf(c), kMargin / 2.0), QPointF(XOf(c), height() - kMargin / 2.0));
}

void TracePicture::DrawScaleBars(QPainter& p) const {
    const auto [lo, hi] = YRange();
    const double ms = RoundBar(set_->TimeMs(set_->length - 1)), units = RoundBar(hi - lo);
    if (ms <= 0 || units <= 0) return;
    const double msPerPixel = set_->TimeMs(set_->length - 1) / double(width() - 2 * kMargin);
    const QPointF corner(width() - kMargin - 10, height() - kMargin);
    const QPointF left(corner.x() - ms / msPerPixel, corner.y());
    const QPointF top(corner.x(), YOf(lo + units) - YOf(lo) + corner.y());
    p.setPen(QPen(Qt::white, 2));
    p.drawLine(left, corner);
    p.drawLine(corner, top);
    p.drawText(QPointF(left.x(), corner.y() + 14), QString("%1 ms").arg(ms));
    p.drawText(QPointF(corner.x() - 70, top.y() + 12), QString("%1 %2").arg(units).arg(QString::fromStdString(scale_.units)));
}

double TracePicture::DistanceToRow(int32_t t, QPointF at) const {
    // The drawn points within a few pixels either side of the click.
    const int32_t from = std::max(PointOf(at.x() - kPickPixels), 0);
    const int32_t to = std::min(PointOf(at.x() + kPickPixels), set_->length - 1);
    const auto row = set_->Row(t);
    const auto range = YRange();
    double best = 1e300;
    for (int32_t j = from; j <= to; ++j)
        best = std::min(best, std::fabs(YOf(scale_.Level(row[std::size_t(j)]), range) - at.y()));
    return best;
}

void TracePicture::mousePressEvent(QMouseEvent* e) {
    if (!set_ || set_->Empty()) return;
    const int32_t point = PointOf(e->position().x());
    if (e->button() == Qt::RightButton) {
        int32_t chosen = -1;
        if (all_) {
            // The trace nearest the click.
            double bestDistance = 1e300;
            for (int32_t t = 1; t <= set_->count; ++t) {
                const double d = DistanceToRow(t, e->position());
                if (d < bestDistance) bestDistance = d, chosen = t;
            }
        } else if (DistanceToRow(trace_, e->position()) <= kPickPixels) {
            chosen = trace_;
        }
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

}  // namespace vess::group
