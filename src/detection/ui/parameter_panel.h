// The boxes of the detection parameters (AnalysisParameters) on the main
// window: one box per value, Combo2 for NumberPointsPeak, ckComplexPeak and
// ckSoundOn. Editing a box reports the new parameters; the owner stores them.
#pragma once

#include <QGroupBox>

#include <string>

#include "recording/settings.h"

class QCheckBox;
class QComboBox;
class QFormLayout;
class QLabel;
class QLineEdit;

namespace vess {

class ParameterPanel : public QGroupBox {
    Q_OBJECT
public:
    explicit ParameterPanel(QWidget* parent = nullptr);

    // Shows the values of settings (parameters and the sound option) without
    // emitting any signal; units names the channel's unit for the labels.
    void Show(const Settings& settings, const std::string& units);

signals:
    // A box was edited to a valid value: the parameters with that change.
    void ParametersEdited(const vess::AnalysisParameters& params);
    // Combo2 was changed; the owner asks about resetting the events and then
    // either stores the value or calls Show again to put the old one back.
    void NumberPointsPeakChosen(int points);
    void SoundToggled(bool on);

private:
    QLineEdit* AddBox(const char* name, const QString& label, const QString& tip);
    void OnBoxEdited();

    AnalysisParameters shown_;
    bool showing_ = false;
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
    QLabel* thresholdLabel_;
    QLabel* areaLabel_;
    QFormLayout* form_;
};

}  // namespace vess
