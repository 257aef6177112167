// Parameters the recording cannot use on the command line: detect and
// eventfree exit with status 3, say why once on stderr and write nothing.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "detection/texts.h"
#include "recording/synth.h"
#include "support/trec_cli.h"

namespace vess {
namespace {

class VessImproperParameters : public test::VessCliTest {};

std::size_t Occurrences(const std::string& text, const std::string& part) {
    std::size_t n = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++n;
    return n;
}

TEST_F(VessImproperParameters, ExitThreeWithTheMessageOnceAndNoOutput) {
    ASSERT_EQ(WriteSynthetic(dir / "syn.abf", Synthesise({.seconds = 2, .seed = 3})), "");
    const std::string message = std::string(detection_texts::kImproperParametersCaption) + ": " +
                                detection_texts::kImproperParametersText + "\n";
    const struct {
        std::string command;
        const char* output;
    } cases[] = {{"detect " + P("syn.abf") + " --out " + P("syn.EVT"), "syn.EVT"},
                 {"eventfree " + P("syn.abf") + " --out " + P("free.abf"), "free.abf"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.command);
        const auto run = Run(c.command + " --set PeriodToSearchMax=1");  // 1 us: below one sample
        EXPECT_EQ(run.exitCode, 3);
        EXPECT_EQ(Occurrences(run.err, message), 1u) << run.err;
        EXPECT_FALSE(std::filesystem::exists(dir / c.output));
    }
}

}  // namespace
}  // namespace vess
