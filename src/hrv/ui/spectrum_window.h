// "Heart Rate Variability: Frequency Domain": the spectrum of the RR
// intervals within the bounds, by Welch's method on the resampled tachogram
// or by Lomb-Scargle on the beats themselves; the band table, LF/HF, the
// spectrum with its bands shaded, and export of both.
#pragma once

#include <QWidget>

#include <array>
#include <optional>

#include "hrv/hrv_options.h"
#include "hrv/spectrum.h"
#include "recording/ui/window_dialogs.h"

class QComboBox;
class QDoubleSpinBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QTableWidget;
class QVBoxLayout;

namespace vess {
class JobRunner;
struct Workspace;
class Dialogs;
class PlotWidget;
}  // namespace vess

namespace vess::hrv {

class SpectrumWindow : public QWidget {
    Q_OBJECT
public:
    SpectrumWindow(Workspace& ws, Dialogs& dialogs, JobRunner& jobs, QWidget* parent = nullptr);

    SpectrumOptions Options() const;
    void SetOptions(const SpectrumOptions& options);
    // Command1: the spectrum is computed as a job over a copy of the
    // intervals; the table and the plot follow when it ends.
    void Compute();
    bool SaveResults();  // Command2
    bool SavePlot();     // Command3
    const std::optional<SpectrumResult>& Result() const { return result_; }
    PlotWidget* Plot() const { return plot_; }
    QTableWidget* Table() const { return table_; }
    QPushButton* RunButton() const { return buttons_[0]; }   // Command1
    QPushButton* SaveButton() const { return buttons_[1]; }  // Command2
    QComboBox* PresetBox() const { return preset_; }         // cbSpectrumPreset
    QComboBox* LowerBoundBox() const { return lower_; }      // cbRRLBound
    QLabel* PresetInForceLabel() const { return presetInForce_; }  // lbPresetInForce

private:
    void RefreshPreset();
    void ShowSpectrum(SpectrumResult s, const SpectrumOptions& o);

    Workspace& ws_;
    WindowDialogs dialogs_;  // its questions open in front of it
    JobRunner& jobs_;
    HrvOptions bounds_;
    QComboBox* upper_ = nullptr;
    QComboBox* lower_ = nullptr;
    QComboBox* method_ = nullptr;
    QComboBox* detrend_ = nullptr;
    QLineEdit* resample_ = nullptr;
    QComboBox* window_ = nullptr;
    QLineEdit* overlap_ = nullptr;
    std::array<QDoubleSpinBox*, 4> edges_{};
    QComboBox* preset_ = nullptr;
    QLabel* presetInForce_ = nullptr;
    QTableWidget* table_ = nullptr;
    QLabel* ratio_ = nullptr;
    QVBoxLayout* plotLayout_ = nullptr;
    PlotWidget* plot_ = nullptr;
    std::optional<SpectrumResult> result_;
    std::array<QPushButton*, 3> buttons_{};  // compute, save results, save plot
    SpectrumOptions computedWith_;
};

}  // namespace vess::hrv
