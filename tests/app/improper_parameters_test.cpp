// Parameters the recording cannot use, pressed from the keyboard: the
// analysis of this window, of the next one and the non-stop run each show
// the refusal once and store nothing.
#include "detection/texts.h"
#include "gui_fixture.h"

namespace vess::test {
namespace {

class ImproperParameters : public GuiTest {};

TEST_F(ImproperParameters, EachRefusedPressShowsTheMessageOnce) {
    OpenSample();
    ws.params().PeriodToSearchMax = 1;  // 1 us: below one sample
    for (const int key : {Qt::Key_F9, Qt::Key_F10, Qt::Key_F11}) {
        SCOPED_TRACE(key);
        dialogs.ClearTranscript();
        Key(key);
        // The non-stop run ends on a timer tick: wait for it, then a little
        // longer for a second message that must not come.
        ASSERT_TRUE(WaitFor([&] { return !window->NonStopRunning() && !dialogs.Messages().empty(); }));
        QTest::qWait(50);
        const auto messages = dialogs.Messages();
        ASSERT_EQ(messages.size(), 1u);
        EXPECT_EQ(messages[0].caption, detection_texts::kImproperParametersCaption);
        EXPECT_EQ(messages[0].text, detection_texts::kImproperParametersText);
        EXPECT_EQ(ws.events.Count(), 0);
    }
}

}  // namespace
}  // namespace vess::test
