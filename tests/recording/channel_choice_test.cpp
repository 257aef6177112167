// What the user is told about a file's channels: the list offered when a
// file has several, and the refusal of a floating-point file, which names
// the channels so that the user knows what to save again as integers.
#include <fstream>

#include <gtest/gtest.h>

#include "recording/abf_layout.h"
#include "recording/detection_inputs.h"
#include "recording/le_bytes.h"
#include "recording/open_recording.h"
#include "recording/rate_defaults.h"
#include "recording/scripted_dialogs.h"
#include "recording/settings_file.h"
#include "recording/texts.h"
#include "support/test_recording.h"

namespace vess {
namespace {

// Scripted answers, keeping the items each list offered.
class ListRecorder : public ScriptedDialogs {
public:
    std::optional<std::string> Choose(const std::string& caption, const std::string& prompt,
                                      const std::vector<std::string>& items, int initial) override {
        offered.push_back(items);
        initials.push_back(initial);
        return ScriptedDialogs::Choose(caption, prompt, items, initial);
    }
    std::vector<std::vector<std::string>> offered;
    std::vector<int> initials;
};

// Three channels whose ADCs are not in position order (ADC 3, 0, 5): each
// position's name and unit come from its own ADC.
std::filesystem::path WriteThreeChannels(const test::TempDir& dir, bool floating) {
    AbfWriteLayout layout = test::MakeAbfLayout(100.0);
    layout.channels = {AbfChannelLayout{}, AbfChannelLayout{}, AbfChannelLayout{}};
    layout.channels[0].name = "Im";
    layout.channels[0].units = "pA";
    layout.channels[1].name = "Vm";
    layout.channels[1].units = "mV";
    layout.channels[2].name = "";
    layout.channels[2].units = "V";
    std::vector<uint8_t> bytes = BuildAbfHeader(layout, 512);
    const std::span<uint8_t> head(bytes);
    const int16_t adcs[] = {3, 0, 5};
    for (std::size_t p = 0; p < 3; ++p) {
        const auto adc = std::size_t(adcs[p]);
        le::Put<int16_t>(head, abf::kADCSamplingSeq + 2 * p, adcs[p]);
        le::PutText(head, abf::kADCChannelName + adc * abf::kADCChannelNameChars,
                    abf::kADCChannelNameChars, layout.channels[p].name);
        le::PutText(head, abf::kADCUnits + adc * abf::kADCUnitsChars, abf::kADCUnitsChars,
                    layout.channels[p].units);
        for (std::size_t offset : {abf::kADCProgrammableGain, abf::kInstrumentScaleFactor, abf::kSignalGain})
            le::Put<float>(head, offset + adc * 4, le::Get<float>(head, offset));
    }
    if (floating) le::Put<int16_t>(head, abf::kDataFormat, 1);
    bytes.resize(bytes.size() + 512 * 3 * 2, 0);
    const auto path = dir / (floating ? "float.abf" : "three.abf");
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()), std::streamsize(bytes.size()));
    return path;
}

TEST(ChannelChoice, OffersEachChannelWithNameAndUnitFirstSelected) {
    test::TempDir dir;
    Workspace ws;
    ListRecorder dialogs;
    dialogs.AnswerInput("2");
    ASSERT_TRUE(OpenDataFile(ws, WriteThreeChannels(dir, false), dialogs));
    EXPECT_EQ(ws.recording->Channel(), 2);
    EXPECT_EQ(ws.recording->Units(), "V");
    ASSERT_EQ(dialogs.offered.size(), 1u);
    EXPECT_EQ(dialogs.offered[0], (std::vector<std::string>{"0: Im (pA)", "1: Vm (mV)", "2: channel 2 (V)"}));
    EXPECT_EQ(dialogs.initials[0], 0);
    // Dialogs without a list (scripted, command line) still take the number.
    EXPECT_EQ(dialogs.Transcript()[0].kind, DialogEntry::Kind::Input);
    EXPECT_EQ(dialogs.Transcript()[0].text, texts::ChannelPrompt(3));
}

