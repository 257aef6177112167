// The tool windows of the main window: one instance of each kind, a child
// window of the main window, made on first use and shown, raised and
// activated whenever it is asked for again. A window that deletes itself on
// close is made afresh the next time. Any window of the owner finds them
// with Of().
#pragma once

#include <QPointer>
#include <QVariant>
#include <QWidget>

#include <map>
#include <typeindex>
#include <typeinfo>

namespace vess {

class Dialogs;

class ToolWindows {
public:
    // Keep: shown and raised but not activated, the keys stay where they are.
    enum class Focus { Activate, Keep };

    // dialogs: the program's questions, for windows that ask through them.
    explicit ToolWindows(QWidget* owner, Dialogs* dialogs = nullptr) : owner_(owner), dialogs_(dialogs) {
        owner_->setProperty(kOwnerProperty, QVariant::fromValue(static_cast<void*>(this)));
    }
    ~ToolWindows() { owner_->setProperty(kOwnerProperty, QVariant()); }
    ToolWindows(const ToolWindows&) = delete;
    ToolWindows& operator=(const ToolWindows&) = delete;

    // The tool windows of the window w belongs to (w, its parent, ...), or
    // nullptr when it belongs to none.
    static ToolWindows* Of(const QWidget* w) {
        for (; w; w = w->parentWidget())
            if (const QVariant v = w->property(kOwnerProperty); v.isValid())
                return static_cast<ToolWindows*>(v.value<void*>());
        return nullptr;
    }

    // The window of type W, made by make(owner) when there is none.
    template <class W, class Make>
    W* Show(Make&& make, Focus focus = Focus::Activate) {
        QPointer<QWidget>& slot = windows_[std::type_index(typeid(W))];
        if (!slot) {
            W* made = make(owner_);
            made->setParent(owner_, made->windowFlags() | Qt::Window);
            slot = made;
        }
        slot->show();
        slot->raise();
        if (focus == Focus::Activate) slot->activateWindow();
        return static_cast<W*>(slot.data());
    }

    // The window of type W if one is open (or hidden), else nullptr.
    template <class W>
    W* Find() const {
        const auto it = windows_.find(std::type_index(typeid(W)));
        return it == windows_.end() ? nullptr : static_cast<W*>(it->second.data());
    }

    QWidget* Owner() const { return owner_; }
    Dialogs* Asker() const { return dialogs_; }

private:
    static constexpr const char* kOwnerProperty = "vessToolWindows";

    QWidget* owner_;
    Dialogs* dialogs_;
    std::map<std::type_index, QPointer<QWidget>> windows_;
};

}  // namespace vess
