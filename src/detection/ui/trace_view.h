// The trace view (objectName "Picture1"): one screen of the chosen channel in
// physical units with time and amplitude axes, every stored event of the
// screen marked, the selected event highlighted, and two cursors.
//
// The trace and axes are drawn into a cached pixmap once per change (screen,
// size, gain, offset); marks and cursors are painted over it on every update,
// so selecting an event or moving a cursor never redraws the trace.
#pragma once

#include <QPixmap>
#include <QWidget>

#include <cstdint>
#include <optional>

#include "detection/navigation.h"

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
    // Gain and offset of the vertical scale (see DisplayScale); with lockBase
    // the trace keeps the centre level of the first screen shown.
    void SetDisplay(const DisplayScale& scale, bool lockBase);
    // Counts shown top to bottom at gain 1 (set from the first screen).
    double FullSpanCounts() const { return spanCounts_ > 0 ? spanCounts_ : kFullSpanCounts; }
    void SetCursorsOn(bool on);
    bool CursorsOn() const { return cursorsOn_; }
    // Forget the vertical scale so that the next screen sets it afresh (a new
    // recording or channel).
    void ResetScale();

    void TraceChanged();  // samples or display changed: rebuild the pixmap
    void MarksChanged();  // events or selection changed: repaint marks only

    // Geometry, for the owner and for tests.
    QRect PlotRect() const;
    int64_t IndexAtX(double x) const;        // window index under a pixel column
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

private:
    void RenderTrace();
    void DrawAxes(class QPainter& p, const QRect& plot) const;
    void DrawMarks(QPainter& p) const;
    void DrawCursors(QPainter& p) const;
    void UpdateCentre();
    QString CursorReadout() const;

    const Screen* screen_ = nullptr;
    const EventTable* events_ = nullptr;
    const AnalysisParameters* params_ = nullptr;
    int32_t selected_ = 0;
    DisplayScale scale_;
    bool lockBase_ = false;
    double spanCounts_ = 0;    // counts shown top to bottom at gain 1
    double centreCounts_ = 0;  // level at the middle of the plot before the offset
    bool haveLockedCentre_ = false;
    bool cursorsOn_ = false;
    std::optional<int64_t> cursor1_, cursor2_;
    QPixmap cache_;
    bool dirty_ = true;
    int renders_ = 0;
};

}  // namespace vess
