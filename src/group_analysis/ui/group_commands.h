// The group analysis window of the main window: one instance, made on first
// use and raised after (menu_AnalyseGp).
#pragma once

namespace vess {
class CommandHost;
namespace group {

class GroupAnalysisWindow;
GroupAnalysisWindow* OpenGroupAnalysis(CommandHost& host);

}  // namespace group
}  // namespace vess
