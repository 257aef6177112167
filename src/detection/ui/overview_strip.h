// The overview strip under the trace (objectName "picOverview"): the whole
// recording as its minimum and maximum per pixel column, a tick for every
// event (in its group's style), and the screen shown highlighted. A click or
// a drag asks the owner to show the screen under the pointer.
//
// The extremes are read once per recording and channel, by 256-point blocks,
// by the owner away from the windows; until they come the strip shows the
// screen's place only. A resize only regroups the blocks into columns.
#pragma once

#include <QPixmap>
#include <QWidget>

#include <cstdint>

#include "detection/decimate.h"
#include "detection/ui/paint_request.h"

namespace vess {

class EventTable;
class Recording;

class OverviewStrip : public QWidget {
    Q_OBJECT
public:
    explicit OverviewStrip(QWidget* parent = nullptr);

    // The recording shown (nullptr for none). True when it (or its channel)
    // differs from the one shown before: the strip then waits for its
    // extremes, which the owner reads away from the windows.
    bool SetRecording(const Recording* recording);
    // The extremes of recording's blocks; ignored unless it is the one shown.
    void SetExtremes(const Recording* recording, BlockExtremes blocks);
    bool HasExtremes() const { return !blocks_.min.empty(); }
    void SetEvents(const EventTable* events, int32_t selected);
    // Another event selected, the table as it was.
    void SetSelectedEvent(int32_t selected);
    // The screen shown: its first sample and its length in samples.
    void SetScreen(int64_t firstSample, int64_t lengthSamples);

    // Geometry, for the owner and for tests.
    double XOfSample(double sample) const;
    int64_t SampleAtX(double x) const;
    // Number of times extremes were received for the recording shown.
    int ExtremesReads() const { return reads_; }

signals:
    // The user pointed at a sample of the recording.
    void SampleChosen(int64_t sample);

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;

private:
    void RenderLevels();
    double Points() const;

    const Recording* recording_ = nullptr;
    int channel_ = -1;
    const EventTable* events_ = nullptr;
    int32_t selected_ = 0;
    BlockExtremes blocks_;
    int64_t screenFirst_ = 0, screenLength_ = 0;
    QPixmap cache_;
    bool dirty_ = true;
    PaintRequest repaint_;
    int reads_ = 0;
};

}  // namespace vess
