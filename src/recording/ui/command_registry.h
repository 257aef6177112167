// The commands the windows of every subsystem offer on the main window. Each
// subsystem's ui/ registers its own (object name, menu, caption, keys,
// tool-tip, when it is enabled, what it does) with a CommandRegistration at
// start-up; the main window builds its menus, tool bar, keys and enabling
// from the list, so adding a window changes nothing in the main window.
#pragma once

#include <QKeySequence>
#include <QList>
#include <QString>

#include <cstdint>
#include <functional>
#include <vector>

class QMenu;
class QWidget;

namespace vess {

class Dialogs;
class JobRunner;
class Screen;
class ToolWindows;
class TraceView;
struct Workspace;

// What a command's enabling looks at: the workspace and whether a
// non-stop analysis or a job runs.
struct CommandState {
    const Workspace& ws;
    bool nonStopRunning = false;
    bool jobRunning = false;

    bool Busy() const { return nonStopRunning || jobRunning; }
    bool RecordingOpen() const;
    bool HasEvents() const;
    bool EventSelected() const;
};

// The main window as commands see it.
class CommandHost {
public:
    virtual ~CommandHost() = default;
    virtual Workspace& Ws() = 0;
    virtual Dialogs& Asker() = 0;
    virtual JobRunner& Jobs() const = 0;
    // The one instance of each tool window, owned by the main window.
    virtual ToolWindows& Tools() = 0;
    // Opens a recording or an event file as the file list does.
    virtual void OpenPath(const QString& path) = 0;
    // A non-stop analysis or a job runs.
    virtual bool Busy() const = 0;
    virtual bool NonStopRunning() const = 0;
    // Starts the non-stop analysis of the whole recording / ends it after
    // the current screen.
    virtual void StartNonStop() = 0;
    virtual void StopNonStop() = 0;
    // Before detecting: the settings suggested for a recording analysed for
    // the first time, the thresholds checked and, for a run over the whole
    // recording, the events to replace; false when the user stopped there.
    virtual bool ReadyToDetect(bool wholeRecording) = 0;
    // Events stored by a detection command (the sound, when it is on).
    virtual void EventsStored(int count) = 0;
    // The screen a command has just read (detection of the next window): the
    // trace shows it instead of reading it again when it is the screen to
    // show and from the samples shown (recorded or filtered).
    virtual void OfferScreen(Screen&& screen) = 0;
    // Redraws grid, trace and status after a command; eventsChanged when the
    // event table may have changed.
    virtual void Redraw(bool eventsChanged) = 0;
    // Redraws the trace and status; reread when the trace shown changed
    // (another filter, the filtered or the recorded trace).
    virtual void RedrawTrace(bool reread) = 0;
    // Redraws everything, the parameter boxes included (the settings may
    // have changed); eventsChanged as for Redraw.
    virtual void RedrawAll(bool eventsChanged) = 0;
    // Clears the pointer read-out and the progress, which speak of what was
    // shown before (another file, an undo).
    virtual void ClearReadouts() = 0;
    // 1-based rows highlighted in the event grid, ascending.
    virtual std::vector<int32_t> SelectedRows() const = 0;
    // The trace display: its cursors, its scale, its picture.
    virtual TraceView* Trace() const = 0;
};

struct Command {
    QString objectName{};
    // Menu titles from the menu bar down, separated by '/': "&Signal",
    // "&File/Recent Recordings". A missing menu is made.
    QString menuPath{};
    QString caption{};
    QList<QKeySequence> keys{};
    // A key of the platform's (Save, Quit), looked up when the menu is made.
    QKeySequence::StandardKey standardKey = QKeySequence::UnknownKey;
    QString toolTip{};
    // Place within the menu (lower first); commands of the main window's own
    // builders come before every registered one.
    double order = 0;
    // Object name of the main window's own entry this one goes in front of;
    // empty: at the end of the menu.
    QString before{};
    bool separatorBefore = false;
    // Empty: always enabled.
    std::function<bool(const CommandState&)> enabledWhen{};
    // What the command does; empty for a sub-menu.
    std::function<void(CommandHost&)> run{};
    // A sub-menu whose entries are made each time it opens (the command's
    // caption is the sub-menu's title).
    std::function<void(QMenu*, CommandHost&)> fillMenu{};
    // A sub-menu titled caption that the commands whose menuPath ends in it
    // fill; enabledWhen enables it as a whole.
    bool subMenu = false;
    // A checkable entry: toggle runs when the user switches it, with the new
    // state; checkedWhen, when given, sets the check mark at every refresh.
    std::function<void(CommandHost&, bool on)> toggle{};
    std::function<bool(const CommandState&)> checkedWhen{};
    // A caption that follows the state (Undo names what it undoes).
    std::function<QString(const CommandState&)> captionWhen{};
    // When given, the caption is asked for again only when this changed.
    std::function<uint64_t(const CommandState&)> captionStamp{};
    // Also on the main tool bar with this short text (empty: not on it).
    QString toolBarText{};
    bool toolBarSeparatorBefore = false;
};

// A top-level menu's place on the menu bar: in front of the main window's
// own menu named before, else after the main window's menus, lower order
// first.
struct MenuPlace {
    QString title{};
    QString objectName{};
    double order = 0;
    QString before{};
};

class CommandRegistry {
public:
    // The program's commands, as registered by every subsystem.
    static CommandRegistry& Program();

    void Add(Command command) { commands_.push_back(std::move(command)); }
    void AddMenu(MenuPlace menu) { menus_.push_back(std::move(menu)); }
    // In registration order; the main window orders them by Command::order.
    const std::vector<Command>& Commands() const { return commands_; }
    const std::vector<MenuPlace>& Menus() const { return menus_; }

private:
    std::vector<Command> commands_;
    std::vector<MenuPlace> menus_;
};

// Registers a subsystem's commands at start-up:
//   const CommandRegistration registration{[](CommandRegistry& r) { r.Add({...}); }};
struct CommandRegistration {
    explicit CommandRegistration(void (*add)(CommandRegistry&)) { add(CommandRegistry::Program()); }
};

// The usual enabling tests.
bool WhenIdle(const CommandState& s);
bool WhenRecordingOpen(const CommandState& s);
bool WhenRecordingOpenAndIdle(const CommandState& s);
bool WhenEventsAndIdle(const CommandState& s);
bool WhenEventSelectedAndIdle(const CommandState& s);

}  // namespace vess
