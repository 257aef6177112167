// "Column Statistics": the descriptive statistics of both work arrays in a
// small window of their own, titled "Data Array Statistics".
#pragma once

#include <QDialog>

class QTableWidget;

namespace vess {

struct Workspace;

class ColumnStatisticsWindow : public QDialog {
    Q_OBJECT
public:
    explicit ColumnStatisticsWindow(const Workspace& ws, QWidget* parent = nullptr);
    QTableWidget* Grid() const { return grid_; }

private:
    QTableWidget* grid_;
};

}  // namespace vess
