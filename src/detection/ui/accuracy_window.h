// The accuracy check's answer: what was checked, a table of recall and false
// detections per amplitude bin, and the amplitude from which recall reaches
// 90 %. The plot of the same bins goes to the graph windows.
#pragma once

#include <QDialog>

#include "detection/accuracy_check.h"

class QLabel;
class QTableWidget;

namespace vess {

class AccuracyWindow : public QDialog {
    Q_OBJECT
public:
    explicit AccuracyWindow(QWidget* parent = nullptr);
    void Show(const AccuracyReport& report);
    const QTableWidget* Table() const { return table_; }
    QString Summary() const;

private:
    QLabel* summary_;
    QLabel* recall90_;
    QTableWidget* table_;
};

}  // namespace vess
