// The View menu and tool bar of the main window: the keys that move the
// screen or the selected event, the display gain and offset, the cursors and
// the tool-tips. The core decides where to go; the window shows it.
#include "detection/ui/navigation_commands.h"

#include <QObject>
#include <QToolTip>

#include "detection/navigation.h"
#include "detection/ui/texts.h"
#include "detection/ui/trace_view.h"
#include "recording/ui/command_registry.h"
#include "recording/workspace.h"

namespace vess {

void ShowNavigation(CommandHost& host, const NavResult& result) {
    if (!result.moved) return;
    ApplyNavigation(host.Ws(), result);
    host.Redraw(false);  // the grid follows the selected event
}

namespace {

using namespace ui_text;

void ShowJump(CommandHost& host, const Outcome<NavResult>& jump) {
    if (ShowFailure(host.Asker(), jump.status())) ShowNavigation(host, *jump);
}

constexpr const char* kMenu = "&View";
constexpr const char* kGoTo = "&View/&Go To";

void Go(CommandHost& host, NavCommand command) {
    if (host.NonStopRunning()) return;
    ShowNavigation(host, Navigate(host.Ws(), command));
}

void StepScale(CommandHost& host, DisplayStep step) {
    Settings& settings = host.Ws().settings;
    const DisplayScale next = StepDisplay(DisplayScaleFromSettings(settings), step, host.Trace()->FullSpanCounts());
    StoreDisplayScale(settings, next);
    host.RedrawTrace(false);
}

void AddGoToCommands(CommandRegistry& r, double& order) {
    r.Add({.objectName = "menu_GoTo", .menuPath = kMenu, .caption = QObject::tr("&Go To"), .order = order++,
           .subMenu = true});
    struct Nav {
        const char* name;
        const char* text;
        const char* key;
        const char* tip;
        NavCommand command;
        const char* icon;
    };
    const Nav moves[] = {
        {"menu_FirstScreen", "First Screen", "A", kTipFirstScreen, NavCommand::FirstScreen, "|◀"},
        {"menu_PrevScreen", "Previous Screen", "S", kTipPrevScreen, NavCommand::PrevScreen, "◀"},
        {"menu_NextScreen", "Next Screen", "D", kTipNextScreen, NavCommand::NextScreen, "▶"},
        {"menu_LastScreen", "Last Screen", "F", kTipLastScreen, NavCommand::LastScreen, "▶|"},
        {"menu_FirstEvent", "First Event", "Z", kTipFirstEvent, NavCommand::FirstEvent, "|◆"},
        {"menu_PrevEvent", "Previous Event", "X", kTipPrevEvent, NavCommand::PrevEvent, "◆◀"},
        {"menu_NextEvent", "Next Event", "C", kTipNextEvent, NavCommand::NextEvent, "▶◆"},
        {"menu_LastEvent", "Last Event", "V", kTipLastEvent, NavCommand::LastEvent, "◆|"},
        {"menu_NextEventNextWindow", "Next Event in Next Window", "B", kTipNextEventNextWindow,
         NavCommand::NextEventInNextWindow, ""},
        {"menu_FirstInSequence", "First Event in Sequence", "Q", kTipFirstInSequence, NavCommand::FirstInSequence, ""},
        {"menu_PrevInSequence", "Previous Event in Sequence", "W", kTipPrevInSequence, NavCommand::PrevInSequence, ""},
        {"menu_NextInSequence", "Next Event in Sequence", "E", kTipNextInSequence, NavCommand::NextInSequence, ""},
        {"menu_LastInSequence", "Last Event in Sequence", "R", kTipLastInSequence, NavCommand::LastInSequence, ""},
        {"menu_FirstGrouped", "First Grouped Event", "1", kTipFirstGrouped, NavCommand::FirstGrouped, ""},
        {"menu_PrevGrouped", "Previous Grouped Event", "2", kTipPrevGrouped, NavCommand::PrevGrouped, ""},
        {"menu_NextGrouped", "Next Grouped Event", "3", kTipNextGrouped, NavCommand::NextGrouped, ""},
        {"menu_LastGrouped", "Last Grouped Event", "4", kTipLastGrouped, NavCommand::LastGrouped, ""},
        {"menu_NextTimeInterval", "Next Time Interval", "Ctrl+T", kTipJumpInterval, NavCommand::NextTimeInterval, ""},
    };
    for (const Nav& n : moves) {
        // The event moves start a group of their own, in the menu and on the bar.
        const bool firstEvent = n.command == NavCommand::FirstEvent;
        r.Add({.objectName = n.name,
               .menuPath = kGoTo,
               .caption = QObject::tr(n.text),
               .keys = {QKeySequence(n.key)},
               .toolTip = n.tip,
               .order = order++,
               .separatorBefore = firstEvent,
               .run = [command = n.command](CommandHost& host) { Go(host, command); },
               .toolBarText = n.icon,
               .toolBarSeparatorBefore = firstEvent});
    }
    r.Add({.objectName = "menu_JumpTime",
           .menuPath = kGoTo,
           .caption = QObject::tr("Specific Time..."),
           .keys = {QKeySequence("T")},
           .toolTip = kTipJumpTime,
           .order = order++,
           .separatorBefore = true,
           .run =
               [](CommandHost& host) {
                   if (!host.NonStopRunning()) ShowJump(host, JumpToTime(host.Ws(), host.Asker()));
               }});
    r.Add({.objectName = "menu_JumpEvent",
           .menuPath = kGoTo,
           .caption = QObject::tr("Event Number..."),
           .keys = {QKeySequence("Y")},
           .toolTip = kTipJumpEvent,
           .order = order++,
           .run =
               [](CommandHost& host) {
                   if (!host.NonStopRunning()) ShowJump(host, JumpToEventNumber(host.Ws(), host.Asker()));
               }});
}

void AddDisplayCommands(CommandRegistry& r, double& order) {
    struct Disp {
        const char* name;
        const char* text;
        Qt::Key key;
        const char* tip;
        DisplayStep step;
        const char* icon;
    };
    const Disp steps[] = {
        {"menu_GainUp", "Increase Display Gain", Qt::Key_Home, kTipGainUp, DisplayStep::IncreaseGain, "Gain +"},
        {"menu_GainDown", "Decrease Display Gain", Qt::Key_End, kTipGainDown, DisplayStep::DecreaseGain, "Gain −"},
        {"menu_OffsetUp", "Increase Display Offset", Qt::Key_PageUp, kTipOffsetUp, DisplayStep::IncreaseOffset,
         "Offset ↑"},
        {"menu_OffsetDown", "Decrease Display Offset", Qt::Key_PageDown, kTipOffsetDown,
         DisplayStep::DecreaseOffset, "Offset ↓"},
    };
    for (const Disp& d : steps)
        r.Add({.objectName = d.name,
               .menuPath = kMenu,
               .caption = QObject::tr(d.text),
               .keys = {QKeySequence(d.key)},
               .toolTip = d.tip,
               .order = order++,
               .separatorBefore = d.step == DisplayStep::IncreaseGain,
               .run = [step = d.step](CommandHost& host) { StepScale(host, step); },
               .toolBarText = QString::fromUtf8(d.icon),
               .toolBarSeparatorBefore = d.step == DisplayStep::IncreaseGain});
    r.Add({.objectName = "menu_FitDisplay",
           .menuPath = kMenu,
           .caption = QObject::tr("&Fit Display to This Screen"),
           .keys = {QKeySequence("H")},
           .toolTip = kTipFitDisplay,
           .order = order++,
           .run =
               [](CommandHost& host) {
                   if (!host.Ws().recording) return;
                   StoreDisplayScale(host.Ws().settings, host.Trace()->FitAllScale());
                   host.RedrawTrace(false);
               },
           .toolBarText = QObject::tr("Fit")});
    r.Add({.objectName = "menu_ResetDisplay",
           .menuPath = kMenu,
           .caption = QObject::tr("&Reset Display Gain and Offset"),
           .keys = {QKeySequence("0")},
           .toolTip = kTipResetDisplay,
           .order = order++,
           .run =
               [](CommandHost& host) {
                   host.Trace()->ResetZoom();  // back to the whole screen
                   StoreDisplayScale(host.Ws().settings, DisplayScale{});
                   host.RedrawTrace(false);
               },
           .toolBarText = QObject::tr("Reset")});
    r.Add({.objectName = "menu_Cursors",
           .menuPath = kMenu,
           .caption = QObject::tr("&Cursors"),
           .keys = {QKeySequence("Ctrl+K")},
           .toolTip = QObject::tr("Two cursors: the first follows the mouse, a middle click sets the second"),
           .order = order++,
           .separatorBefore = true,
           .toggle = [](CommandHost& host, bool on) { host.Trace()->SetCursorsOn(on); },
           .toolBarText = QObject::tr("Cursors")});
    r.Add({.objectName = "menu_DisplayTooltips",
           .menuPath = kMenu,
           .caption = QObject::tr("Show &Tool-tips"),
           .order = order++,
           .toggle =
               [](CommandHost& host, bool on) {
                   host.Ws().settings.showToolTips = on;
                   if (!on) QToolTip::hideText();
               },
           .checkedWhen = [](const CommandState& s) { return s.ws.settings.showToolTips; }});
}

void AddNavigationCommands(CommandRegistry& r) {
    r.AddMenu({kMenu, "menu_View", -60});
    double order = 0;
    AddGoToCommands(r, order);
    AddDisplayCommands(r, order);
}

const CommandRegistration registration{AddNavigationCommands};

}  // namespace
}  // namespace vess
