// One QWidget::update() between two paints of a view. A command tells a view
// of several changes (the screen, the events, the selection); each update()
// costs the window system's bookkeeping even when a paint is already asked
// for, so only the first is passed on. A request that cannot lead to a paint
// (the widget hidden, empty or not updating) is not remembered, and every
// paint forgets the last one, so a request after it always goes through.
#pragma once

#include <QWidget>

namespace vess {

class PaintRequest {
public:
    void Ask(QWidget& widget) {
        if (asked_) return;
        widget.update();
        asked_ = widget.isVisible() && widget.updatesEnabled() && !widget.rect().isEmpty();
    }
    // Called at the start of every paint of the widget.
    void Painted() { asked_ = false; }

private:
    bool asked_ = false;
};

}  // namespace vess
