// The registered commands on the main window: their menus, actions, keys and
// enabling, and the main window as the host their handlers run on.
#include <QAction>
#include <QMenu>
#include <QMenuBar>

#include <algorithm>

#include "app/job_runner.h"
#include "app/main_window.h"
#include "detection/editing.h"

namespace vess {
namespace {

QString Plain(QString title) { return title.remove('&'); }

// The sub-menu of parent titled title, or nullptr.
QMenu* SubMenu(const QList<QAction*>& actions, const QString& title) {
    for (QAction* a : actions)
        if (a->menu() && Plain(a->menu()->title()) == Plain(title)) return a->menu();
    return nullptr;
}

}  // namespace

QMenu* MainWindow::MenuAt(const QString& path) {
    const QStringList titles = path.split('/', Qt::SkipEmptyParts);
    QMenu* menu = nullptr;
    for (const QString& title : titles) {
        QMenu* found = SubMenu(menu ? menu->actions() : menuBar()->actions(), title);
        if (!found) {
            found = menu ? menu->addMenu(title) : menuBar()->addMenu(title);
            found->setToolTipsVisible(true);
        }
        menu = found;
    }
    return menu;
}

void MainWindow::BuildRegisteredCommands() {
    const CommandRegistry& registry = CommandRegistry::Program();
    std::vector<MenuPlace> places = registry.Menus();
    std::stable_sort(places.begin(), places.end(),
                     [](const MenuPlace& a, const MenuPlace& b) { return a.order < b.order; });
    for (const MenuPlace& place : places) {
        QAction* const before = place.before.isEmpty() ? nullptr : Action(place.before);
        if (before) menuBar()->insertMenu(before, new QMenu(place.title, menuBar()));
        QMenu* menu = MenuAt(place.title);
        menu->setObjectName(place.objectName);
        actions_[place.objectName] = menu->menuAction();
    }

    std::vector<const Command*> commands;
    for (const Command& c : registry.Commands()) commands.push_back(&c);
    std::stable_sort(commands.begin(), commands.end(),
                     [](const Command* a, const Command* b) { return a->order < b->order; });
    for (const Command* c : commands) {
        QMenu* menu = MenuAt(c->menuPath);
        QAction* const before = c->before.isEmpty() ? nullptr : Action(c->before);
        if (c->separatorBefore) menu->insertSeparator(before);
        QAction* a = nullptr;
        if (c->fillMenu) {
            auto* sub = new QMenu(c->caption, menu);
            menu->insertMenu(before, sub);
            sub->setObjectName(c->objectName);
            a = sub->menuAction();
            connect(sub, &QMenu::aboutToShow, this, [this, sub, c] {
                sub->clear();
                c->fillMenu(sub, *this);
            });
        } else {
            a = new QAction(c->caption, this);
            a->setObjectName(c->objectName);
            a->setShortcuts(c->keys);
            a->setShortcutContext(Qt::WindowShortcut);
            connect(a, &QAction::triggered, this, [this, c] { c->run(*this); });
            menu->insertAction(before, a);
            addAction(a);  // keys work while the menu bar is hidden
        }
        if (!c->toolTip.isEmpty()) {
            a->setToolTip(c->toolTip);
            a->setStatusTip(c->toolTip);
        }
        actions_[c->objectName] = a;
        registered_.push_back({a, c});
    }
}

void MainWindow::RefreshRegisteredActions() {
    const CommandState state{ws_, NonStopRunning(), jobs_->Running()};
    for (const auto& [action, command] : registered_)
        action->setEnabled(!command->enabledWhen || command->enabledWhen(state));
}

void MainWindow::Redraw(bool eventsChanged) {
    if (eventsChanged) KeepSelectionValid(ws_);
    AfterEdit(eventsChanged);
}

}  // namespace vess
