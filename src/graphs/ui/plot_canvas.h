// The QCustomPlot surface of a plot with the graph windows' mouse rules:
// the wheel zooms both axes about the pointer, a left drag pans, a drag with
// Ctrl held draws a rectangle and zooms into it, and a double click (or the
// Home key on the plot) asks for the original view.
#pragma once

#include <qcustomplot.h>

namespace vess {

class PlotCanvas : public QCustomPlot {
    Q_OBJECT
public:
    explicit PlotCanvas(QWidget* parent = nullptr);

signals:
    void ResetRequested();

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
};

}  // namespace vess
