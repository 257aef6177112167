// The analysis buttons over the workspace: analyse this screen (Command1),
// analyse the next screen (Command2), the non-stop analysis (Command3, stopped
// by Command4) and the reset of the event table (Command5). Each user command
// leaves at most one undo checkpoint, made only when it changed the table.
#pragma once

#include <cstdint>
#include <string>

#include "detection/analyze_window.h"
#include "recording/command_result.h"
#include "recording/dialogs.h"
#include "recording/screen.h"
#include "recording/workspace.h"

namespace vess {

inline constexpr const char* kUndoAnalyzeWindow = "Analyze window";
inline constexpr const char* kUndoAnalyzeNext = "Analyze next window";
inline constexpr const char* kUndoNonStop = "Non-stop analysis";
inline constexpr const char* kUndoReset = "Reset events";

// Command1: AnalyzeWindow on the displayed screen. Does nothing without a
// recording.
AnalyzeWindowResult AnalyzeCurrentScreen(Workspace& ws);

// Moves the displayed screen one screen on when a further screen holds data
// (its first block lies before the end of the data); false at the end.
bool AdvanceScreen(Workspace& ws);

struct NextWindowResult {
    bool moved = false;  // false: already on the last screen, nothing done
    AnalyzeWindowResult analysis;
    // The screen detection read (when moved): a caller that shows it need
    // not read it again.
    Screen screen;
};
// Command2: the next screen, then AnalyzeWindow on it. The screen comes from
// the workspace's screens read ahead (ws.screensAhead).
NextWindowResult AnalyzeNextWindow(Workspace& ws);

// Command3 as an object that the caller drives one screen at a time (the
// desktop program between its input events, the command line in a loop).
// Each Step is the Command2 sequence, except that a run started on a screen
// that was never analysed (no analysis ran over it since the recording was
// opened and no event lies on it) analyses that screen first. One undo
// checkpoint covers the run.
class NonStopAnalysis {
public:
    explicit NonStopAnalysis(Workspace& ws);

    // Advances and analyses one screen. Returns whether more screens remain;
    // false once the end of the data is reached, after Stop, or when the
    // parameters are improper (LastAnalysis() says why; nothing is shown).
    bool Step();
    // Command4: ends the run; Step does nothing afterwards.
    void Stop() { running_ = false; }
    bool Running() const { return running_; }
    // Runs Step until it returns false.
    void RunToEnd();
    // The workspace's screens read ahead in larger reads (256 screens
    // instead of 64), for a run through the whole file.
    void ReadAhead();

    struct Progress {
        int64_t screensDone = 0;
        int64_t screensTotal = 0;  // screens the run will analyse
        int32_t eventsFound = 0;
    };
    Progress GetProgress() const { return progress_; }
    // The analysis of the screen of the last Step (for drawing its marks).
    const AnalyzeWindowResult& LastAnalysis() const { return last_; }

private:
    Workspace& ws_;
    bool running_ = true;
    bool checkpointed_ = false;
    bool analyseShownFirst_ = false;
    Progress progress_;
    AnalyzeWindowResult last_;
};

// Command5: erases every event. A table with events asks first (OK/Cancel,
// Cancel the default) unless noConfirmation is set; an empty table is cleared
// without a question. Done when the table was erased, cancelled on Cancel.
CommandResult ResetEvents(Workspace& ws, Dialogs& dialogs, bool noConfirmation = false);
// The question asked by ResetEvents for count events.
std::string ResetQuestion(int32_t count);

}  // namespace vess
