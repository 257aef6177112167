// The graph frame: one window holding many plots as child windows, with
// tile, cascade and "plot all" (every plot overlaid in a new child), and the
// export, copy and print commands of the current plot. ShowPlot is the one
// way the rest of the program puts a plot on screen.
#pragma once

#include <QMainWindow>

#include <memory>
#include <vector>

#include "graphs/plot.h"
#include "recording/ui/tool_windows.h"
#include "recording/ui/window_dialogs.h"

class QMdiArea;

namespace vess {

class Dialogs;
class PlotWidget;

class GraphFrame : public QMainWindow {
    Q_OBJECT
public:
    explicit GraphFrame(QWidget* parent = nullptr);
    // The area's signals stop first: its windows are closed as the frame goes.
    ~GraphFrame() override;

    PlotWidget* AddPlot(const PlotData& plot);
    std::vector<PlotWidget*> Plots() const;
    // The current child plot (the last one added or clicked), or nullptr.
    PlotWidget* CurrentPlot() const;
    QMdiArea* Area() const { return area_; }
    QAction* Action(const QString& objectName) const;

    void Tile();
    void Cascade();
    // Every plot of the frame overlaid in one new child.
    PlotWidget* PlotAll();

    // File names and messages go through these dialogs (the program's own,
    // asked in front of the frame); without them the frame asks with Qt's
    // file dialog.
    void SetDialogs(Dialogs* dialogs);
    // Asks for a file name and writes the plot as PNG, SVG or PDF by its
    // extension. False when cancelled or not written.
    bool ExportPlot(PlotWidget* plot);
    void PrintPlot(PlotWidget* plot);
    void EditAxes(PlotWidget* plot);

private:
    void BuildMenus();
    void OnCurrentChanged();

    QMdiArea* area_;
    std::unique_ptr<WindowDialogs> windowDialogs_;
    Dialogs* dialogs_ = nullptr;
    std::unique_ptr<Dialogs> ownDialogs_;
    int untitled_ = 0;
};

// The graph frame among the tool windows, opened and raised when needed (its
// questions go through the tool windows' dialogs); the plot goes into a new
// child window. Returns the child's plot.
PlotWidget* ShowPlot(ToolWindows& tools, const PlotData& plot);
// The same from a window of the program: the graph frame of the main window
// it belongs to.
PlotWidget* ShowPlot(QWidget* from, const PlotData& plot);
// The graph frame on screen, if one is open, else nullptr.
GraphFrame* CurrentGraphFrame();
// Closes and deletes that graph frame with its plots.
void CloseGraphFrame();

}  // namespace vess
