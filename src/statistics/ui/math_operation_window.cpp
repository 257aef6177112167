#include "statistics/ui/math_operation_window.h"

#include <QComboBox>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include "recording/dialogs.h"
#include "statistics/array_entry.h"
#include "statistics/texts.h"
#include "statistics/ui/texts.h"

namespace vess {

using stats_ui_texts::Q;

MathOperationWindow::MathOperationWindow(Workspace& ws, Dialogs& dialogs, QWidget* parent)
    : QDialog(parent), ws_(ws), dialogs_(dialogs, this) {
    setObjectName("frmMath");
    setWindowTitle(Q(stats_texts::kMathMenu));
    auto* grid = new QGridLayout(this);
    for (int i = 0; i < 2; ++i) {
        auto* combo = new QComboBox(this);
        combo->setObjectName(QString("Combo1_%1").arg(i));
        for (std::string_view c : stats_texts::kOperandCaptions) combo->addItem(Q(c));
        combo->setCurrentIndex(int(i == 0 ? MathOperand::Array1 : MathOperand::Array2));
        auto* number = new QLineEdit("0", this);
        number->setObjectName(QString("Text1_%1").arg(i));
        operand_[std::size_t(i)] = combo;
        constant_[std::size_t(i)] = number;
        connect(combo, &QComboBox::currentIndexChanged, this, &MathOperationWindow::UpdateEnabled);
    }
    operation_ = new QComboBox(this);
    operation_->setObjectName("Combo2");
    for (std::string_view c : stats_texts::kOperationCaptions) operation_->addItem(Q(c));
    connect(operation_, &QComboBox::currentIndexChanged, this, &MathOperationWindow::UpdateEnabled);
    destination_ = new QComboBox(this);
    destination_->setObjectName("Combo3");
    destination_->addItems({Q(stats_texts::ArrayName(1)), Q(stats_texts::ArrayName(2))});
    auto* calculate = run_ = new QPushButton(Q(stats_texts::kCalculateButton), this);
    calculate->setObjectName("Command1");
    calculate->setDefault(true);
    auto* cancel = new QPushButton(Q(stats_texts::kCancelButton), this);
    cancel->setObjectName("Command2");
    connect(calculate, &QPushButton::clicked, this, &MathOperationWindow::Calculate);
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);

    for (int c = 0; c < 4; ++c) grid->addWidget(new QLabel(Q(stats_ui_texts::kMathHeadings[c]), this), 0, c);
    grid->addWidget(operand_[0], 1, 0);
    grid->addWidget(constant_[0], 2, 0);
    grid->addWidget(operation_, 1, 1);
    grid->addWidget(operand_[1], 1, 2);
    grid->addWidget(constant_[1], 2, 2);
    grid->addWidget(destination_, 1, 3);
    grid->addWidget(calculate, 3, 1);
    grid->addWidget(cancel, 3, 2);
    UpdateEnabled();
}

void MathOperationWindow::UpdateEnabled() {
    const bool unary = IsUnary(MathOperation(operation_->currentIndex()));
    operand_[1]->setEnabled(!unary);
    for (std::size_t i = 0; i < 2; ++i) {
        const bool constant = operand_[i]->currentIndex() == int(MathOperand::Constant);
        constant_[i]->setEnabled(constant && operand_[i]->isEnabled());
    }
}

std::optional<MathRequest> MathOperationWindow::Request() const {
    MathRequest r;
    r.operand1 = MathOperand(operand_[0]->currentIndex());
    r.operand2 = MathOperand(operand_[1]->currentIndex());
    r.operation = MathOperation(operation_->currentIndex());
    r.destination = destination_->currentIndex() + 1;
    double* constants[] = {&r.constant1, &r.constant2};
    for (std::size_t i = 0; i < 2; ++i) {
        if (!constant_[i]->isEnabled()) continue;
        const auto v = ParseTypedValue(constant_[i]->text().toStdString());
        if (!v) return std::nullopt;
        *constants[i] = *v;
    }
    return r;
}

bool MathOperationWindow::Calculate() {
    const auto request = Request();
    if (!request) {
        constant_[0]->isEnabled() ? constant_[0]->setFocus() : constant_[1]->setFocus();
        return false;
    }
    if (!ShowFailure(dialogs_, MathOperationCommand(ws_, dialogs_, *request))) return false;
    emit ArraysChanged();
    return true;
}

}  // namespace vess
