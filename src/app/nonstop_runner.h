// Drives the non-stop analysis from the event loop: a zero-interval timer
// runs screens for a few milliseconds at a time, so the window keeps
// answering input (F12 stops it between screens) while an hour of recording
// is analysed in seconds. Progress is reported at most ~20 times a second.
#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

#include <memory>

#include "detection/screen_commands.h"

namespace vess {

class NonStopRunner : public QObject {
    Q_OBJECT
public:
    explicit NonStopRunner(Workspace& ws);
    ~NonStopRunner() override;

    // Starts a run (nothing when one is running); a run the parameters
    // refuse ends with its message shown through dialogs.
    void Start(Dialogs& dialogs);
    // Ends the run after the current screen.
    void Stop();
    bool Running() const { return run_ != nullptr; }
    NonStopAnalysis::Progress GetProgress() const;

signals:
    // Emitted, throttled, while running, and once with finished = true.
    void Progress(bool finished);
    // Events stored by the screens of one slice of the run (at least one).
    void EventsStored(int count);

private:
    void Tick();
    void Finish();

    Workspace& ws_;
    std::unique_ptr<NonStopAnalysis> run_;
    Dialogs* dialogs_ = nullptr;
    NonStopAnalysis::Progress last_;
    QTimer timer_;
    QElapsedTimer sinceReport_;
};

}  // namespace vess
