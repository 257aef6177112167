// "Heart Rate Variability Analysis: Time Domain Measurements": the options
// (section "HRV" of the settings file), "Start Analysis" filling the result
// grid (TDBGrid1, one row per analysed file) and the segment grid
// (TDBGrid2), the definitions behind the column headers, copy, print and
// save of each grid, and the tachogram menu.
#pragma once

#include <QMainWindow>
#include <QPrinter>

#include <filesystem>

#include "hrv/time_domain_commands.h"
#include "recording/ui/window_dialogs.h"

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QTableWidget;

namespace vess {
class JobRunner;
struct Workspace;
class Dialogs;
}  // namespace vess

namespace vess::hrv {

class TimeDomainWindow : public QMainWindow {
    Q_OBJECT
public:
    // The tachogram plot goes to the graph windows; its ABF file is built on
    // the template in templateFolder.
    TimeDomainWindow(Workspace& ws, Dialogs& dialogs, JobRunner& jobs, std::filesystem::path templateFolder,
                     QWidget* parent = nullptr);

    // The options as the controls show them.
    HrvOptions Options() const;
    void SetOptions(const HrvOptions& options);
    const TimeDomainGrids& Grids() const { return grids_; }
    QAction* Action(const char* objectName) const;

    // Command1: the measures are computed as a job over a copy of the beat
    // times; the grids follow when it ends.
    void StartAnalysis();
    void SaveOptions();     // Command2
    void ShowDefinition(int column);
    void CopyGrid(TimeDomainGrid which);
    void PrintGrid(TimeDomainGrid which);
    void PrintSetup();

    // The controls by what they are; their object names stay as written.
    QPushButton* RunButton() const { return run_; }           // Command1
    QPushButton* SaveButton() const { return save_; }         // Command2
    QTableWidget* ResultsGrid() const { return results_; }    // TDBGrid1
    QTableWidget* SegmentsGrid() const { return segments_; }  // TDBGrid2
    QComboBox* PresetBox() const { return preset_; }          // cbPreset
    QComboBox* UpperBoundBox() const { return upper_; }       // cbRRUBound
    QLabel* PresetInForceLabel() const { return presetInForce_; }  // lbPresetInForce

private:
    void BuildOptions(QWidget* panel);
    void BuildMenus();
    void ApplyPreset(int index);
    void RefreshPreset();
    double IntervalUs() const;

    Workspace& ws_;
    WindowDialogs dialogs_;  // its questions open in front of it
    JobRunner& jobs_;
    std::filesystem::path templateFolder_;
    TimeDomainGrids grids_;
    QPrinter printer_;
    QComboBox* upper_ = nullptr;
    QComboBox* lower_ = nullptr;
    QLineEdit* points_ = nullptr;
    QLabel* segmentTime_ = nullptr;
    QLineEdit* threshold_ = nullptr;
    QCheckBox* includeZero_ = nullptr;
    QCheckBox* excludeLast_ = nullptr;
    QComboBox* preset_ = nullptr;
    QLabel* presetInForce_ = nullptr;
    QTableWidget* results_ = nullptr;
    QTableWidget* segments_ = nullptr;
    QPushButton* run_ = nullptr;
    QPushButton* save_ = nullptr;
};

}  // namespace vess::hrv
