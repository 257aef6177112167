#include "detection/ui/trace_view.h"

#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <cmath>
#include <vector>

#include "detection/axis_ticks.h"
#include "detection/decimate.h"
#include "detection/ui/trace_style.h"
#include "detection/ui/texts.h"
#include "recording/event_table.h"
#include "recording/number_text.h"
#include "recording/rounding.h"
#include "recording/screen.h"
#include "recording/settings.h"

namespace vess {
namespace {

constexpr int kLeftMargin = 64, kBottomMargin = 26, kTopMargin = 8, kRightMargin = 10;

}  // namespace

TraceView::TraceView(QWidget* parent) : QWidget(parent) {
    setObjectName("Picture1");
    setMouseTracking(true);
    setMinimumSize(320, 180);
    setAttribute(Qt::WA_OpaquePaintEvent);
    setFocusPolicy(Qt::StrongFocus);
    setToolTip(QStringList{ui_text::kTipClickDetect, ui_text::kTipClickSelect,
                           ui_text::kTipClickRecalculate, ui_text::kTipClickDelete,
                           ui_text::kTipClickDoublePeak, ui_text::kTipClickReject,
                           ui_text::kTipClickDetectLow}
                   .join('\n'));
}

void TraceView::SetScreen(const Screen* screen) {
    screen_ = screen && screen->Valid() ? screen : nullptr;
    zoom_.reset();
    UpdateFrame();
    TraceChanged();
}

void TraceView::SetEvents(const EventTable* events, const AnalysisParameters* params) {
    events_ = events;
    params_ = params;
    // The baseline's place in the frame follows the event direction.
    const int direction = params ? params->PeakDirection : -1;
    // New events whose peaks the frame cuts off widen it.
    if (screen_ && !lockBase_ &&
        ((direction < 0) != (frameDirection_ < 0) || PeakOutsideFrame())) {
        UpdateFrame();
        TraceChanged();
    }
    MarksChanged();
}

void TraceView::SetSelectedEvent(int32_t index) {
    if (selected_ == index) return;
    selected_ = index;
    MarksChanged();
}

void TraceView::SetDisplay(const DisplayScale& scale, bool lockBase) {
    if (scale.gain == scale_.gain && scale.offsetCounts == scale_.offsetCounts &&
        lockBase == lockBase_)
        return;
    scale_ = scale;
    zoom_.reset();
    if (lockBase != lockBase_) haveLockedFrame_ = false;
    lockBase_ = lockBase;
    UpdateFrame();
    TraceChanged();
}

void TraceView::SetCursorsOn(bool on) {
    cursorsOn_ = on;
    if (!on) cursor1_.reset(), cursor2_.reset();
    emit CursorReadoutChanged(CursorReadout());
    repaint_.Ask(*this);
}

void TraceView::ResetScale() {
    // The screen may belong to a recording already closed: the next SetScreen
    // fits the frame.
    haveLockedFrame_ = false;
    TraceChanged();
}

void TraceView::TraceChanged() {
    dirty_ = true;
    repaint_.Ask(*this);
}

void TraceView::MarksChanged() { repaint_.Ask(*this); }

QRect TraceView::PlotRect() const {
    return QRect(kLeftMargin, kTopMargin, std::max(1, width() - kLeftMargin - kRightMargin),
                 std::max(1, height() - kTopMargin - kBottomMargin));
}

TraceZoom TraceView::View() const {
    if (zoom_) return *zoom_;
    const VisibleCounts v = VisibleRange(scale_, frame_.centreCounts, FullSpanCounts());
    return {0, screen_ ? double(screen_->WindowLen()) : 1.0, v.bottomCounts, v.topCounts};
}

void TraceView::ResetZoom() {
    if (!zoom_) return;
    zoom_.reset();
    TraceChanged();
}

double TraceView::XOfIndex(double index) const {
    const QRect r = PlotRect();
    const TraceZoom v = View();
    return r.left() + (index - v.firstIndex) * r.width() / (v.lastIndex - v.firstIndex);
}

double TraceView::IndexAtXUnclamped(double x) const {
    const QRect r = PlotRect();
    const TraceZoom v = View();
    return v.firstIndex + (x - r.left()) * (v.lastIndex - v.firstIndex) / r.width();
}

int64_t TraceView::IndexAtX(double x) const {
    const double n = screen_ ? screen_->WindowLen() : 1;
    const auto i = int64_t(std::floor(IndexAtXUnclamped(x)));
    return std::clamp<int64_t>(i, 0, int64_t(n) - 1);
}

double TraceView::YOfCounts(double counts) const {
    const QRect r = PlotRect();
    const TraceZoom v = View();
    return r.top() + r.height() * (v.topCounts - counts) / (v.topCounts - v.bottomCounts);
}

double TraceView::CountsAtY(double y) const {
    const QRect r = PlotRect();
    const TraceZoom v = View();
    return v.topCounts - (y - r.top()) / r.height() * (v.topCounts - v.bottomCounts);
}

std::optional<int64_t> TraceView::PeakIndexOf(const EventRecord& r) const {
    if (!screen_) return std::nullopt;
    int64_t absolute = r.sampleIndex;
    if (absolute == 0 && r.time != 0)  // records made without a sample index
        absolute = RoundEven(double(r.time) * 1000.0 / screen_->Rec().IntervalUs());
    return absolute - screen_->AbsoluteIndex(0);
}

int TraceView::DataLength() const {
    if (!screen_) return 0;
    const int64_t left = screen_->Rec().PointsPerChannel() - screen_->AbsoluteIndex(0);
    return int(std::clamp<int64_t>(left, 0, screen_->WindowLen()));
}

std::span<const int16_t> TraceView::DataSamples() const {
    const int64_t n = DataLength();
    const int16_t* held = n > 0 ? screen_->Samples(0, n) : nullptr;
    return held ? std::span<const int16_t>(held, std::size_t(n)) : std::span<const int16_t>();
}

std::vector<int16_t> TraceView::PeakLevels() const {
    std::vector<int16_t> levels;
    if (!screen_ || !events_) return levels;
    const int n = DataLength();
    const auto [first, end] = RowsOnScreen();
    for (int32_t k = first; k < end; ++k) {
        const auto peak = PeakIndexOf((*events_)[k]);
        if (peak && *peak >= 0 && *peak < n) levels.push_back(screen_->GetSampleValue(*peak));
    }
    return levels;
}

std::pair<int32_t, int32_t> TraceView::RowsOnScreen() const {
    const int64_t start = screen_->AbsoluteIndex(0);
    return events_->RowsAround(start, start + screen_->WindowLen());
}

bool TraceView::PeakOutsideFrame() const {
    const double top = frame_.centreCounts + frame_.spanCounts / 2;
    const double bottom = frame_.centreCounts - frame_.spanCounts / 2;
    for (const int16_t level : PeakLevels())
        if (level > top || level < bottom) return true;
    return false;
}

void TraceView::UpdateFrame() {
    if (!screen_ || (lockBase_ && haveLockedFrame_)) return;
    frameDirection_ = params_ ? params_->PeakDirection : -1;
    frame_ = FitFrame(DataSamples(), frameDirection_, PeakLevels());
    haveLockedFrame_ = true;
}

DisplayScale TraceView::FitAllScale() const { return FitAllSamples(DataSamples(), frame_); }

void TraceView::RenderTrace() {
    const qreal dpr = devicePixelRatioF();
    cache_ = QPixmap(size() * dpr);
    cache_.setDevicePixelRatio(dpr);
    cache_.fill(trace_style::kBackground);
    ++renders_;
    dirty_ = false;
    QPainter p(&cache_);
    p.setRenderHint(QPainter::Antialiasing, false);
    const QRect plot = PlotRect();
    if (!screen_) {
        p.setPen(trace_style::kAxisColour);
        p.drawText(rect(), Qt::AlignCenter, tr("Choose an ABF file in the file list"));
        return;
    }
    DrawAxes(p, plot);
    DrawPastData(p, plot);

    // Only the samples of the data: past its end there is nothing to draw.
    // Of them, those in the view (the whole screen unless zoomed).
    const std::span<const int16_t> all = DataSamples();
    const TraceZoom v = View();
    const auto from = std::clamp<int64_t>(int64_t(std::floor(v.firstIndex)), 0, int64_t(all.size()));
    const auto to = std::clamp<int64_t>(int64_t(std::ceil(v.lastIndex)), from, int64_t(all.size()));
    const std::span<const int16_t> samples(all.data() + from, std::size_t(to - from));
    const int n = int(samples.size());
    const int columns = int(std::floor(double(plot.width()) * n / (v.lastIndex - v.firstIndex)));
    const DecimatedTrace d = Decimate(samples, columns);
    QPolygonF line;
    if (d.plain) {
        line.reserve(n);
        for (int i = 0; i < n; ++i)
            line << QPointF(XOfIndex(double(from + i) + 0.5), YOfCounts(samples[std::size_t(i)]));
    } else {
        line.reserve(qsizetype(d.columns.size() * 4));
        for (std::size_t c = 0; c < d.columns.size(); ++c) {
            const auto& col = d.columns[c];
            const double x = XOfIndex(double(from)) + double(c) + 0.5;
            line << QPointF(x, YOfCounts(col.first)) << QPointF(x, YOfCounts(col.min))
                 << QPointF(x, YOfCounts(col.max)) << QPointF(x, YOfCounts(col.last));
        }
    }
    p.setClipRect(plot);
    p.setRenderHint(QPainter::Antialiasing, d.plain);
    p.setPen(QPen(trace_style::kTraceColour, 1.0));
    p.drawPolyline(line);
}

// The stretch of the screen past the end of the data, shaded and named.
void TraceView::DrawPastData(QPainter& p, const QRect& plot) const {
    const int n = DataLength();
    if (n >= screen_->WindowLen()) return;
    const double x = std::max(XOfIndex(n), double(plot.left()));
    if (x >= plot.right()) return;
    const QRectF past(x, plot.top(), plot.right() - x, plot.height());
    p.fillRect(past, trace_style::kPastDataColour);
    p.setPen(trace_style::kAxisColour);
    if (past.width() > p.fontMetrics().horizontalAdvance(tr("End of data")) + 12)
        p.drawText(past.adjusted(6, 4, -4, -4), Qt::AlignLeft | Qt::AlignTop, tr("End of data"));
}

void TraceView::DrawAxes(QPainter& p, const QRect& plot) const {
    using namespace trace_style;
    const Recording& rec = screen_->Rec();
    const QFontMetrics fm = p.fontMetrics();
    const auto width = [&fm](const std::string& s) {
        return double(fm.horizontalAdvance(QString::fromStdString(s)));
    };
    // Time axis in ms from the start of the data; the unit at its right end.
    const QString unit = "ms";
    const TraceZoom v = View();
    const double msPerPoint = rec.IntervalUs() / 1000.0;
    const double t0 = screen_->CalculateTime(0) + v.firstIndex * msPerPoint;
    const double t1 = screen_->CalculateTime(0) + v.lastIndex * msPerPoint;
    const double labelY = plot.bottom() + 6 + fm.ascent();
    for (const AxisTick& t : AxisTicks(t0, t1, plot.width(), 90, fm.horizontalAdvance(unit), width)) {
        const double x = plot.left() + t.position;
        p.setPen(kGridColour);
        p.drawLine(QPointF(x, plot.top()), QPointF(x, plot.bottom()));
        p.setPen(kAxisColour);
        p.drawLine(QPointF(x, plot.bottom()), QPointF(x, plot.bottom() + 4));
        if (!t.label.empty())
            p.drawText(QPointF(x - width(t.label) / 2.0, labelY), QString::fromStdString(t.label));
    }
    p.setPen(kAxisColour);
    p.drawText(QPointF(plot.right() - fm.horizontalAdvance(unit), labelY), unit);
    // Amplitude axis in the channel's units.
    const double top = rec.Bit2pA(int32_t(CountsAtY(plot.top())));
    const double bottom = rec.Bit2pA(int32_t(CountsAtY(plot.bottom())));
    const double lo = std::min(top, bottom), hi = std::max(top, bottom);
    const double vStep = NiceStep(hi - lo, std::max(2, plot.height() / 40));
    for (double v = std::ceil(lo / vStep) * vStep; v <= hi; v += vStep) {
        const double y = plot.bottom() - (v - bottom) / (top - bottom) * plot.height();
        p.setPen(kGridColour);
        p.drawLine(QPointF(plot.left(), y), QPointF(plot.right(), y));
        p.setPen(kAxisColour);
        p.drawLine(QPointF(plot.left() - 4, y), QPointF(plot.left(), y));
        const QString label = QString::fromStdString(TickLabel(v, vStep));
        p.drawText(QPointF(plot.left() - 6 - fm.horizontalAdvance(label), y + fm.ascent() / 2.0 - 1),
                   label);
    }
    p.drawText(QPointF(4, plot.top() + fm.ascent()), QString::fromStdString(rec.Units()));
    p.drawRect(plot.adjusted(0, 0, -1, -1));
}

void TraceView::DrawCursors(QPainter& p) const {
    if (!cursorsOn_ || !screen_) return;
    const QRect plot = PlotRect();
    p.setPen(QPen(trace_style::kCursorColour, 1, Qt::DashLine));
    for (const auto& c : {cursor1_, cursor2_})
        if (c) p.drawLine(QPointF(XOfIndex(*c + 0.5), plot.top()), QPointF(XOfIndex(*c + 0.5), plot.bottom()));
    p.setPen(QPen(trace_style::kCursorColour, 1, Qt::DotLine));
    if (cursor1_) p.drawLine(QPointF(plot.left(), YOfCounts(cursorCounts1_)), QPointF(plot.right(), YOfCounts(cursorCounts1_)));
    if (cursor2_) p.drawLine(QPointF(plot.left(), YOfCounts(cursorCounts2_)), QPointF(plot.right(), YOfCounts(cursorCounts2_)));
}

std::optional<TraceView::CursorPair> TraceView::Cursors() const {
    if (!cursorsOn_ || !cursor1_ || !cursor2_) return std::nullopt;
    return CursorPair{*cursor1_, *cursor2_, cursorCounts1_, cursorCounts2_};
}

QString TraceView::CursorReadout() const {
    if (!cursorsOn_ || !screen_) return {};
    const Recording& rec = screen_->Rec();
    auto part = [&](const char* xl, const char* yl, const std::optional<int64_t>& c) {
        if (!c) return QString(xl) + " -" + yl + " -";
        return QString(xl) + QString::number(screen_->CalculateTime(*c), 'f', 2) + yl +
               QString::fromStdString(FixedOrSignificant(rec.Bit2pA(screen_->GetSampleValue(*c)), 2));
    };
    QString text = part(ui_text::kCursorX1, ui_text::kCursorY1, cursor1_) + "     " +
                   part(ui_text::kCursorX2, ui_text::kCursorY2, cursor2_);
    if (cursor1_ && cursor2_)
        text += QString("     dx: %1 ms").arg(std::abs(screen_->CalculateTime(*cursor2_) -
                                                       screen_->CalculateTime(*cursor1_)), 0, 'f', 2);
    return text;
}

void TraceView::paintEvent(QPaintEvent*) {
    repaint_.Painted();
    if (dirty_ || cache_.size() != size() * devicePixelRatioF()) RenderTrace();
    QPainter p(this);
    p.drawPixmap(0, 0, cache_);
    p.setClipRect(PlotRect());
    DrawMarks(p);
    DrawCursors(p);
}

void TraceView::resizeEvent(QResizeEvent*) { dirty_ = true; }

void TraceView::mousePressEvent(QMouseEvent* event) {
    setFocus(Qt::MouseFocusReason);
    if (!screen_ || !PlotRect().contains(event->position().toPoint())) return;
    const int64_t index = IndexAtX(event->position().x());
    if (event->button() == Qt::LeftButton && event->modifiers() == Qt::ShiftModifier) {
        dragFrom_ = event->position().toPoint();  // a click or a zoom rectangle: the release tells
        return;
    }
    if (cursorsOn_ && event->button() == Qt::MiddleButton) {
        cursor2_ = index;
        cursorCounts2_ = CountsAtY(event->position().y());
        emit CursorReadoutChanged(CursorReadout());
        repaint_.Ask(*this);
        return;
    }
    emit TraceClicked(index, event->button(), event->modifiers());
}

void TraceView::mouseMoveEvent(QMouseEvent* event) {
    if (dragFrom_) DragTo(event->position().toPoint());
    if (!screen_ || !PlotRect().contains(event->position().toPoint())) return;
    const int64_t index = IndexAtX(event->position().x());
    emit PointerMoved(screen_->CalculateTime(index),
                      screen_->Rec().Bit2pA(int32_t(CountsAtY(event->position().y()))));
    if (cursorsOn_) {
        cursor1_ = index;
        cursorCounts1_ = CountsAtY(event->position().y());
        emit CursorReadoutChanged(CursorReadout());
        repaint_.Ask(*this);
    }
}

}  // namespace vess
