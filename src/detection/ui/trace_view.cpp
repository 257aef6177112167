#include "detection/ui/trace_view.h"

#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <cmath>
#include <vector>

#include "detection/decimate.h"
#include "detection/ui/texts.h"
#include "recording/event_table.h"
#include "recording/rounding.h"
#include "recording/screen.h"
#include "recording/settings.h"

namespace vess {
namespace {

// Mark colours chosen to stay apart on a light background: red peak, green
// baseline, amber start (a pure yellow vanishes on white), magenta decay.
const QColor kBackground(0xfb, 0xfb, 0xf8);
const QColor kTraceColour(0x20, 0x30, 0x48);
const QColor kAxisColour(0x60, 0x60, 0x60);
const QColor kGridColour(0xe4, 0xe4, 0xe0);
const QColor kPeakColour(0xd0, 0x10, 0x10);
const QColor kBaseColour(0x10, 0x9a, 0x20);
const QColor kStartColour(0xe8, 0xa8, 0x00);
const QColor kDecayColour(0xc0, 0x00, 0xc0);
const QColor kSelectColour(0x30, 0x70, 0xe0, 60);
const QColor kCursorColour(0x00, 0x80, 0x90);

constexpr int kLeftMargin = 64, kBottomMargin = 26, kTopMargin = 8, kRightMargin = 10;

// A round step (1, 2 or 5 times a power of ten) giving about `wanted` ticks.
double NiceStep(double range, int wanted) {
    if (!(range > 0) || wanted < 1) return 1;
    const double raw = range / wanted;
    const double p = std::pow(10.0, std::floor(std::log10(raw)));
    for (double m : {1.0, 2.0, 5.0, 10.0})
        if (raw <= m * p) return m * p;
    return 10 * p;
}

QString Number(double v, double step) {
    const int decimals = step >= 1 ? 0 : std::min(6, int(std::ceil(-std::log10(step))));
    return QString::number(v, 'f', decimals);
}

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
    TraceChanged();
}

void TraceView::SetEvents(const EventTable* events, const AnalysisParameters* params) {
    events_ = events;
    params_ = params;
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
    if (lockBase != lockBase_) haveLockedCentre_ = false;
    lockBase_ = lockBase;
    TraceChanged();
}

void TraceView::SetCursorsOn(bool on) {
    cursorsOn_ = on;
    if (!on) cursor1_.reset(), cursor2_.reset();
    emit CursorReadoutChanged(CursorReadout());
    update();
}

void TraceView::ResetScale() {
    spanCounts_ = 0;
    haveLockedCentre_ = false;
    TraceChanged();
}

void TraceView::TraceChanged() {
    dirty_ = true;
    update();
}

void TraceView::MarksChanged() { update(); }

QRect TraceView::PlotRect() const {
    return QRect(kLeftMargin, kTopMargin, std::max(1, width() - kLeftMargin - kRightMargin),
                 std::max(1, height() - kTopMargin - kBottomMargin));
}

double TraceView::XOfIndex(double index) const {
    const QRect r = PlotRect();
    const double n = screen_ ? screen_->WindowLen() : 1;
    return r.left() + index * r.width() / n;
}

int64_t TraceView::IndexAtX(double x) const {
    const QRect r = PlotRect();
    const double n = screen_ ? screen_->WindowLen() : 1;
    const auto i = int64_t(std::floor((x - r.left()) * n / r.width()));
    return std::clamp<int64_t>(i, 0, int64_t(n) - 1);
}

double TraceView::YOfCounts(double counts) const {
    const QRect r = PlotRect();
    const VisibleCounts v = VisibleRange(scale_, centreCounts_, FullSpanCounts());
    return r.top() + r.height() * (v.topCounts - counts) / (v.topCounts - v.bottomCounts);
}

double TraceView::CountsAtY(double y) const {
    const QRect r = PlotRect();
    const VisibleCounts v = VisibleRange(scale_, centreCounts_, FullSpanCounts());
    return v.topCounts - (y - r.top()) / r.height() * (v.topCounts - v.bottomCounts);
}

std::optional<int64_t> TraceView::PeakIndexOf(const EventRecord& r) const {
    if (!screen_) return std::nullopt;
    int64_t absolute = r.sampleIndex;
    if (absolute == 0 && r.time != 0)  // records made without a sample index
        absolute = RoundEven(double(r.time) * 1000.0 / screen_->Rec().IntervalUs());
    return absolute - screen_->AbsoluteIndex(0);
}

void TraceView::UpdateCentre() {
    if (!screen_) return;
    const int n = screen_->WindowLen();
    std::vector<int16_t> samples(static_cast<std::size_t>(n));
    for (int i = 0; i < n; ++i) samples[std::size_t(i)] = screen_->GetSampleValue(i);
    // The start of a recording fixes the vertical scale, so that event sizes
    // look alike from screen to screen; gain changes it from there.
    if (spanCounts_ <= 0) {
        const Recording& rec = screen_->Rec();
        std::vector<int16_t> head(std::size_t(std::min<int64_t>(rec.PointsPerChannel(), 400000)));
        rec.ReadSamples(0, head);
        const LevelRange r = RobustRange(head.empty() ? std::span<const int16_t>(samples)
                                                      : std::span<const int16_t>(head),
                                         0.0002);
        spanCounts_ = std::max(64.0, (double(r.high) - double(r.low)) * 1.4);
    }
    // The baseline (the median) sits in the middle, not the mean of the events.
    if (!lockBase_ || !haveLockedCentre_) centreCounts_ = MedianLevel(samples);
    haveLockedCentre_ = true;
}

void TraceView::RenderTrace() {
    const qreal dpr = devicePixelRatioF();
    cache_ = QPixmap(size() * dpr);
    cache_.setDevicePixelRatio(dpr);
    cache_.fill(kBackground);
    ++renders_;
    dirty_ = false;
    QPainter p(&cache_);
    p.setRenderHint(QPainter::Antialiasing, false);
    const QRect plot = PlotRect();
    if (!screen_) {
        p.setPen(kAxisColour);
        p.drawText(rect(), Qt::AlignCenter, tr("Choose an ABF file in the file list"));
        return;
    }
    UpdateCentre();
    DrawAxes(p, plot);

    const int n = screen_->WindowLen();
    std::vector<int16_t> samples(static_cast<std::size_t>(n));
    for (int i = 0; i < n; ++i) samples[std::size_t(i)] = screen_->GetSampleValue(i);
    const DecimatedTrace d = Decimate(samples, plot.width());
    QPolygonF line;
    if (d.plain) {
        line.reserve(n);
        for (int i = 0; i < n; ++i) line << QPointF(XOfIndex(i + 0.5), YOfCounts(samples[std::size_t(i)]));
    } else {
        line.reserve(qsizetype(d.columns.size() * 4));
        for (std::size_t c = 0; c < d.columns.size(); ++c) {
            const auto& col = d.columns[c];
            const double x = plot.left() + double(c) + 0.5;
            line << QPointF(x, YOfCounts(col.first)) << QPointF(x, YOfCounts(col.min))
                 << QPointF(x, YOfCounts(col.max)) << QPointF(x, YOfCounts(col.last));
        }
    }
    p.setClipRect(plot);
    p.setRenderHint(QPainter::Antialiasing, d.plain);
    p.setPen(QPen(kTraceColour, 1.0));
    p.drawPolyline(line);
}

void TraceView::DrawAxes(QPainter& p, const QRect& plot) const {
    const Recording& rec = screen_->Rec();
    p.setPen(kAxisColour);
    const QFontMetrics fm = p.fontMetrics();
    // Time axis in ms from the start of the data.
    const double t0 = screen_->CalculateTime(0), t1 = screen_->CalculateTime(screen_->WindowLen());
    const double tStep = NiceStep(t1 - t0, std::max(2, plot.width() / 90));
    for (double t = std::ceil(t0 / tStep) * tStep; t <= t1; t += tStep) {
        const double x = plot.left() + (t - t0) / (t1 - t0) * plot.width();
        p.setPen(kGridColour);
        p.drawLine(QPointF(x, plot.top()), QPointF(x, plot.bottom()));
        p.setPen(kAxisColour);
        p.drawLine(QPointF(x, plot.bottom()), QPointF(x, plot.bottom() + 4));
        const QString label = Number(t, tStep);
        p.drawText(QPointF(x - fm.horizontalAdvance(label) / 2.0, plot.bottom() + 6 + fm.ascent()),
                   label);
    }
    p.drawText(QPointF(plot.right() - fm.horizontalAdvance("ms"), plot.bottom() + 6 + fm.ascent()),
               "ms");
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
        const QString label = Number(std::abs(v) < vStep / 1e6 ? 0.0 : v, vStep);
        p.drawText(QPointF(plot.left() - 6 - fm.horizontalAdvance(label), y + fm.ascent() / 2.0 - 1),
                   label);
    }
    p.drawText(QPointF(4, plot.top() + fm.ascent()), QString::fromStdString(rec.Units()));
    p.drawRect(plot.adjusted(0, 0, -1, -1));
}

