// The tool windows of the main window: one instance of each kind, a child
// window of the main window, made on first use and shown, raised and
// activated whenever it is asked for again. A window that deletes itself on
// close is made afresh the next time.
#pragma once

#include <QPointer>
#include <QWidget>

#include <map>
#include <typeindex>
#include <typeinfo>

namespace vess {

class ToolWindows {
public:
    explicit ToolWindows(QWidget* owner) : owner_(owner) {}

    // The window of type W, made by make(owner) when there is none.
    template <class W, class Make>
    W* Show(Make&& make) {
        QPointer<QWidget>& slot = windows_[std::type_index(typeid(W))];
        if (!slot) {
            W* made = make(owner_);
            made->setParent(owner_, made->windowFlags() | Qt::Window);
            slot = made;
        }
        Raise(slot);
        return static_cast<W*>(slot.data());
    }

    // The window of type W if one is open (or hidden), else nullptr.
    template <class W>
    W* Find() const {
        const auto it = windows_.find(std::type_index(typeid(W)));
        return it == windows_.end() ? nullptr : static_cast<W*>(it->second.data());
    }

    QWidget* Owner() const { return owner_; }

private:
    static void Raise(QWidget* w) {
        w->show();
        w->raise();
        w->activateWindow();
    }

    QWidget* owner_;
    std::map<std::type_index, QPointer<QWidget>> windows_;
};

}  // namespace vess
