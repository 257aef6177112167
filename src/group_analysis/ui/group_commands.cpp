// The group analysis commands of the main window: the group analysis window
// and the Events menu's bulk group assignments.
#include "group_analysis/ui/group_commands.h"

#include <tuple>

#include "group_analysis/ui/group_assign_dialog.h"
#include "group_analysis/ui/group_window.h"
#include "recording/ui/command_registry.h"
#include "recording/ui/tool_windows.h"

namespace vess::group {
namespace {

void AddGroupCommands(CommandRegistry& r) {
    r.AddMenu({"&Group Analysis", "menu_GroupAnalysis", 0, "menu_DataArrays"});
    r.Add({.objectName = "menu_AnalyseGp",
           .menuPath = "&Group Analysis",
           .caption = QObject::tr("&Group Analysis and Curve Fitting"),
           .run = [](CommandHost& host) { OpenGroupAnalysis(host); }});
    // One dialog in three modes, before the Events menu's sort.
    double order = 0;
    for (auto [name, caption, mode] :
         {std::tuple{"menu_groupBursts", "Group Bursts...", GroupAssignMode::Bursts},
          std::tuple{"menu_groupEpisodic", "Group Episodic Events...", GroupAssignMode::Episodic},
          std::tuple{"menu_groupbyrandom", "Group at Random...", GroupAssignMode::Random}}) {
        r.Add({.objectName = name,
               .menuPath = "E&vents",
               .caption = QObject::tr(caption),
               .order = order++,
               .before = "menu_Sort",
               .separatorBefore = mode == GroupAssignMode::Bursts,
               .enabledWhen = WhenIdle,
               .run =
                   [mode](CommandHost& host) {
                       GroupAssignDialog d(host.Ws(), mode, host.Tools().Owner());
                       d.exec();
                       host.Redraw(true);
                   }});
    }
}

const CommandRegistration registration{AddGroupCommands};

}  // namespace

GroupAnalysisWindow* OpenGroupAnalysis(CommandHost& host) {
    return host.Tools().Show<GroupAnalysisWindow>(
        [&host](QWidget* owner) { return new GroupAnalysisWindow(host.Ws(), host.Asker(), host.Jobs(), owner); });
}

}  // namespace vess::group
