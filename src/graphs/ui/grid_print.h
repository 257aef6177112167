// Printing a results grid: its title above a ruled table of the headings
// and cells, paged by the printer.
#pragma once

class QAbstractItemModel;
class QPrinter;
class QString;
class QTableWidget;

namespace vess {

void PrintGrid(const QAbstractItemModel& model, const QString& title, QPrinter& printer);
void PrintGrid(const QTableWidget* grid, const QString& title, QPrinter& printer);

}  // namespace vess
