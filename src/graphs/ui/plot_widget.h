// One plot on screen: draws a PlotData description with QCustomPlot and lets the
// user zoom and pan it with the mouse (wheel zooms, drag pans, Ctrl+drag
// zooms to a rectangle, double-click or Home resets), edit its axes, export,
// copy and print it.
#pragma once

#include <QWidget>

#include "graphs/plot.h"

class QCustomPlot;
class QCPTextElement;
class QPrinter;
class QMenu;

namespace vess {

class PlotCanvas;

class PlotWidget : public QWidget {
    Q_OBJECT
public:
    explicit PlotWidget(PlotData plot, QWidget* parent = nullptr);

    // The plot as given, with the texts and ranges the user has set since.
    const PlotData& Description() const { return plot_; }
    QCustomPlot* Canvas() const;

    PlotRanges Ranges() const;
    void SetRanges(const PlotRanges& ranges);
    // Back to the fitted (or fixed) ranges of the description.
    void ResetView();
    void SetTexts(const std::string& title, const std::string& xLabel, const std::string& yLabel);
    // Linear or logarithmic axes; the view is fitted again in the new scale.
    void SetLogAxes(bool xLog, bool yLog);

    // Files by their suffix (.png, .svg, .pdf); width and height 0 take the
    // widget's size. Returns false when the file could not be written.
    bool SaveAs(const QString& path, int width = 0, int height = 0);
    void CopyPicture() const;
    void CopyData() const;
    void PrintTo(QPrinter& printer);

    // The actions of the plot's context menu, for the frame's menus too.
    QMenu* ContextMenu() const { return menu_; }

signals:
    // The user asked for one of the commands that need a dialog; the graph
    // frame answers them (file names come through the program's dialogs).
    void ExportRequested(PlotWidget* plot);
    void PrintRequested(PlotWidget* plot);
    void AxesRequested(PlotWidget* plot);

protected:
    void contextMenuEvent(QContextMenuEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void Draw();
    void DrawSeries(const PlotSeries& s, int index);
    void DrawColourScatter(const PlotSeries& s);
    void DrawColourMap(const ColourMap& m);
    void DrawBand(const XBand& b);
    void BuildMenu();
    void ApplyScales();
    // The legend into the corner where it covers the fewest points.
    void PlaceLegend();
    // The title broken into lines that fit the plot's width.
    void FitTitle();

    PlotData plot_;
    PlotCanvas* canvas_ = nullptr;
    QCPTextElement* title_ = nullptr;
    QMenu* menu_ = nullptr;
};

}  // namespace vess
