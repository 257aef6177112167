// The one result of commands: which outcomes a window shows, and what a
// command with a value gives its caller.
#include <gtest/gtest.h>

#include <optional>
#include <stdexcept>
#include <string>

#include "recording/command_result.h"
#include "recording/scripted_dialogs.h"

namespace vess {
namespace {

// Each outcome as a window ends it: only a failure is shown, under its own
// caption, and only a command that was done counts as done.
TEST(CommandResult, OnlyAFailureIsShownAndOnlyOkIsDone) {
    const struct {
        const char* name;
        CommandResult result;
        bool ok, failed, cancelled;
    } cases[] = {
        {"ok", CommandResult::Ok(), true, false, false},
        {"empty writer error", CommandResult::FromError("File Error", ""), true, false, false},
        {"writer error", CommandResult::FromError("File Error", "disk full"), false, true, false},
        {"failed", CommandResult::Failed("Not a Parameter File", "not ours"), false, true, false},
        {"cancelled", CommandResult::Cancelled(), false, false, true},
    };
    for (const auto& c : cases) {
        ScriptedDialogs dialogs;
        EXPECT_EQ(ShowFailure(dialogs, c.result), c.ok) << c.name;
        EXPECT_EQ(bool(c.result), c.ok) << c.name;
        EXPECT_EQ(c.result.failed(), c.failed) << c.name;
        EXPECT_EQ(c.result.cancelled(), c.cancelled) << c.name;
        ASSERT_EQ(dialogs.Messages().size(), c.failed ? 1u : 0u) << c.name;
        if (c.failed) {
            EXPECT_EQ(dialogs.Messages()[0].caption, c.result.caption()) << c.name;
            EXPECT_EQ(dialogs.Messages()[0].text, c.result.message()) << c.name;
            EXPECT_FALSE(c.result.message().empty()) << c.name;
        }
    }
}

// A value means done; a failure keeps its caption and message; an ok status
// without a value cannot pass for done, and its value cannot be read.
TEST(CommandResult, OutcomeCarriesTheValueOnlyWhenDone) {
    const Outcome<int> done(7);
    ASSERT_TRUE(done.ok());
    EXPECT_EQ(done.value(), 7);

    const Outcome<int> failed(CommandResult::Failed("Damaged File", "x.EVT: too short"));
    EXPECT_TRUE(failed.failed());
    EXPECT_EQ(failed.caption(), "Damaged File");
    EXPECT_EQ(failed.message(), "x.EVT: too short");
    EXPECT_THROW(failed.value(), std::bad_optional_access);

    const Outcome<int> valueless(CommandResult::Ok());
    EXPECT_FALSE(valueless.ok());
    EXPECT_TRUE(valueless.cancelled());
    EXPECT_THROW(valueless.value(), std::bad_optional_access);
}

}  // namespace
}  // namespace vess
