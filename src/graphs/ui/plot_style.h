// Colours the graph windows give series that bring none of their own.
#pragma once

#include <QColor>

namespace vess {

// Distinct, print-friendly colours, repeating after the last.
inline QColor PaletteColour(int index) {
    static const QColor colours[] = {
        QColor(31, 119, 180), QColor(214, 39, 40),  QColor(44, 160, 44),  QColor(255, 127, 14),
        QColor(148, 103, 189), QColor(140, 86, 75), QColor(227, 119, 194), QColor(127, 127, 127),
        QColor(188, 189, 34), QColor(23, 190, 207)};
    constexpr int n = int(sizeof(colours) / sizeof(colours[0]));
    return colours[((index % n) + n) % n];
}

}  // namespace vess
