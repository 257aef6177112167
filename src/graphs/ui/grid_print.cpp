#include "graphs/ui/grid_print.h"

#include <QAbstractItemModel>
#include <QPrinter>
#include <QTableWidget>
#include <QTextDocument>

namespace vess {

void PrintGrid(const QAbstractItemModel& model, const QString& title, QPrinter& printer) {
    QString html = "<h3>" + title.toHtmlEscaped() + "</h3><table border=1 cellspacing=0 cellpadding=3><tr>";
    for (int c = 0; c < model.columnCount(); ++c)
        html += "<th>" + model.headerData(c, Qt::Horizontal).toString().toHtmlEscaped() + "</th>";
    html += "</tr>";
    for (int r = 0; r < model.rowCount(); ++r) {
        html += "<tr>";
        for (int c = 0; c < model.columnCount(); ++c)
            html += "<td>" + model.data(model.index(r, c)).toString().toHtmlEscaped() + "</td>";
        html += "</tr>";
    }
    QTextDocument doc;
    doc.setHtml(html + "</table>");
    doc.print(&printer);
}

void PrintGrid(const QTableWidget* grid, const QString& title, QPrinter& printer) {
    PrintGrid(*grid->model(), title, printer);
}

}  // namespace vess
