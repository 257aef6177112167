// Copying text and pictures to the clipboard.
#pragma once

#include <QString>

#include <string>

class QWidget;

namespace vess::group {

void CopyText(const std::string& text);
// Copies text by way of a temporary file (in the temporary folder), as the
// other programs that paste it expect the file's line endings and encoding.
void CopyTextThroughFile(const std::string& text, const std::string& fileName);
// The SVG picture in the file onto the clipboard.
void CopySvgFile(const QString& path);
void CopyWidget(QWidget* widget);

}  // namespace vess::group
