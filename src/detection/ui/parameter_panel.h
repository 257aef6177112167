// The boxes of the detection parameters (AnalysisParameters) on the main
// window: one box per value, Combo2 for NumberPointsPeak, ckComplexPeak and
// ckSoundOn, and the blocks per screen (a display setting that also sets the
// stretch each analysis searches). Editing a box reports the new values; the
// owner stores them. Enter in a box reports EditingDone, so that the owner
// can hand the keyboard back to the trace.
#pragma once

#include <QGroupBox>

#include <string>

#include "recording/settings.h"

class QCheckBox;
class QComboBox;
class QFormLayout;
class QLabel;
class QLineEdit;
class QSpinBox;

namespace vess {

class ParameterPanel : public QGroupBox {
    Q_OBJECT
public:
    explicit ParameterPanel(QWidget* parent = nullptr);

    // Shows the values of settings (parameters and the sound option) without
    // emitting any signal; units names the channel's unit for the labels and
    // intervalUs (0 without a recording) gives the length of a screen in ms.
    void Show(const Settings& settings, const std::string& units, double intervalUs = 0);
    QComboBox* PointsAtPeakBox() const { return points_; }  // Combo2

signals:
    // A box was edited to a valid value: the parameters with that change.
    void ParametersEdited(const vess::AnalysisParameters& params);
    // Combo2 was changed; the owner asks about resetting the events and then
    // either stores the value or calls Show again to put the old one back.
    void NumberPointsPeakChosen(int points);
    void SoundToggled(bool on);
    // The "Detection method" box was set to another method.
    void MethodChosen(vess::DetectionMethod method);
    // A box of the filtering methods (kernel, threshold, smoothing) was
    // edited to a valid value: the method's parameters with that change.
    void MethodParametersEdited(const vess::MethodParameters& method);
    // The blocks-per-screen box was set to a new value.
    void BlocksPerScreenChosen(int blocks);
    // Enter was pressed in a box.
    void EditingDone();

private:
    QLineEdit* NewMethodBox(QWidget* parent, const char* name, const QString& tip);
    QLineEdit* AddBox(const char* name, const QString& label, const QString& tip);
    void OnBoxEdited();
    void OnMethodBoxEdited();
    void ShowMethod(const MethodParameters& m);

    AnalysisParameters shown_;
    bool showing_ = false;
    QComboBox* method_;
    MethodParameters shownMethod_;
    QLineEdit* kernelRise_;
    QLineEdit* kernelDecay_;
    QLineEdit* methodThreshold_;
    QLineEdit* lowPass_;
    QLabel* methodThresholdLabel_;
    QComboBox* direction_;
    QLineEdit* threshold_;
    QLineEdit* searchMax_;
    QLineEdit* startBaseline_;
    QLineEdit* baselineAverage_;
    QLineEdit* findDecay_;
    QLineEdit* decayPercent_;
    QLineEdit* areaThreshold_;
    QComboBox* points_;
    QCheckBox* complexPeak_;
    QCheckBox* sound_;
    QSpinBox* blocks_;
    QLabel* screenLength_;
    QLabel* thresholdLabel_;
    QLabel* areaLabel_;
    QFormLayout* form_;
};

}  // namespace vess
