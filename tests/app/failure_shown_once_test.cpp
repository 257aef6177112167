// Commands that fail or are cancelled, driven through the main window's
// menus: a failure is shown once under its caption (the window shows it, the
// command does not), and a cancel shows nothing.
#include <QAction>

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "detection/texts.h"
#include "gui_fixture.h"
#include "signal/tool_texts.h"
#include "statistics/texts.h"

namespace vess::test {
namespace {

class FailureShownOnce : public GuiTest {};

TEST_F(FailureShownOnce, FailuresOnceUnderTheirCaptionCancelsSilently) {
    OpenSample();
    const std::vector<float> three = {1, 2, 3}, two = {1, 2};
    struct Case {
        const char* action;
        std::function<void()> prepare;  // answers and state before the action
        std::optional<std::string> caption;  // nothing: a cancel, no message
    };
    const Case cases[] = {
        {"menu_JumpTime", [&] { dialogs.AnswerInput("abc"); }, "Jump To"},
        {"menu_JumpTime", [&] { dialogs.AnswerInput(std::nullopt); }, std::nullopt},
        {"menu_JumpEvent", [] {}, "Jump To Event Number"},  // no events yet
        {"menu_SynchArray", [] {}, std::string(tool_texts::kSynchCaption)},  // one sweep
        {"menu_RunningAverage", [&] { ws.array1.Assign(three); ws.array2.Assign(two); },
         std::string(stats_texts::kEqualCountsCaption)},
        {"menu_RunningAverage", [&] { ws.array2.Assign(three); dialogs.AnswerInput(std::nullopt); }, std::nullopt},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.action);
        dialogs.ClearTranscript();
        c.prepare();
        QAction* action = window->Action(c.action);
        ASSERT_NE(action, nullptr);
        ASSERT_TRUE(action->isEnabled());
        action->trigger();
        const auto messages = dialogs.Messages();
        ASSERT_EQ(messages.size(), c.caption ? 1u : 0u);
        if (c.caption) { EXPECT_EQ(messages[0].caption, *c.caption); }
        EXPECT_TRUE(dialogs.AllAnswersUsed());
    }
}

// Periods the recording cannot use (1 us, below one sample): this window, the
// next one and the non-stop run each show the refusal once and store nothing.
TEST_F(FailureShownOnce, RefusedParametersOncePerPress) {
    OpenSample();
    ws.params().PeriodToSearchMax = 1;
    for (const int key : {Qt::Key_F9, Qt::Key_F10, Qt::Key_F11}) {
        SCOPED_TRACE(key);
        dialogs.ClearTranscript();
        Key(key);
        // The non-stop run ends on a timer tick, and shows the refusal then.
        ASSERT_TRUE(WaitFor([&] { return !window->NonStopRunning() && !dialogs.Messages().empty(); }));
        QTest::qWait(50);  // a second message must not follow
        const auto messages = dialogs.Messages();
        ASSERT_EQ(messages.size(), 1u);
        EXPECT_EQ(std::pair(messages[0].caption, messages[0].text),
                  std::pair(std::string(detection_texts::kImproperParametersCaption),
                            std::string(detection_texts::kImproperParametersText)));
        EXPECT_EQ(ws.events.Count(), 0);
    }
}

}  // namespace
}  // namespace vess::test
