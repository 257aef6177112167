// A new installation's window and `vess detect` with no settings file make
// the same suggestion and find the same events in one recording.
#include <QLabel>

#include "app/gui_fixture.h"
#include "detection/detection_start.h"
#include "recording/event_file.h"
#include "recording/settings_file.h"
#include "support/run_vess.h"

namespace vess::test {
namespace {

TEST_F(GuiTest, NewInstallationWindowAndCommandLineFindTheSameEvents) {
    ws.settings = NewInstallationSettings();
    OpenSample();
    Key(Qt::Key_F11);
    ASSERT_TRUE(WaitFor([&] { return !window->NonStopRunning(); }, 20000));
    ASSERT_GT(ws.events.Count(), 10);

    const auto evt = dir / "cli.EVT";
    const VessRun run = RunVessCli("detect " + abfPath.string() + " --quiet --out " + evt.string(), dir / "err.txt");
    ASSERT_EQ(run.exitCode, 0) << run.err;
    const std::string said = run.err.substr(0, run.err.find('\n'));
    EXPECT_TRUE(said.starts_with("Settings suggested from this recording")) << said;
    EXPECT_TRUE(said.ends_with(DetectionSettingsText(ws))) << said << "\n" << DetectionSettingsText(ws);
    EXPECT_EQ(ReadEventFile(evt).records, ws.events.Records());
}

}  // namespace
}  // namespace vess::test
