// The offset recording with five hand-made events, and scripted dialogs, for
// the statistics tests.
#pragma once

#include <gtest/gtest.h>

#include "recording/scripted_dialogs.h"
#include "recording/workspace.h"
#include "support/event_fixtures.h"

namespace vess::test {

// Five events at 10, 30, 20, 50, 45 ms (out of order on purpose), amplitudes
// -2, -4, -6, -8, -10 counts, groups 1, 2, 1, 2, 1.
class FiveEventsTest : public ::testing::Test {
protected:
    void SetUp() override {
        ws.recording = OffsetRecording(dir);
        ASSERT_TRUE(ws.recording);
        const float times[] = {10, 30, 20, 50, 45};
        for (int i = 0; i < 5; ++i) ws.events.Append(MakeEvent(times[i], -2 * (i + 1), uint8_t(i % 2 ? 2 : 1)));
    }
    TempDir dir;
    Workspace ws;
    ScriptedDialogs dialogs;
};

}  // namespace vess::test
