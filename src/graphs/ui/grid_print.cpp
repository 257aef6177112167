#include "graphs/ui/grid_print.h"

#include <QPrinter>
#include <QTableWidget>
#include <QTextDocument>

namespace vess {

void PrintGrid(const QTableWidget* grid, const QString& title, QPrinter& printer) {
    QString html = "<h3>" + title.toHtmlEscaped() + "</h3><table border=1 cellspacing=0 cellpadding=3><tr>";
    for (int c = 0; c < grid->columnCount(); ++c)
        html += "<th>" + grid->horizontalHeaderItem(c)->text().toHtmlEscaped() + "</th>";
    html += "</tr>";
    for (int r = 0; r < grid->rowCount(); ++r) {
        html += "<tr>";
        for (int c = 0; c < grid->columnCount(); ++c)
            html += "<td>" + (grid->item(r, c) ? grid->item(r, c)->text().toHtmlEscaped() : QString()) + "</td>";
        html += "</tr>";
    }
    QTextDocument doc;
    doc.setHtml(html + "</table>");
    doc.print(&printer);
}

}  // namespace vess
