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

class QComboBox;
class QDoubleSpinBox;
class QLabel;
class QLineEdit;
class QTableWidget;
class QVBoxLayout;

namespace vess {
struct Workspace;
class Dialogs;
class PlotWidget;
}  // namespace vess

namespace vess::hrv {

class SpectrumWindow : public QWidget {
    Q_OBJECT
public:
    SpectrumWindow(Workspace& ws, Dialogs& dialogs, QWidget* parent = nullptr);

    SpectrumOptions Options() const;
    void SetOptions(const SpectrumOptions& options);
    void Compute();      // Command1
    bool SaveResults();  // Command2
    bool SavePlot();     // Command3
    const std::optional<SpectrumResult>& Result() const { return result_; }
    PlotWidget* Plot() const { return plot_; }
    QTableWidget* Table() const { return table_; }

private:
    void RefreshPreset();

    Workspace& ws_;
    Dialogs& dialogs_;
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
    SpectrumOptions computedWith_;
};

}  // namespace vess::hrv
