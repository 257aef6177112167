// The Mathematical Operation window: two operands (Combo1, each with its
// number field Text1 for "Constant"), the operation (Combo2), the
// destination array (Combo3), and the buttons "Caculate" and "Cancel".
#pragma once

#include <QDialog>

#include <array>
#include <optional>

#include "statistics/math_operation.h"
#include "recording/ui/window_dialogs.h"

class QComboBox;
class QLineEdit;
class QPushButton;

namespace vess {

class Dialogs;
struct Workspace;

class MathOperationWindow : public QDialog {
    Q_OBJECT
public:
    MathOperationWindow(Workspace& ws, Dialogs& dialogs, QWidget* parent = nullptr);

    // The request as the controls stand; nothing when a constant is not a
    // number.
    std::optional<MathRequest> Request() const;
    // "Caculate": true when the destination array was replaced.
    bool Calculate();

    QComboBox* Operand(int i) const { return operand_[std::size_t(i)]; }
    QLineEdit* Constant(int i) const { return constant_[std::size_t(i)]; }
    QComboBox* Operation() const { return operation_; }
    QComboBox* Destination() const { return destination_; }
    QPushButton* RunButton() const { return run_; }  // Command1, "Caculate"

signals:
    // A work array changed.
    void ArraysChanged();

private:
    void UpdateEnabled();

    Workspace& ws_;
    WindowDialogs dialogs_;  // its questions open in front of it
    std::array<QComboBox*, 2> operand_{};
    std::array<QLineEdit*, 2> constant_{};
    QComboBox* operation_ = nullptr;
    QComboBox* destination_ = nullptr;
    QPushButton* run_ = nullptr;
};

}  // namespace vess
