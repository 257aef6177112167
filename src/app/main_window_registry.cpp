// The registered commands on the main window: their menus, actions, tool
// bar, keys and enabling, and the main window as the host their handlers
// run on.
#include <QAction>
#include <QMenu>
#include <QMenuBar>
#include <QSignalBlocker>
#include <QTableView>
#include <QToolBar>

#include <algorithm>

#include "app/job_runner.h"
#include "app/main_window.h"

namespace vess {
namespace {

QString Plain(QString title) { return title.remove('&'); }

// The sub-menu of parent titled title, or nullptr.
QMenu* SubMenu(const QList<QAction*>& actions, const QString& title) {
    for (QAction* a : actions)
        if (a->menu() && Plain(a->menu()->title()) == Plain(title)) return a->menu();
    return nullptr;
}

// Commands in menu order: lower order first, registration order among equals.
std::vector<const Command*> InOrder(const std::vector<Command>& all) {
    std::vector<const Command*> commands;
    for (const Command& c : all) commands.push_back(&c);
    std::stable_sort(commands.begin(), commands.end(),
                     [](const Command* a, const Command* b) { return a->order < b->order; });
    return commands;
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
        menu->setToolTipsVisible(true);
        menu->menuAction()->setObjectName(place.objectName);
        if (!place.objectName.isEmpty()) actions_[place.objectName] = menu->menuAction();
    }
    toolBar_ = addToolBar(tr("Navigation"));
    toolBar_->setObjectName("tbNavigation");
    toolBar_->setMovable(false);

    // Entries placed in front of another come after every entry they may
    // name is made.
    const std::vector<const Command*> commands = InOrder(registry.Commands());
    for (const bool placedBefore : {false, true})
        for (const Command* c : commands)
            if (c->before.isEmpty() != placedBefore) AddRegistered(*c);
}

void MainWindow::AddRegistered(const Command& c) {
    QMenu* menu = c.menuPath.isEmpty() ? nullptr : MenuAt(c.menuPath);
    QAction* const before = c.before.isEmpty() ? nullptr : Action(c.before);
    if (menu && c.separatorBefore) menu->insertSeparator(before);
    QAction* a = nullptr;
    if (c.fillMenu || c.subMenu) {
        auto* sub = new QMenu(c.caption, menu);
        sub->setToolTipsVisible(true);
        menu->insertMenu(before, sub);
        sub->setObjectName(c.objectName);
        a = sub->menuAction();
        a->setObjectName(c.objectName);
        if (c.fillMenu)
            connect(sub, &QMenu::aboutToShow, this, [this, sub, &c] {
                sub->clear();
                c.fillMenu(sub, *this);
            });
    } else {
        a = new QAction(c.caption, this);
        a->setObjectName(c.objectName);
        if (c.standardKey != QKeySequence::UnknownKey)
            a->setShortcuts(c.standardKey);
        else
            a->setShortcuts(c.keys);
        a->setShortcutContext(Qt::WindowShortcut);
        if (c.toggle) {
            a->setCheckable(true);
            connect(a, &QAction::toggled, this, [this, &c](bool on) { c.toggle(*this, on); });
        } else {
            connect(a, &QAction::triggered, this, [this, &c] { c.run(*this); });
        }
        if (menu) menu->insertAction(before, a);
        addAction(a);  // keys work while the menu bar is hidden
    }
    if (!c.toolTip.isEmpty()) {
        a->setToolTip(c.toolTip);
        a->setStatusTip(c.toolTip);
    }
    if (!c.toolBarText.isEmpty()) {
        if (c.toolBarSeparatorBefore) toolBar_->addSeparator();
        a->setIconText(c.toolBarText);
        toolBar_->addAction(a);
    }
    actions_[c.objectName] = a;
    if (const auto* plain = c.enabledWhen.target<bool (*)(const CommandState&)>(); plain && *plain) {
        const auto test = std::size_t(std::find(enablingTests_.begin(), enablingTests_.end(), *plain) -
                                      enablingTests_.begin());
        if (test == enablingTests_.size()) {
            enablingTests_.push_back(*plain);
            actionsOfTest_.emplace_back();
        }
        actionsOfTest_[test].push_back(a);
    } else if (c.enabledWhen) {
        ownTests_.push_back({a, &c});
    }
    if (c.checkedWhen) checkedActions_.emplace_back(a, &c);
    if (c.captionWhen) captionedActions_.push_back({a, &c});
}

void MainWindow::RefreshActions() {
    const CommandState state{ws_, NonStopRunning(), jobs_->Running()};
    testsPassed_.resize(enablingTests_.size(), -1);
    for (std::size_t t = 0; t < enablingTests_.size(); ++t) {
        const int on = enablingTests_[t](state);
        if (on == testsPassed_[t]) continue;
        testsPassed_[t] = on;
        for (QAction* a : actionsOfTest_[t]) a->setEnabled(on);
    }
    for (OwnTest& r : ownTests_) {
        const int on = r.command->enabledWhen(state);
        if (on == r.enabled) continue;
        r.action->setEnabled(on);
        r.enabled = on;
    }
    for (const auto& [action, command] : checkedActions_) {
        const QSignalBlocker block(action);
        action->setChecked(command->checkedWhen(state));
    }
    for (CaptionShown& c : captionedActions_) {
        if (c.command->captionStamp) {
            const uint64_t stamp = c.command->captionStamp(state);
            if (stamp == c.stamp) continue;
            c.stamp = stamp;
        }
        c.action->setText(c.command->captionWhen(state));
    }
}

}  // namespace vess
