// "Heart Rate Variability: Geometrical Methods": bin sizes and bounds
// (section "HRV"), "Save Options", and "Generate Plots" drawing four panes
// (RR histogram with the TINN triangle, delta-RR histogram, Lorenz plot with
// the SD1/SD2 ellipse, tachogram) with the geometric and Lorenz measures.
#pragma once

#include <QWidget>

#include <array>
#include <optional>

#include "hrv/analysis.h"
#include "recording/ui/window_dialogs.h"

class QComboBox;
class QGridLayout;
class QLabel;
class QPushButton;

namespace vess {
struct Workspace;
class Dialogs;
class PlotWidget;
}  // namespace vess

namespace vess::hrv {

class GeometricWindow : public QWidget {
    Q_OBJECT
public:
    GeometricWindow(Workspace& ws, Dialogs& dialogs, QWidget* parent = nullptr);

    HrvOptions Options() const;
    void SetOptions(const HrvOptions& options);
    void GeneratePlots();   // Command1
    void SaveOptions();     // Command2
    // The four panes, nullptr before the first plots.
    const std::array<PlotWidget*, 4>& Panes() const { return panes_; }
    const std::optional<HrvAnalysis>& Analysis() const { return analysis_; }
    QPushButton* RunButton() const { return run_; }    // Command1
    QPushButton* SaveButton() const { return save_; }  // Command2
    QComboBox* UpperBoundBox() const { return upper_; }      // cbRRUBound
    QComboBox* LowerBoundBox() const { return lower_; }      // cbRRLBound
    QComboBox* RRBinBox() const { return rrBin_; }           // cbRRBinSize
    QComboBox* DeltaRRBinBox() const { return deltaBin_; }   // cbDeltaRRBinSize
    QLabel* MeasuresLabel() const { return measures_; }      // lbMeasures

private:
    void RefreshPreset();
    void SetPane(int index, PlotWidget* plot);

    Workspace& ws_;
    WindowDialogs dialogs_;  // its questions open in front of it
    QComboBox* rrBin_ = nullptr;
    QComboBox* deltaBin_ = nullptr;
    QComboBox* upper_ = nullptr;
    QComboBox* lower_ = nullptr;
    QComboBox* preset_ = nullptr;
    QLabel* presetInForce_ = nullptr;
    QLabel* measures_ = nullptr;
    QGridLayout* panesLayout_ = nullptr;
    std::array<PlotWidget*, 4> panes_{};
    std::optional<HrvAnalysis> analysis_;
    QPushButton* run_ = nullptr;
    QPushButton* save_ = nullptr;
};

}  // namespace vess::hrv
