#include "statistics/ui/result_grid.h"

#include <QHeaderView>
#include <QStringList>
#include <QTableWidget>

#include <algorithm>

namespace vess {

void ShowResultTable(QTableWidget& grid, const ResultTable& table) {
    std::size_t columns = table.columns.size();
    for (const ResultRow& r : table.rows) columns = std::max(columns, r.cells.size());
    grid.clear();
    grid.clearSpans();
    grid.setRowCount(int(table.rows.size()) + (table.note.empty() ? 0 : 1));
    grid.setColumnCount(int(columns) + 1);
    QStringList headers{QString()};
    for (std::size_t c = 0; c < columns; ++c)
        headers << (c < table.columns.size() ? QString::fromStdString(table.columns[c]) : QString());
    grid.setHorizontalHeaderLabels(headers);
    grid.horizontalHeader()->setVisible(!table.columns.empty());
    for (int r = 0; r < int(table.rows.size()); ++r) {
        const ResultRow& row = table.rows[std::size_t(r)];
        auto* label = new QTableWidgetItem(QString::fromStdString(row.label));
        label->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable);
        grid.setItem(r, 0, label);
        for (std::size_t c = 0; c < row.cells.size(); ++c) {
            auto* cell = new QTableWidgetItem(QString::fromStdString(row.cells[c]));
            cell->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable);
            cell->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
            grid.setItem(r, int(c) + 1, cell);
        }
    }
    if (!table.note.empty()) {
        // What was left out stands on its own last row, across the grid.
        const int last = int(table.rows.size());
        auto* note = new QTableWidgetItem(QString::fromStdString(table.note));
        note->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable);
        grid.setItem(last, 0, note);
        grid.setSpan(last, 0, 1, grid.columnCount());
    }
    grid.resizeColumnsToContents();
}

QString GridText(const QTableWidget& grid) {
    QStringList lines;
    QStringList header;
    for (int c = 0; c < grid.columnCount(); ++c) {
        const QTableWidgetItem* h = grid.horizontalHeaderItem(c);
        header << (h ? h->text() : QString());
    }
    lines << header.join('\t');
    for (int r = 0; r < grid.rowCount(); ++r) {
        QStringList cells;
        for (int c = 0; c < grid.columnCount(); ++c) {
            const QTableWidgetItem* item = grid.item(r, c);
            cells << (item ? item->text() : QString());
        }
        lines << cells.join('\t');
    }
    return lines.join("\r\n") + "\r\n";
}

}  // namespace vess
