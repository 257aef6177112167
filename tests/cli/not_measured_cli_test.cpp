// Numbers that are right or refused, on the command line: values that were
// not measured in the tests, the arrays of a channel with an offset, extreme
// bin sizes, stretches and margins outside the recording, and parameters no
// recording can mean.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "detection/texts.h"
#include "support/trec_cli.h"

namespace vess {
namespace {

using test::ExpectRefused;

class NotMeasuredCli : public test::VessCliTest {
protected:
    // The events of a real recording, detected with the stored defaults, in
    // events.EVT beside a link to the recording.
    std::string Detect(const std::string& abf, const std::string& options = "") {
        const auto link = dir / std::filesystem::path(abf).filename();
        std::filesystem::create_symlink(test::SharedData() / abf, link);
        const auto run = Run("detect '" + link.string() + "'" + options + " --quiet --out " + P("events.EVT"));
        EXPECT_EQ(run.exitCode, 0) << run.err;
        return P("events.EVT");
    }
};

// 171116sh_0020_saved.abf: some events never fall back to half amplitude and
// keep a half-width that is not measured. A sample compared with itself
// differs by nothing: t 0, p 1, and the count left out is said.
TEST_F(NotMeasuredCli, HalfWidthAgainstItselfIsNoDifference) {
    VESS_REQUIRE_SHARED_DATA();
    const std::string hw = Detect("abf1/171116sh_0020_saved.abf") + ":half-width";
    for (const char* test : {"ttest-equal", "ttest-paired"}) {
        const auto run = Run(std::string("stats ") + test + " " + hw + " " + hw + " --json");
        ASSERT_EQ(run.exitCode, 0) << run.err;
        const auto j = nlohmann::json::parse(run.out);
        EXPECT_EQ(j["t Stat"].get<double>(), 0) << test;
        EXPECT_EQ(j["P value: two-tail"].get<double>(), 1) << test;
        EXPECT_TRUE(test::Contains(j["note"].get<std::string>(), "that were not measured were left out"));
    }
}

// multichannelAbf1WithTags.abf channel 1 has an instrument offset. Its event
// grid shows Amplitude 9.994296 mV and Baseline -49.983704 mV for the first
// event (the grid's six-decimal cells); the arrays take exactly those values
// (they used to read 10.0004 and -49.989807).
TEST_F(NotMeasuredCli, ArraysTakeTheGridsValuesOnAChannelWithAnOffset) {
    VESS_REQUIRE_SHARED_DATA();
    const std::string evt = Detect("abf1/multichannelAbf1WithTags.abf", " --channel 1");
    for (const auto& [field, first] : {std::pair{":amplitude", "9.994296\n"}, {":baseline", "-49.983704\n"}}) {
        const auto run = Run("array " + evt + field);
        EXPECT_EQ(run.exitCode, 0) << run.err;
        EXPECT_EQ(run.out.substr(0, run.out.find('\n') + 1), first);
    }
}

// Values no recording can mean exit with status 2 and name themselves; a
// settings file with a screen of 2^23 blocks used to overflow the screen's
// point count, and a tiny bin used to saturate into one bin holding all
// three values.
TEST_F(NotMeasuredCli, RefusalsInsteadOfWrongNumbers) {
    const std::string three = Put("b.txt", "100\n200\n300\n");
    for (const char* bin : {"1e-17", "inf"}) EXPECT_EQ(Run("hist " + three + " --bin " + bin).exitCode, 1) << bin;
    EXPECT_EQ(Run("correlogram " + three + " --bin inf").exitCode, 1);
    test::MakeRecording(dir / "flat.abf", std::vector<int16_t>(20000, 0), 50, 1.0f);  // 1 s
    const std::string flat = P("flat.abf"), stretch = "--from and --to must give a stretch from 0 to 1 s";
    ASSERT_EQ(Run("noise " + flat + " --from 0.2 --to 0.5").exitCode, 0);
    const std::pair<std::string, std::string> refused[] = {
        {"noise " + flat + " --from -10 --to -5", stretch},
        {"noise " + flat + " --from 0.5 --to 0.2", stretch},
        {"noise " + flat + " --from 0 --to 5", stretch},
        {"noise " + flat + " --from 0.2 --to 0.2", stretch},
        {"eventfree " + flat + " --out " + P("free.abf") + " --margin 1e20", "the margin must be a number of ms from 0"},
        {"detect " + flat + " --set NumberPointsPeak=32767", "--set: NumberPointsPeak is 32767, outside 1 to 255"},
        {"detect " + flat + " --set PeriodFindDecayTime=2000000000", "PeriodFindDecayTime is 2000000000 us"},
        {"detect " + flat + " --settings " + Put("big.SET", "[Display]\nDisplayTotalNumberBlockPerScreen=8388608\n"),
         "DisplayTotalNumberBlockPerScreen=8388608: outside 1 to 4096"},
        {"detect " + flat + " --settings " + P("none.SET"), "No such file or directory"},
    };
    for (const auto& [args, message] : refused) {
        SCOPED_TRACE(args);
        ExpectRefused(Run(args), 2, message);
    }
    EXPECT_NE(Run("detect " + flat + " --blocks-per-screen 8388608").exitCode, 0);
    // Periods the recording cannot use (1 us, below one sample): status 3 and
    // the message once on stderr.
    const std::string improper = std::string(detection_texts::kImproperParametersCaption) + ": " +
                                 detection_texts::kImproperParametersText + "\n";
    for (const std::string& run : {"detect " + flat + " --out " + P("flat.EVT"), "eventfree " + flat + " --out " + P("free.abf")}) {
        const auto r = Run(run + " --set PeriodToSearchMax=1");
        EXPECT_EQ(r.exitCode, 3) << run;
        EXPECT_TRUE(r.err.find(improper) != std::string::npos && r.err.find(improper) == r.err.rfind(improper)) << r.err;
    }
    EXPECT_FALSE(std::filesystem::exists(dir / "free.abf") || std::filesystem::exists(dir / "flat.EVT"));
}

}  // namespace
}  // namespace vess
