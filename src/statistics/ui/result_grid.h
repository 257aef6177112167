// Result tables in a Qt grid: the data analysis window's Grid1 and the
// column statistics window show a ResultTable through these.
#pragma once

#include <QString>

#include "statistics/result_table.h"

class QTableWidget;

namespace vess {

// Fills grid: first column the row labels, then one column per value column
// of the table (headed by its title), cells as formatted by the core.
void ShowResultTable(QTableWidget& grid, const ResultTable& table);

// The grid's text as tab-separated lines (header line first), for the
// clipboard and for printing.
QString GridText(const QTableWidget& grid);

}  // namespace vess