void TraceView::DrawMarks(QPainter& p) const {
    if (!screen_ || !events_ || events_->Empty()) return;
    const int n = screen_->WindowLen();
    const double intervalUs = screen_->Rec().IntervalUs();
    const int64_t baseLen = params_ ? RoundEven(params_->PeriodBaselineAverage / intervalUs) : 0;
    auto cross = [&](double x, double y, const QColor& c) {
        p.setPen(QPen(c, 1.6));
        p.drawLine(QPointF(x - 4, y - 4), QPointF(x + 4, y + 4));
        p.drawLine(QPointF(x - 4, y + 4), QPointF(x + 4, y - 4));
    };
    auto dot = [&](double x, double y, const QColor& c) {
        p.setPen(QPen(c.darker(130), 1));
        p.setBrush(c);
        p.drawEllipse(QPointF(x, y), 3.0, 3.0);
        p.setBrush(Qt::NoBrush);
    };
    p.setRenderHint(QPainter::Antialiasing, true);
    const QRect plot = PlotRect();
    for (int32_t k = 1; k <= events_->Count(); ++k) {
        const EventRecord& r = (*events_)[k];
        const auto peakOpt = PeakIndexOf(r);
        if (!peakOpt || *peakOpt < 0 || *peakOpt >= n) continue;
        const int64_t peak = *peakOpt;
        const double dir = r.peakDirection >= 0 && r.peakDirection != 0 ? 1 : -1;
        if (k == selected_) {
            const double x = XOfIndex(peak + 0.5);
            p.fillRect(QRectF(x - 6, plot.top(), 12, plot.height()), kSelectColour);
        }
        const int64_t start = peak - r.riseTime;
        const int64_t decay = peak + r.decayTime;
        const double decayLevel = screen_->GetSampleValue(decay - 1) / 3.0 +
                                  screen_->GetSampleValue(decay) / 3.0 +
                                  screen_->GetSampleValue(decay + 1) / 3.0;
        dot(XOfIndex(start + 0.5), YOfCounts(screen_->GetSampleValue(start)), kStartColour);
        dot(XOfIndex(decay + 0.5), YOfCounts(decayLevel), kDecayColour);
        if (baseLen > 0 && r.baseOffset > 0) {
            const int64_t middle = peak - r.baseOffset + RoundEven(double(baseLen) / 2.0);
            cross(XOfIndex(middle + 0.5), YOfCounts(r.baseline + r.noise), kBaseColour);
        }
        cross(XOfIndex(peak + 0.5), YOfCounts(r.baseline + dir * r.amplitude), kPeakColour);
    }
}

