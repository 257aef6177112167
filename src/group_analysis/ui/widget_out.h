// Copying and saving what a widget shows: text and pictures to the
// clipboard, pictures to PNG, SVG or PDF files.
#pragma once

#include <QString>

#include <string>

class QWidget;

namespace vess::group {

void CopyText(const std::string& text);
// Copies text by way of a temporary file (in the temporary folder), as the
// other programs that paste it expect the file's line endings and encoding.
void CopyTextThroughFile(const std::string& text, const std::string& fileName);
// The widget as an SVG picture on the clipboard.
void CopyWidgetSvg(QWidget* widget);
void CopyWidget(QWidget* widget);
// By the file's suffix: .svg or .pdf (anything else is saved as PNG).
bool ExportWidget(QWidget* widget, const QString& path);

}  // namespace vess::group
