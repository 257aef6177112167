// Copying and saving what a widget shows: text and pictures to the
// clipboard, pictures to PNG, SVG or PDF files.
#pragma once

#include <QString>

#include <string>

class QWidget;

namespace vess::group {

void CopyText(const std::string& text);
void CopyWidget(QWidget* widget);
// By the file's suffix: .svg or .pdf (anything else is saved as PNG).
bool ExportWidget(QWidget* widget, const QString& path);

}  // namespace vess::group
