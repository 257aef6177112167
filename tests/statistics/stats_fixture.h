// A workspace with the offset recording and five hand-made events for the
// statistics tests.
#pragma once

#include <memory>
#include <vector>

#include <gtest/gtest.h>

#include "recording/scripted_dialogs.h"
#include "recording/workspace.h"
#include "support/event_fixtures.h"

namespace vess::test {

// Five events at 10, 30, 20, 50, 45 ms (out of order on purpose), amplitudes
// -2, -4, -6, -8, -10 counts, groups 1, 2, 1, 2, 1.
inline void AddFiveEvents(Workspace& ws) {
    const float times[] = {10, 30, 20, 50, 45};
    const uint8_t groups[] = {1, 2, 1, 2, 1};
    for (int i = 0; i < 5; ++i) ws.events.Append(MakeEvent(times[i], -2 * (i + 1), groups[i]));
}

// The offset recording with the five events, and scripted dialogs.
class FiveEventsTest : public ::testing::Test {
protected:
    void SetUp() override {
        ws.recording = OffsetRecording(dir);
        ASSERT_TRUE(ws.recording);
        AddFiveEvents(ws);
    }
    TempDir dir;
    Workspace ws;
    ScriptedDialogs dialogs;
};

}  // namespace vess::test