void TraceView::DrawCursors(QPainter& p) const {
    if (!cursorsOn_ || !screen_) return;
    const QRect plot = PlotRect();
    p.setPen(QPen(kCursorColour, 1, Qt::DashLine));
    for (const auto& c : {cursor1_, cursor2_})
        if (c) p.drawLine(QPointF(XOfIndex(*c + 0.5), plot.top()), QPointF(XOfIndex(*c + 0.5), plot.bottom()));
}

QString TraceView::CursorReadout() const {
    if (!cursorsOn_ || !screen_) return {};
    const Recording& rec = screen_->Rec();
    auto part = [&](const char* xl, const char* yl, const std::optional<int64_t>& c) {
        if (!c) return QString(xl) + " -" + yl + " -";
        return QString(xl) + QString::number(screen_->CalculateTime(*c), 'f', 2) + yl +
               QString::number(rec.Bit2pA(screen_->GetSampleValue(*c)), 'f', 2);
    };
    QString text = part(ui_text::kCursorX1, ui_text::kCursorY1, cursor1_) + "     " +
                   part(ui_text::kCursorX2, ui_text::kCursorY2, cursor2_);
    if (cursor1_ && cursor2_)
        text += QString("     dx: %1 ms").arg(std::abs(screen_->CalculateTime(*cursor2_) -
                                                       screen_->CalculateTime(*cursor1_)), 0, 'f', 2);
    return text;
}

void TraceView::paintEvent(QPaintEvent*) {
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
    if (cursorsOn_ && event->button() == Qt::MiddleButton) {
        cursor2_ = index;
        emit CursorReadoutChanged(CursorReadout());
        update();
        return;
    }
    emit TraceClicked(index, event->button(), event->modifiers());
}

void TraceView::mouseMoveEvent(QMouseEvent* event) {
    if (!screen_ || !PlotRect().contains(event->position().toPoint())) return;
    const int64_t index = IndexAtX(event->position().x());
    emit PointerMoved(screen_->CalculateTime(index),
                      screen_->Rec().Bit2pA(int32_t(CountsAtY(event->position().y()))));
    if (cursorsOn_) {
        cursor1_ = index;
        emit CursorReadoutChanged(CursorReadout());
        update();
    }
}

}  // namespace vess
