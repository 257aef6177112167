#include "group_analysis/ui/widget_out.h"

#include <QClipboard>
#include <QFile>
#include <QMimeData>
#include <QGuiApplication>
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

void CopySvgFile(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) return;
    auto* mime = new QMimeData;
    mime->setData("image/svg+xml", file.readAll());
    QGuiApplication::clipboard()->setMimeData(mime);
}

void CopyWidget(QWidget* widget) { QGuiApplication::clipboard()->setPixmap(widget->grab()); }

}  // namespace vess::group