TEST(FloatingPointRefusal, NamesTheChannelsOnEveryWayIn) {
    test::TempDir dir;
    const auto path = WriteThreeChannels(dir, true);
    const std::string expected = texts::NotIntegerText("0: Im (pA), 1: Vm (mV), 2: channel 2 (V)");
    EXPECT_NE(expected, texts::kNotIntegerText);

    Workspace ws;
    ScriptedDialogs dialogs;
    EXPECT_FALSE(ShowFailure(dialogs, OpenDataFile(ws, path, dialogs)));
    ASSERT_EQ(dialogs.Messages().size(), 1u);
    EXPECT_EQ(dialogs.Messages()[0].caption, texts::kNotIntegerCaption);
    EXPECT_EQ(dialogs.Messages()[0].text, expected);
    EXPECT_EQ(OpenRecordingOnChannel(path, 0, ws).message(), path.string() + ": " + expected);
}

TEST(FloatingPointRefusal, RealAbf2FileNamesItsChannels) {
    VESS_REQUIRE_SHARED_DATA();
    Workspace ws;
    ScriptedDialogs dialogs;
    EXPECT_FALSE(ShowFailure(dialogs, OpenDataFile(ws, test::SharedData() / "abf2/SWHLab_gain_float32.abf", dialogs)));
    ASSERT_EQ(dialogs.Messages().size(), 1u);
    const std::string text = dialogs.Messages()[0].text;
    EXPECT_EQ(text.rfind(std::string(texts::kNotIntegerText), 0), 0u);
    EXPECT_NE(text.find("The file holds these channels: 0: "), std::string::npos) << text;
}

// The desktop program without a settings file shows screens of about half a
// second and group stretches of about 50 ms at the recording's rate; a
// settings file keeps its 4 blocks.
TEST(RateDefaults, NewInstallationLengthsFollowTheRate) {
    const struct {
        double intervalUs;
        int32_t screenBlocks;
        double groupBlocks;
    } rates[] = {
        {50, 39, 4},        // 20 kHz: 10000 points = 39.06 blocks; 1000 = 3.9
        {10, 195, 20},      // 100 kHz: 50000 = 195.3; 5000 = 19.53
        {100, 20, 2},       // 10 kHz: 5000 = 19.53; 500 = 1.95
        {1000, 2, 0.25},    // 1 kHz: 500 = 1.95; 50 points = 0.195 block
        {20000, 1, 0.0625}, // 50 Hz: at least one block, at most 1/16 of one
        {0.01, 4096, 4096}, // 100 MHz: the longest screen
    };
    for (const auto& r : rates) {
        EXPECT_EQ(BlocksNearest(kNewInstallationScreenMs, r.intervalUs), r.screenBlocks) << r.intervalUs;
        EXPECT_EQ(GroupBlocks(kNewInstallationGroupStretchMs, r.intervalUs), r.groupBlocks) << r.intervalUs;
    }

    test::TempDir dir;
    const std::vector<int16_t> samples(100 * 256, 0);
    const auto path = dir / "rate.abf";
    ASSERT_NE(test::MakeRecording(path, samples, 50), nullptr);
    for (const bool fresh : {true, false}) {
        Workspace ws;
        const auto ini = dir / "Vessanto.ini";
        if (!fresh) std::ofstream(ini) << "[Display]\n";
        ws.settings = LoadIniSettings(ini);
        ws.settings.lengthsFollowRate = !std::filesystem::exists(ini);  // as the desktop program starts
        ScriptedDialogs dialogs;
        ASSERT_TRUE(OpenDataFile(ws, path, dialogs));
        EXPECT_EQ(ws.BlocksPerScreen(), fresh ? 39 : 4) << fresh;
    }
}

}  // namespace
}  // namespace vess
