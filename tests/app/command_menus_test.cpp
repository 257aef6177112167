// The main window's menus as built from the registered commands: entries land
// in their own (sub-)menu, in front of the entry they name, in the order
// their subsystem gave; check marks and captions follow the state.
#include <QMenu>
#include <QMenuBar>

#include "app/gui_fixture.h"
#include "group_analysis/ui/group_commands.h"
#include "group_analysis/ui/group_window.h"

namespace vess::test {
namespace {

// The menu with this object name that shows the action, else nullptr.
QMenu* MenuOf(QAction* action, const QString& menuName) {
    for (QObject* o : action->associatedObjects())
        if (auto* m = qobject_cast<QMenu*>(o); m && m->objectName() == menuName) return m;
    return nullptr;
}

TEST_F(GuiTest, RegisteredEntriesLandInTheirMenusInOrder) {
    // Entries of different subsystems meet in one menu; sub-menus are made
    // before their entries, whichever file registered them.
    const struct {
        const char* menu;
        const char* first;
        const char* second;
    } pairs[] = {
        {"menu_File", "menu_OpenRecording", "menu_OpenEvent"},      // placed in front of another
        {"menu_File", "menu_RecentRecordings", "menu_OpenEvent"},
        {"menu_Events", "menu_RemoveNearDuplicates", "menu_groupBursts"},
        {"menu_Events", "menu_groupbyrandom", "menu_Sort"},
        {"menu_PutAllArray2", "menu_PutAllArray2_0", "menu_PutAllArray2_1"},
        {"menu_AutoCorrelogram", "menu_AutoCorrelogram_0", "menu_AutoCorrelogram_1"},
        {"menu_GoTo", "menu_LastScreen", "menu_FirstEvent"},
        {"", "menu_PictureSeries", "menu_Batch"},  // the Signal menu
    };
    for (const auto& p : pairs) {
        QAction* first = window->Action(p.first);
        QAction* second = window->Action(p.second);
        ASSERT_TRUE(first && second) << p.first << " " << p.second;
        QMenu* menu = MenuOf(first, p.menu);
        ASSERT_NE(menu, nullptr) << p.first << " not in " << p.menu;
        ASSERT_EQ(MenuOf(second, p.menu), menu) << p.second;
        EXPECT_LT(menu->actions().indexOf(first), menu->actions().indexOf(second)) << p.first;
    }
    // Top-level menus in their places on the bar.
    QStringList bar;
    for (QAction* a : window->menuBar()->actions()) bar << a->objectName();
    EXPECT_LT(bar.indexOf("menu_View"), bar.indexOf("menu_GroupAnalysis"));
    EXPECT_EQ(bar.indexOf("menu_GroupAnalysis") + 1, bar.indexOf("menu_DataArrays"));
    EXPECT_EQ(bar.last(), "menu_Help");
}

TEST_F(GuiTest, CheckMarksAndCaptionsFollowTheState) {
    QAction* line60 = window->Action("menu_LineFrequency60");
    ws.settings.lineFrequencyHz = 60;  // as loaded from a settings file
    window->RefreshAll();
    EXPECT_TRUE(line60->isChecked());
    line60->trigger();
    EXPECT_EQ(ws.settings.lineFrequencyHz, 50);

    OpenSample();
    EXPECT_FALSE(window->Action("menu_ShowFiltered")->isEnabled());  // no filter applied
    AnalyseUntilEvents(2);
    ws.selectedEvent = 1;
    window->RefreshAll();
    // The captions are made again only when the undo or redo list changed:
    // after each way of changing them they name what Undo and Redo would do.
    const auto captions = [this] {
        return std::pair(window->Action("menu_Undo")->text(), window->Action("menu_Redo")->text());
    };
    const auto named = [](const char* verb, bool can, const std::string& label) {
        return can ? QString("&%1 %2").arg(verb, QString::fromStdString(label)) : QString("&%1").arg(verb);
    };
    const std::pair<const char*, std::function<void()>> steps[] = {
        {"reject", [this] { Type('J'); }},
        {"undo", [this] { window->Action("menu_Undo")->trigger(); }},
        {"redo", [this] { window->Action("menu_Redo")->trigger(); }},
        {"open again", [this] {  // a new file starts a new history
             dialogs.AnswerYesNo(false);  // the events need not be saved
             OpenSample();
         }},
    };
    for (const auto& [step, run] : steps) {
        run();
        EXPECT_EQ(captions(), std::pair(named("Undo", ws.history.CanUndo(), ws.history.UndoLabel()),
                                        named("Redo", ws.history.CanRedo(), ws.history.RedoLabel())))
            << step;
    }
    EXPECT_EQ(captions(), std::pair(QString("&Undo"), QString("&Redo")));
}

// Plots from the main window's commands and from its tool windows go into
// the one graph frame the main window owns.
TEST_F(GuiTest, PlotsOfEveryWindowShareTheMainWindowsGraphFrame) {
    PlotData plot;
    plot.title = "from a tool window";
    ShowPlot(group::OpenGroupAnalysis(*window), plot);
    plot.title = "from a command";
    ShowPlot(window->Tools(), plot);
    auto* frame = window->Tools().Find<GraphFrame>();
    ASSERT_NE(frame, nullptr);
    EXPECT_EQ(frame->parentWidget(), window.get());
    ASSERT_EQ(frame->Plots().size(), 2u);
    EXPECT_EQ(frame->Plots()[0]->Description().title, "from a tool window");
}

}  // namespace
}  // namespace vess::test
