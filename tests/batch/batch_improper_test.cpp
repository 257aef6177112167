// A batch over a recording its parameters do not suit: the row lists the
// refusal and no event file is written.
#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>

#include "batch/batch_run.h"
#include "batch/texts.h"
#include "detection/texts.h"
#include "recording/synth.h"
#include "support/test_recording.h"

namespace vess {
namespace {

TEST(BatchImproperParameters, TheRowListsTheRefusalAndNoEventFileIsWritten) {
    test::TempDir dir;
    const std::filesystem::path abf = dir / "one.abf";
    ASSERT_EQ(WriteSynthetic(abf, Synthesise({.seconds = 1, .seed = 3})), "");
    BatchSetup setup;
    setup.settings.analysis.PeriodToSearchMax = 1;  // 1 us: below one sample
    const std::atomic<bool> stop{false};
    const BatchItem item = PlanBatch({abf}, {})[0];
    const BatchRow row = AnalyseRecording(item, setup, {}, stop);
    EXPECT_EQ(row.errors, std::string(detection_texts::kImproperParametersCaption) + ": " +
                              detection_texts::kImproperParametersText + "; " +
                              std::string(batch_texts::kImproperParameters));
    EXPECT_FALSE(row.analysed);
    EXPECT_TRUE(row.eventFile.empty() && !std::filesystem::exists(item.eventFile));
}

}  // namespace
}  // namespace vess
