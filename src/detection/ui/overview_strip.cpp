#include "detection/ui/overview_strip.h"

#include <QMouseEvent>
#include <QPainter>

#include <algorithm>

#include "detection/navigation.h"
#include "detection/overview.h"
#include "detection/ui/texts.h"
#include "detection/ui/trace_style.h"
#include "recording/event_table.h"
#include "recording/recording.h"

namespace vess {

using namespace trace_style;

namespace {
constexpr int kTickHeight = 6;  // event ticks along the bottom edge
}

OverviewStrip::OverviewStrip(QWidget* parent) : QWidget(parent) {
    setObjectName("picOverview");
    setFixedHeight(56);
    setMinimumWidth(200);
    setAttribute(Qt::WA_OpaquePaintEvent);
    setToolTip(ui_text::kTipOverview);
    setCursor(Qt::PointingHandCursor);
}

bool OverviewStrip::SetRecording(const Recording* recording) {
    const int channel = recording ? int(recording->Channel()) : -1;
    if (recording == recording_ && channel == channel_) return false;
    recording_ = recording;
    channel_ = channel;
    blocks_ = {};
    reads_ = 0;
    dirty_ = true;
    repaint_.Ask(*this);
    return true;
}

void OverviewStrip::SetExtremes(const Recording* recording, BlockExtremes blocks) {
    if (!recording || recording != recording_ || int(recording->Channel()) != channel_) return;
    blocks_ = std::move(blocks);
    ++reads_;
    dirty_ = true;
    repaint_.Ask(*this);
}

void OverviewStrip::SetEvents(const EventTable* events, int32_t selected) {
    events_ = events;
    selected_ = selected;
    repaint_.Ask(*this);
}

void OverviewStrip::SetSelectedEvent(int32_t selected) {
    if (selected == selected_) return;
    selected_ = selected;
    repaint_.Ask(*this);
}

void OverviewStrip::SetScreen(int64_t firstSample, int64_t lengthSamples) {
    if (firstSample == screenFirst_ && lengthSamples == screenLength_) return;
    screenFirst_ = firstSample;
    screenLength_ = lengthSamples;
    repaint_.Ask(*this);
}

double OverviewStrip::Points() const {
    return recording_ ? double(std::max<int64_t>(1, recording_->PointsPerChannel())) : 1.0;
}

double OverviewStrip::XOfSample(double sample) const { return sample / Points() * width(); }

int64_t OverviewStrip::SampleAtX(double x) const {
    const double s = x / std::max(1, width()) * Points();
    return std::clamp<int64_t>(int64_t(s), 0, int64_t(Points()) - 1);
}

void OverviewStrip::RenderLevels() {
    const qreal dpr = devicePixelRatioF();
    cache_ = QPixmap(size() * dpr);
    cache_.setDevicePixelRatio(dpr);
    cache_.fill(kBackground);
    dirty_ = false;
    QPainter p(&cache_);
    p.setPen(kGridColour);
    p.drawRect(rect().adjusted(0, 0, -1, -1));
    if (!recording_ || blocks_.min.empty()) return;
    // Blocks cover whole 256-point blocks; the columns span the same width.
    const double blockPoints = double(blocks_.min.size()) * kBlockPoints;
    const int usable = std::max(1, int(width() * std::min(1.0, blockPoints / Points())));
    const std::vector<ColumnExtremes> columns = OverviewColumns(blocks_, usable);
    const LevelRange range = OverviewRange(columns);
    const double lo = range.low, hi = std::max<double>(range.high, range.low + 1);
    const double margin = (hi - lo) * 0.06;
    const double top = 2, bottom = height() - kTickHeight - 3;
    auto y = [&](double counts) {
        return std::clamp(bottom - (counts - lo + margin) / (hi - lo + 2 * margin) * (bottom - top), top, bottom);
    };
    const double columnWidth = double(usable) / double(columns.size());
    for (std::size_t c = 0; c < columns.size(); ++c) {
        // Columns that reach beyond the range shown (artefacts) stand out.
        const bool clipped = columns[c].min < range.low || columns[c].max > range.high;
        const double yTop = y(columns[c].max);
        const double yBottom = std::max(y(columns[c].min), yTop + 1);
        p.fillRect(QRectF(double(c) * columnWidth, yTop, std::max(1.0, columnWidth), yBottom - yTop),
                   clipped ? kClippedColour : kTraceColour);
    }
}

void OverviewStrip::paintEvent(QPaintEvent*) {
    repaint_.Painted();
    if (dirty_ || cache_.size() != size() * devicePixelRatioF()) RenderLevels();
    QPainter p(this);
    p.drawPixmap(0, 0, cache_);
    if (!recording_) return;
    // The screen shown, at least two pixels wide.
    const double x0 = XOfSample(double(screenFirst_));
    const double w = std::max(2.0, XOfSample(double(screenFirst_ + screenLength_)) - x0);
    p.fillRect(QRectF(x0, 0, w, height()), kScreenColour);
    p.setPen(QPen(kScreenColour.darker(160), 1));
    p.drawRect(QRectF(x0, 0.5, w, height() - 1.5));
    if (!events_) return;
    const double intervalUs = recording_->IntervalUs();
    const double tickTop = height() - kTickHeight - 1;
    for (int32_t k = 1; k <= events_->Count(); ++k) {
        const EventRecord& r = (*events_)[k];
        const MarkStyle style = StyleOf(r.group);
        const double x = std::floor(XOfSample(double(EventSamplePosition(r, intervalUs)))) + 0.5;
        p.setPen(QPen(style.faded ? Faded(style.peak) : style.peak, 1));
        p.drawLine(QPointF(x, tickTop), QPointF(x, height() - 1));
    }
    if (events_->HasRow(selected_)) {
        const double x = XOfSample(double(EventSamplePosition((*events_)[selected_], intervalUs)));
        p.setPen(QPen(kSelectColour.darker(200), 2));
        p.drawLine(QPointF(x, tickTop - 4), QPointF(x, height() - 1));
    }
}

void OverviewStrip::resizeEvent(QResizeEvent*) { dirty_ = true; }

void OverviewStrip::mousePressEvent(QMouseEvent* event) {
    if (recording_ && event->button() == Qt::LeftButton) emit SampleChosen(SampleAtX(event->position().x()));
}

void OverviewStrip::mouseMoveEvent(QMouseEvent* event) {
    if (recording_ && (event->buttons() & Qt::LeftButton)) emit SampleChosen(SampleAtX(event->position().x()));
}

}  // namespace vess
