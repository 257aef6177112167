#include "statistics/ui/column_statistics_window.h"

#include <QHeaderView>
#include <QTableWidget>
#include <QVBoxLayout>

#include "recording/workspace.h"
#include "statistics/data_analysis.h"
#include "statistics/texts.h"
#include "statistics/ui/result_grid.h"

namespace vess {

ColumnStatisticsWindow::ColumnStatisticsWindow(const Workspace& ws, QWidget* parent)
    : QDialog(parent), grid_(new QTableWidget(this)) {
    setObjectName("frmArrayStat");
    setWindowTitle(QString::fromUtf8(stats_texts::kDescriptiveTitle.data(),
                                     qsizetype(stats_texts::kDescriptiveTitle.size())));
    grid_->setObjectName("Grid1");
    grid_->verticalHeader()->hide();
    ShowResultTable(*grid_, ColumnStatistics(ws.array1, ws.array2));
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(grid_);
    resize(360, 400);
}

}  // namespace vess
