// The trace view (objectName "Picture1"): one screen of the chosen channel in
// physical units with time and amplitude axes, every stored event of the
// screen marked, the selected event highlighted, and two cursors.
//
// Each screen opens in a frame fitted to its own samples (DisplayFrame), with
// the display gain and offset on top; with lockBase the frame of the first
// screen shown is kept. No trace is drawn past the last sample of the data.
//
// The trace and axes are drawn into a cached pixmap once per change (screen,
// size, gain, offset); marks and cursors are painted over it on every update,
// so selecting an event or moving a cursor never redraws the trace.
//
// The wheel zooms time around the pointer (Ctrl+wheel the levels) and a
// rectangle dragged with Shift zooms to it; a new screen, a change of gain or
// offset, or ResetZoom return to the whole screen. A zoom is only a view. Rejected
// events are drawn faded, grouped ones in their group's colour, and a peak
// beyond the top or bottom gets a marker at that edge.
#pragma once

#include <QPixmap>
#include <QWidget>

#include <cstdint>
#include <optional>
#include <span>
#include <utility>
#include <vector>

#include "detection/display_fit.h"
#include "detection/navigation.h"
#include "detection/trace_zoom.h"
#include "detection/ui/paint_request.h"

class QRubberBand;

namespace vess {

class Screen;
class EventTable;
struct EventRecord;
struct AnalysisParameters;

class TraceView : public QWidget {
    Q_OBJECT
public:
    explicit TraceView(QWidget* parent = nullptr);

    // What to draw. The view keeps pointers; the owner calls these again (or
    // TraceChanged / MarksChanged) whenever the objects change.
    void SetScreen(const Screen* screen);
    void SetEvents(const EventTable* events, const AnalysisParameters* params);
    void SetSelectedEvent(int32_t index);  // 1-based, 0 for none
    // Gain and offset over the frame (see DisplayScale); with lockBase the
    // trace keeps the frame of the first screen shown.
    void SetDisplay(const DisplayScale& scale, bool lockBase);
    // Counts shown top to bottom at gain 1: the frame's span.
    double FullSpanCounts() const { return frame_.spanCounts > 0 ? frame_.spanCounts : kFullSpanCounts; }
    const DisplayFrame& Frame() const { return frame_; }
    // Gain and offset that show every sample of the screen shown.
    DisplayScale FitAllScale() const;
    // Window samples that lie within the data (fewer on the last screen).
    int DataLength() const;
    void SetCursorsOn(bool on);
    bool CursorsOn() const { return cursorsOn_; }
    // Both cursors placed: each is a vertical line at a window index and a
    // horizontal line at the level (in counts) where it was set.
    struct CursorPair {
        int64_t index1 = 0, index2 = 0;
        double counts1 = 0, counts2 = 0;
    };
    std::optional<CursorPair> Cursors() const;
    // Forget a locked frame so that the next screen set fits it afresh (a new
    // recording or channel).
    void ResetScale();

    // The stretch and levels shown: the zoom, or the whole screen.
    TraceZoom View() const;
    bool Zoomed() const { return zoom_.has_value(); }
    void ResetZoom();

    void TraceChanged();  // samples or display changed: rebuild the pixmap
    void MarksChanged();  // events or selection changed: repaint marks only

    // Geometry, for the owner and for tests.
    QRect PlotRect() const;
    int64_t IndexAtX(double x) const;        // window index under a pixel column
    double IndexAtXUnclamped(double x) const;  // the same, fractional and not clamped
    double XOfIndex(double index) const;
    double YOfCounts(double counts) const;
    double CountsAtY(double y) const;
    // Window index of an event's peak on this screen (may lie off screen).
    std::optional<int64_t> PeakIndexOf(const EventRecord& r) const;
    // Number of trace pixmap rebuilds so far (drawing is cached).
    int TraceRenderCount() const { return renders_; }

signals:
    // A mouse press on the plot: the window index under the pointer.
    void TraceClicked(int64_t index, Qt::MouseButton button, Qt::KeyboardModifiers modifiers);
    // The pointer moved over the plot: time in ms and level in units.
    void PointerMoved(double timeMs, double level);
    // The cursor read-out ("x1: ... y1: ...") changed.
    void CursorReadoutChanged(const QString& text);

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

private:
    void RenderTrace();
    void DrawAxes(class QPainter& p, const QRect& plot) const;
    void DrawMarks(QPainter& p) const;
    void DrawEventMarks(QPainter& p, const EventRecord& r, int64_t peak, bool selected) const;
    void DrawPastData(QPainter& p, const QRect& plot) const;
    void DrawCursors(QPainter& p) const;
    void UpdateFrame();
    // Levels of the peaks of the table's events on this screen.
    std::vector<int16_t> PeakLevels() const;
    // Rows [first, end) of the table that hold every event of the screen.
    std::pair<int32_t, int32_t> RowsOnScreen() const;
    bool PeakOutsideFrame() const;
    // The screen's samples up to the end of the data (held by the screen).
    std::span<const int16_t> DataSamples() const;
    QString CursorReadout() const;
    void DragTo(const QPoint& at);

    const Screen* screen_ = nullptr;
    const EventTable* events_ = nullptr;
    const AnalysisParameters* params_ = nullptr;
    int32_t selected_ = 0;
    DisplayScale scale_;
    bool lockBase_ = false;
    DisplayFrame frame_;
    int frameDirection_ = -1;  // event direction the frame was fitted for
    bool haveLockedFrame_ = false;
    bool cursorsOn_ = false;
    std::optional<int64_t> cursor1_, cursor2_;
    double cursorCounts1_ = 0, cursorCounts2_ = 0;  // levels of the horizontal cursors
    std::optional<TraceZoom> zoom_;
    std::optional<QPoint> dragFrom_;  // Shift+left press, a click or a zoom rectangle
    QRubberBand* band_ = nullptr;
    QPixmap cache_;
    bool dirty_ = true;
    PaintRequest repaint_;
    int renders_ = 0;
};

}  // namespace vess
