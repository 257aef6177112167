// "Blocks to Analyse" of a million asked for every trace at full length (the
// window aborted with bad_alloc and took unsaved events with it): the window
// refuses with the memory needed, keeps the events, and displays again once
// the length fits.
#include "app/group_window_fixture.h"

namespace vess::test {
namespace {

using GroupBudgetTest = GroupWindowFixture;

TEST_F(GroupBudgetTest, AMillionBlocksAreRefusedWithTheMemoryNeeded) {
    GroupSampleEvents();
    const int32_t events = ws.events.Count();
    dialogs.ClearTranscript();
    Display("Individual", "1000000");
    ASSERT_EQ(dialogs.Messages().size(), 1u);
    EXPECT_NE(dialogs.Messages()[0].text.find("GB of memory, more than the 1 GB allowed"), std::string::npos)
        << dialogs.Messages()[0].text;
    EXPECT_TRUE(w->Traces().Empty());
    EXPECT_EQ(ws.events.Count(), events);

    Display("Individual", "1");
    EXPECT_EQ(w->Traces().count, events);
}

}  // namespace
}  // namespace vess::test
