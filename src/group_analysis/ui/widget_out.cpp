#include "group_analysis/ui/widget_out.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QPainter>
#include <QPdfWriter>
#include <QSvgGenerator>
#include <QWidget>

namespace vess::group {

void CopyText(const std::string& text) {
    QGuiApplication::clipboard()->setText(QString::fromStdString(text));
}

void CopyWidget(QWidget* widget) { QGuiApplication::clipboard()->setPixmap(widget->grab()); }

bool ExportWidget(QWidget* widget, const QString& path) {
    if (path.endsWith(".svg", Qt::CaseInsensitive)) {
        QSvgGenerator svg;
        svg.setFileName(path);
        svg.setSize(widget->size());
        svg.setViewBox(widget->rect());
        QPainter p(&svg);
        widget->render(&p);
        return true;
    }
    if (path.endsWith(".pdf", Qt::CaseInsensitive)) {
        QPdfWriter pdf(path);
        pdf.setPageSize(QPageSize(widget->size(), QPageSize::Point));
        pdf.setResolution(72);
        QPainter p(&pdf);
        widget->render(&p);
        return true;
    }
    return widget->grab().save(path);
}

}  // namespace vess::group
