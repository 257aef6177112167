// The data analysis window: frame "Data Input" with the two sample frames,
// the significance level and the buttons "Test", "Cancel" and "Help"; frame
// "Result Display" with the result grid Grid1 and the test's graph. Its
// menus show the work arrays in a grid (view, or enter and edit), copy and
// print the results and customise the graph. The tests are core commands;
// the window only collects the inputs and shows the outcome.
#pragma once

#include <QMainWindow>

#include <optional>

#include "statistics/data_analysis.h"
#include "recording/ui/window_dialogs.h"

class QGroupBox;
class QLineEdit;
class QPushButton;
class QStackedWidget;
class QTableView;
class QTableWidget;
class QVBoxLayout;

namespace vess {

class ArrayGridModel;
class Dialogs;
class PlotWidget;
class SampleFrame;
struct Workspace;

class DataAnalysisWindow : public QMainWindow {
    Q_OBJECT
public:
    DataAnalysisWindow(Workspace& ws, Dialogs& dialogs, QWidget* parent = nullptr);

    // Sets the test that "Test" runs (the menu entry that opened the window).
    void SetTest(StatTest test);
    StatTest Test() const { return test_; }
    // The array grid instead of the results; editable or only viewed.
    void ShowArrays(bool editable);
    // Re-reads the work arrays into the array grid (after a fill or paste).
    void ReloadArrays();
    // Runs the selected test ("Test"); false when a check refused it.
    bool RunTest();

    QTableWidget* ResultGrid() const { return grid_; }
    QPushButton* RunButton() const { return run_; }  // Command1, "Test"
    QTableView* ArrayGrid() const { return arrayGrid_; }
    // The graph of the last test (nullptr before a test with a graph).
    PlotWidget* Graph() const { return graph_; }
    SampleFrame* Sample(int number) const { return number == 1 ? sample1_ : sample2_; }

private:
    void BuildMenus();
    QGroupBox* BuildInputFrame();
    QGroupBox* BuildResultFrame();
    void CopyResults();
    void PrintResults();
    void CustomizeGraph();
    void ShowHelp();

    Workspace& ws_;
    WindowDialogs dialogs_;  // its questions open in front of it
    StatTest test_ = StatTest::TTestEqualVar;
    SampleFrame* sample1_ = nullptr;
    SampleFrame* sample2_ = nullptr;
    QLineEdit* alpha_ = nullptr;
    QStackedWidget* pages_ = nullptr;
    QTableWidget* grid_ = nullptr;
    QPushButton* run_ = nullptr;
    QVBoxLayout* graphBox_ = nullptr;
    PlotWidget* graph_ = nullptr;
    QTableView* arrayGrid_ = nullptr;
    ArrayGridModel* arrays_ = nullptr;
};

}  // namespace vess
