// Picture1 of the group analysis window: the average or the individual
// traces in the recording's units against time from the start of the
// stretch, the fitted curve over them, and two cursors, drawn by the graph
// windows' plot from the description TracePlot makes.
#pragma once

#include <QWidget>

#include <string>
#include <vector>

#include "graphs/plot_data.h"
#include "group_analysis/trace_plot.h"

class QCPPainter;

namespace vess {
class PlotWidget;
}

namespace vess::group {

class TracePicture : public QWidget {
    Q_OBJECT
public:
    explicit TracePicture(QWidget* parent = nullptr);

    void SetTraces(const TraceSet* set, const UnitScale& scale);
    // Which rows are drawn: one trace, or all 1..N over each other.
    void ShowTrace(int32_t trace);
    void ShowAll();
    void SetDecimation(int everyPoints);
    void SetGainOffset(double gain, double offset);
    void SetCurve(int32_t fromPoint, std::vector<double> values);
    void ClearCurve();
    // The line above the traces (group and type).
    void SetTitle(std::string title);
    // What an analysis found, drawn over the trace: markers and lines with
    // x in ms from the start of the trace and y in units. Showing another
    // trace or a new set clears them.
    void SetMarks(std::vector<PlotSeries> marks);
    const std::vector<PlotSeries>& Marks() const { return view_.marks; }
    // Manual detection: a left click picks a point (PointPicked) instead of
    // moving a cursor.
    void SetManualMode(bool on);
    // True once the user has placed a cursor by clicking since the traces were set.
    bool CursorsPlaced() const { return cursorsPlaced_; }
    // The trace drawn in the highlight colour (-1: none). A right click picks
    // the trace nearest it in the superimposed display, or the shown trace
    // when it comes near it; elsewhere it clears the highlight, as does
    // showing another trace.
    void SetHighlighted(int32_t trace);
    int32_t Highlighted() const { return view_.highlighted; }
    // Time and amplitude bars in the lower right corner.
    void SetScaleBars(bool on);

    // Cursor positions in points (x1 follows a left click, x2 a middle or
    // shift click).
    int32_t Cursor(int which) const { return which == 0 ? view_.cursors.first : view_.cursors.second; }
    void SetCursor(int which, int32_t point);
    // Where point j of row t is drawn, in pixels of the picture.
    QPointF PixelOf(int32_t t, int32_t point) const;
    // y of the shown trace at a cursor, in units.
    double ValueAt(int32_t point) const;

    // What is drawn, and the plot drawing it.
    const PlotData& Description() const { return description_; }
    PlotWidget* Plot() const { return plot_; }
    // The picture as shown into a file by its suffix (.png, .svg, .pdf);
    // false when it could not be written.
    bool SaveAs(const QString& path);
    // The picture at width x height into a painter (printing).
    void Render(QCPPainter& painter, int width, int height);

signals:
    void CursorsMoved();
    void TraceHighlighted(int32_t trace);
    void PointPicked(int32_t point);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void Redraw();
    void Press(QMouseEvent* e);
    int32_t PointOf(double x) const;

    const TraceSet* set_ = nullptr;
    UnitScale scale_;
    TraceView view_;
    std::string title_;
    PlotData description_;
    PlotWidget* plot_ = nullptr;
    bool manual_ = false, cursorsPlaced_ = false;
};

}  // namespace vess::group
