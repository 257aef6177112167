// Colours of the trace view and the overview strip, and the style of an
// event's marks by its group: plain, in a group (a colour per group) or
// rejected (faded).
#pragma once

#include <QColor>

#include <array>
#include <cstdint>

#include "recording/event_record.h"

namespace vess::trace_style {

// Mark colours chosen to stay apart on a light background: red peak, green
// baseline, amber start (a pure yellow vanishes on white), magenta decay.
inline const QColor kBackground(0xfb, 0xfb, 0xf8);
inline const QColor kTraceColour(0x20, 0x30, 0x48);
inline const QColor kAxisColour(0x60, 0x60, 0x60);
inline const QColor kGridColour(0xe4, 0xe4, 0xe0);
inline const QColor kPastDataColour(0xe8, 0xe8, 0xe4);
inline const QColor kPeakColour(0xd0, 0x10, 0x10);
inline const QColor kBaseColour(0x10, 0x9a, 0x20);
inline const QColor kStartColour(0xe8, 0xa8, 0x00);
inline const QColor kDecayColour(0xc0, 0x00, 0xc0);
inline const QColor kSelectColour(0x30, 0x70, 0xe0, 60);
inline const QColor kCursorColour(0x00, 0x80, 0x90);
inline const QColor kRejectedColour(0x90, 0x90, 0x90);
inline const QColor kScreenColour(0x30, 0x70, 0xe0, 70);
inline const QColor kClippedColour(0xe0, 0x70, 0x00);

// Group colours, none of them the red of a plain peak or the grey of a
// rejected one; groups beyond ten reuse them in turn.
inline const std::array<QColor, 10> kGroupColours{
    QColor(0x1f, 0x5f, 0xc4), QColor(0xe0, 0x7a, 0x00), QColor(0x7b, 0x3f, 0xb8),
    QColor(0x00, 0x8c, 0x8c), QColor(0x8c, 0x56, 0x2b), QColor(0xd0, 0x45, 0xa8),
    QColor(0x5a, 0x8a, 0x00), QColor(0x2b, 0x2f, 0x8f), QColor(0x00, 0x9e, 0xd8),
    QColor(0xa8, 0x8a, 0x00)};

inline QColor GroupColour(int group) {
    return kGroupColours[std::size_t((group - 1 + 10 * 26) % 10)];
}

// The colour of an event's peak mark, and whether its marks are faded.
struct MarkStyle {
    QColor peak;
    bool faded = false;
};

inline MarkStyle StyleOf(uint8_t group) {
    if (group == kGroupRejected) return {kRejectedColour, true};
    if (group != 0) return {GroupColour(group), false};
    return {kPeakColour, false};
}

// A colour as a faded mark draws it.
inline QColor Faded(QColor c) {
    c.setAlpha(90);
    return c;
}

}  // namespace vess::trace_style
