#include "group_analysis/ui/widget_out.h"

#include <QBuffer>
#include <QClipboard>
#include <QMimeData>
#include <QGuiApplication>
#include <QPainter>
#include <QPdfWriter>
#include <QSvgGenerator>
#include <QWidget>

#include <filesystem>

#include "recording/file_io.h"

namespace vess::group {

void CopyText(const std::string& text) {
    QGuiApplication::clipboard()->setText(QString::fromStdString(text));
}

void CopyTextThroughFile(const std::string& text, const std::string& fileName) {
    const auto path = std::filesystem::temp_directory_path() / fileName;
    if (!WriteFileAtomic(path, text).empty()) return CopyText(text);
    const auto bytes = ReadFileBytes(path);
    CopyText(bytes ? std::string(bytes->begin(), bytes->end()) : text);
}

void CopyWidgetSvg(QWidget* widget) {
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    {
        QSvgGenerator svg;
        svg.setOutputDevice(&buffer);
        svg.setSize(widget->size());
        svg.setViewBox(widget->rect());
        QPainter p(&svg);
        widget->render(&p);
    }
    auto* mime = new QMimeData;
    mime->setData("image/svg+xml", buffer.data());
    QGuiApplication::clipboard()->setMimeData(mime);
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
