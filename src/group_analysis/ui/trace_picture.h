// Picture1 of the group analysis window: the average or the individual
// traces in the recording's units against time from the start of the
// stretch, the fitted curve over them, and two cursors.
#pragma once

#include <QWidget>

class QPainter;

#include <optional>
#include <vector>

#include "graphs/plot_data.h"
#include "group_analysis/decay_fit.h"
#include "group_analysis/trace_set.h"

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
    // What an analysis found, drawn over the trace: markers and lines with
    // x in ms from the start of the trace and y in units. Showing another
    // trace or a new set clears them.
    void SetMarks(std::vector<PlotSeries> marks);
    const std::vector<PlotSeries>& Marks() const { return marks_; }
    // Manual detection: a left click picks a point (PointPicked) instead of
    // moving a cursor.
    void SetManualMode(bool on) { manual_ = on; setCursor(on ? Qt::CrossCursor : Qt::ArrowCursor); }
    // True once the user has placed a cursor by clicking since the traces were set.
    bool CursorsPlaced() const { return cursorsPlaced_; }
    // The trace drawn in the highlight colour (-1: none). A right click picks
    // the trace nearest it in the superimposed display, or the shown trace
    // when it comes near it; elsewhere it clears the highlight, as does
    // showing another trace.
    void SetHighlighted(int32_t trace) { highlighted_ = trace; update(); }
    int32_t Highlighted() const { return highlighted_; }
    // Time and amplitude bars in the lower right corner, for exported pictures.
    void SetScaleBars(bool on) { scaleBars_ = on; update(); }

    // Cursor positions in points (x1 follows a left click, x2 a middle or
    // shift click).
    int32_t Cursor(int which) const { return cursor_[which]; }
    void SetCursor(int which, int32_t point);
    // Where point j of row t is drawn, in pixels of the picture.
    QPointF PixelOf(int32_t t, int32_t point) const;
    // y of the shown trace at a cursor, in units.
    double ValueAt(int32_t point) const;

signals:
    void CursorsMoved();
    void TraceHighlighted(int32_t trace);
    void PointPicked(int32_t point);

protected:
    void paintEvent(QPaintEvent*) override;
    void mousePressEvent(QMouseEvent* e) override;

private:
    double XOf(double point) const;
    void DrawMarks(QPainter& p, std::pair<double, double> range) const;
    int32_t PointOf(double x) const;
    double YOf(double units) const;
    double YOf(double units, std::pair<double, double> range) const;
    // Pixels from a point to the nearest drawn point of row t around it.
    double DistanceToRow(int32_t t, QPointF at) const;
    std::pair<double, double> YRange() const;
    void DrawScaleBars(QPainter& p) const;

    const TraceSet* set_ = nullptr;
    UnitScale scale_;
    int32_t trace_ = 0;
    bool all_ = false;
    int every_ = 1;
    double gain_ = 1, offset_ = 0;
    int32_t curveFrom_ = 0;
    std::vector<double> curve_;
    int32_t cursor_[2] = {0, 0};
    int32_t highlighted_ = -1;
    bool scaleBars_ = false;
    std::vector<PlotSeries> marks_;
    bool manual_ = false, cursorsPlaced_ = false;
};

}  // namespace vess::group
