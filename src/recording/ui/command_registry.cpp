#include "recording/ui/command_registry.h"

#include "recording/workspace.h"

namespace vess {

CommandRegistry& CommandRegistry::Program() {
    static CommandRegistry registry;
    return registry;
}

bool CommandState::RecordingOpen() const { return ws.recording != nullptr; }
bool CommandState::HasEvents() const { return !ws.events.Empty(); }
bool CommandState::EventSelected() const { return ws.HasSelectedEvent(); }

bool WhenIdle(const CommandState& s) { return !s.Busy(); }
bool WhenRecordingOpen(const CommandState& s) { return s.RecordingOpen(); }
bool WhenRecordingOpenAndIdle(const CommandState& s) { return s.RecordingOpen() && !s.Busy(); }
bool WhenEventsAndIdle(const CommandState& s) { return s.HasEvents() && !s.Busy(); }
bool WhenEventSelectedAndIdle(const CommandState& s) {
    return s.EventSelected() && s.RecordingOpen() && !s.Busy();
}

}  // namespace vess
