// Opening a data file: the save question, each refusal of a damaged ABF 1 or
// ABF 2 file leaving what was open, the channel question and the list of
// channels offered, the refusal of a floating-point file (which names the
// channels so that the user knows what to save again as integers), and the
// screen length of a new installation.
#include <gtest/gtest.h>

#include <fstream>
#include <functional>

#include "recording/abf2_layout.h"
#include "recording/abf_layout.h"
#include "recording/abf_writer.h"
#include "recording/detection_inputs.h"
#include "recording/le_bytes.h"
#include "recording/open_recording.h"
#include "recording/rate_defaults.h"
#include "recording/scripted_dialogs.h"
#include "recording/settings_file.h"
#include "recording/texts.h"
#include "support/abf2_bytes.h"
#include "support/test_recording.h"

namespace vess {
namespace {

using test::TempDir;
using Bytes = std::vector<uint8_t>;

template <class T>
void Set(Bytes& b, std::size_t offset, T value) { le::Put<T>(std::span<uint8_t>(b), offset, value); }

// A change of a valid file that sets one field.
template <class T>
std::function<void(Bytes&)> Put(std::size_t offset, T value) { return [=](Bytes& b) { Set<T>(b, offset, value); }; }

std::function<void(Bytes&)> Cut(std::size_t size) { return [=](Bytes& b) { b.resize(size); }; }

std::filesystem::path Save(const TempDir& dir, const std::string& name, const Bytes& bytes) {
    const auto p = dir / name;
    std::ofstream(p, std::ios::binary).write(reinterpret_cast<const char*>(bytes.data()), std::streamsize(bytes.size()));
    return p;
}

// A valid file of `channels` channels and `frames` frames as bytes.
Bytes ValidBytes(int channels = 1, int frames = 600) {
    AbfWriteLayout abfLayout = test::MakeAbfLayout(50.0);
    abfLayout.channels.resize(std::size_t(channels));
    Bytes bytes = BuildAbfHeader(abfLayout, frames);
    const std::size_t at = bytes.size();
    bytes.resize(at + std::size_t(frames * channels) * 2);
    for (int i = 0; i < frames * channels; ++i) Set<int16_t>(bytes, at + 2 * std::size_t(i), int16_t(i % 1000));
    return bytes;
}

Bytes ValidAbf2(int channels = 1) {
    test::Abf2Layout abfLayout;
    abfLayout.channels.resize(std::size_t(channels));
    for (int c = 0; c < channels; ++c) abfLayout.channels[std::size_t(c)].adcNum = int16_t(c);
    std::vector<int16_t> samples(std::size_t(600 * channels));
    for (std::size_t i = 0; i < samples.size(); ++i) samples[i] = int16_t(i % 1000);
    return test::Abf2Bytes(abfLayout, samples);
}

struct Corruption {
    const char* name;
    std::function<void(Bytes&)> apply;
    std::string_view caption, text;
};

class OpenDataFileTest : public ::testing::Test {
protected:
    TempDir dir;
    Workspace ws;
    ScriptedDialogs dialogs;
    const Recording* previous = nullptr;

    // A recording already open, with two events and a screen further on.
    void OpenPrevious() {
        ASSERT_TRUE(OpenDataFile(ws, Save(dir, "previous.abf", ValidBytes()), dialogs));
        EXPECT_TRUE(dialogs.Transcript().empty());  // one channel: opened on 0 without a question
        EXPECT_EQ(ws.recording->Channel(), 0);
        previous = ws.recording.get();
        ws.events.Append(EventRecord{.amplitude = 12});
        ws.events.Append(EventRecord{.amplitude = 12});
        ws.screenStartBlock = 2;
    }
    void ExpectPreviousKept() {
        EXPECT_EQ(ws.recording.get(), previous);
        EXPECT_EQ(ws.events.Count(), 2);
        EXPECT_EQ(ws.screenStartBlock, 2);
    }
    // Opens each corrupted copy of valid, declining to save the open events; a
    // damaged file's message starts with its text and goes on to name the file
    // and the fault; the previous recording stays open.
    void ExpectEachRefused(const Bytes& valid, std::span<const Corruption> cases) {
        OpenPrevious();
        for (const Corruption& c : cases) {
            SCOPED_TRACE(c.name);
            Bytes bytes = valid;
            c.apply(bytes);
            dialogs.ClearTranscript();
            dialogs.AnswerYesNo(false);
            EXPECT_FALSE(ShowFailure(dialogs, OpenDataFile(ws, Save(dir, "bad.abf", bytes), dialogs)));
            const auto messages = dialogs.Messages();
            ASSERT_EQ(messages.size(), 1u);
            EXPECT_EQ(messages[0].caption, c.caption);
            if (c.caption == texts::kDamagedAbfCaption) {
                EXPECT_EQ(messages[0].text.substr(0, c.text.size()), c.text);
                EXPECT_NE(messages[0].text.find("\n\nbad.abf: "), std::string::npos) << messages[0].text;
            } else {
                EXPECT_EQ(messages[0].text, c.text);
            }
            ExpectPreviousKept();
        }
        EXPECT_TRUE(dialogs.AllAnswersUsed());
    }
};

TEST_F(OpenDataFileTest, EachMalformedFileIsRefusedWithItsMessageAndChangesNothing) {
    using namespace abf;
    const std::string_view damaged = texts::kDamagedAbfCaption;
    const float nan = std::numeric_limits<float>::quiet_NaN(), inf = std::numeric_limits<float>::infinity();
    const std::string floatText = texts::NotIntegerText("0: IN 0 (pA)");  // the file's one channel
    const auto episodic = [](int32_t episodes, int32_t synchSize, int32_t synchBlock) {
        return [=](Bytes& b) {
            Set<int16_t>(b, kOperationMode, 1);
            Set<int32_t>(b, kActualEpisodes, episodes);
            Set<int32_t>(b, kSynchArraySize, synchSize);
            Set<int32_t>(b, kSynchArrayPtr, synchBlock);
        };
    };
    const Corruption cases[] = {
        {"signature ABF3", [](Bytes& b) { b[3] = '3'; }, texts::kNotAbfCaption, texts::kNotAbfText},
        {"empty file", Cut(0), texts::kNotAbfCaption, texts::kNotAbfText},
        {"floating point", Put<int16_t>(kDataFormat, 1), texts::kNotIntegerCaption, floatText},
        // Floating point wins over every other fault.
        {"floating point, truncated, no channels",
         [](Bytes& b) { Set<int16_t>(b, kDataFormat, 1); Set<int16_t>(b, kADCNumChannels, 0); b.resize(200); },
         texts::kNotIntegerCaption, texts::kNotIntegerText},
        {"shorter than the header", Cut(2047), damaged, texts::kTooShortText},
        {"no channels", Put<int16_t>(kADCNumChannels, 0), damaged, texts::kBadChannelCountText},
        {"17 channels", Put<int16_t>(kADCNumChannels, 17), damaged, texts::kBadChannelCountText},
        {"ADC 16 in the sequence", Put<int16_t>(kADCSamplingSeq, 16), damaged, texts::kBadSamplingSequenceText},
        {"zero interval", Put(kADCSampleInterval, 0.0f), damaged, texts::kBadIntervalText},
        {"NaN interval", Put(kADCSampleInterval, nan), damaged, texts::kBadIntervalText},
        // Intervals no digitiser can have.
        {"interval of 1e-30 us", Put(kADCSampleInterval, 1e-30f), damaged, texts::kBadIntervalText},
        {"interval of a day", Put(kADCSampleInterval, 8.64e10f), damaged, texts::kBadIntervalText},
        {"zero ADC range", Put(kADCRange, 0.0f), damaged, texts::kBadScalingText},
        {"zero resolution", Put<int32_t>(kADCResolution, 0), damaged, texts::kBadScalingText},
        {"zero signal gain", Put(kSignalGain, 0.0f), damaged, texts::kBadScalingText},
        {"NaN programmable gain", Put(kADCProgrammableGain, nan), damaged, texts::kBadScalingText},
        {"infinite instrument offset", Put(kInstrumentOffset, inf), damaged, texts::kBadScalingText},
        {"data pointer past the end", Put<int32_t>(kDataSectionPtr, 100000), damaged, texts::kBadDataPointerText},
        {"data pointer inside the header", Put<int32_t>(kDataSectionPtr, 1), damaged, texts::kBadDataPointerText},
        {"negative data pointer", Put<int32_t>(kDataSectionPtr, -12), damaged, texts::kBadDataPointerText},
        {"no samples stated", Put<int32_t>(kActualAcqLength, 0), damaged, texts::kBadAcqLengthText},
        {"negative length", Put<int32_t>(kActualAcqLength, -600), damaged, texts::kBadAcqLengthText},
        {"header only", Cut(kExtendedHeaderBytes + 1), damaged, texts::kBadAcqLengthText},
        {"tags past the end",
         [](Bytes& b) { Set<int32_t>(b, kNumTagEntries, 3); Set<int32_t>(b, kTagSectionPtr, 14); },
         damaged, texts::kBadTagPointerText},
        {"many tags",
         [](Bytes& b) { Set<int32_t>(b, kNumTagEntries, INT32_MAX); Set<int32_t>(b, kTagSectionPtr, 12); },
         damaged, texts::kBadTagPointerText},
        {"negative tag count", Put<int32_t>(kNumTagEntries, -1), damaged, texts::kBadTagPointerText},
        {"synch array past the end", episodic(2, 2, 100000), damaged, texts::kBadSynchSectionText},
        {"synch array longer than the sweeps", episodic(1, 50, 12), damaged, texts::kBadSynchSectionText},
    };
    ExpectEachRefused(ValidBytes(), cases);
}

TEST_F(OpenDataFileTest, DamagedAbf2SectionsAreRefusedWithTheirMessage) {
    using namespace abf2;
    const auto damaged = texts::kDamagedAbfCaption;
    const auto field = [](Section s, std::size_t f) { return SectionAt(s) + f; };
    constexpr std::size_t adc0 = test::kAbf2AdcBlock * kBlockBytes;
    const Corruption cases[] = {
        {"floating point, cut short", [](Bytes& b) { Set<int16_t>(b, kDataFormat, 1); b.resize(100); },
         texts::kNotIntegerCaption, texts::kNotIntegerText},
        {"shorter than the header", Cut(300), damaged, texts::kTooShortText},
        {"protocol section past the end", Put<uint32_t>(field(Section::Protocol, kSectionBlockIndex), 9000), damaged,
         texts::kBadProtocolSectionText},
        {"protocol entry too short to hold the resolution", Put<uint32_t>(field(Section::Protocol, kSectionBytes), 100),
         damaged, texts::kBadProtocolSectionText},
        {"ADC section past the end", Put<uint32_t>(field(Section::ADC, kSectionBlockIndex), 9000), damaged,
         texts::kBadAdcSectionText},
        {"ADC entries running past the end", Put<uint32_t>(field(Section::ADC, kSectionBytes), 0x7FFFFFFF), damaged,
         texts::kBadAdcSectionText},
        {"zero channels", Put<int64_t>(field(Section::ADC, kSectionEntries), 0), damaged, texts::kBadChannelCountText},
        {"17 channels", Put<int64_t>(field(Section::ADC, kSectionEntries), 17), damaged, texts::kBadChannelCountText},
        {"strings section past the end", Put<uint32_t>(field(Section::Strings, kSectionBlockIndex), 9000), damaged,
         texts::kBadStringsSectionText},
        {"unit index past the strings", Put<int32_t>(adc0 + kADCUnitsIndex, 4), damaged, texts::kBadStringIndexText},
        {"negative name index", Put<int32_t>(adc0 + kADCChannelNameIndex, -1), damaged, texts::kBadStringIndexText},
        {"ADC 16", Put<int16_t>(adc0 + kADCNum, 16), damaged, texts::kBadSamplingSequenceText},
        {"zero interval", Put(kBlockBytes + kADCSequenceInterval, 0.0f), damaged, texts::kBadIntervalText},
        {"zero resolution", Put<int32_t>(kBlockBytes + kADCResolution, 0), damaged, texts::kBadScalingText},
        {"data section past the end", Put<uint32_t>(field(Section::Data, kSectionBlockIndex), 9000), damaged,
         texts::kBadDataPointerText},
        {"data section inside the header", Put<uint32_t>(field(Section::Data, kSectionBlockIndex), 0), damaged,
         texts::kBadDataPointerText},
        {"32-bit samples", Put<uint32_t>(field(Section::Data, kSectionBytes), 4), damaged, texts::kBadDataPointerText},
        {"no samples", Put<int64_t>(field(Section::Data, kSectionEntries), 0), damaged, texts::kBadAcqLengthText},
        {"tags past the end",
         [&](Bytes& b) {
             Set<uint32_t>(b, field(Section::Tag, kSectionBlockIndex), 9000);
             Set<uint32_t>(b, field(Section::Tag, kSectionBytes), 64);
             Set<int64_t>(b, field(Section::Tag, kSectionEntries), 2);
         },
         damaged, texts::kBadTagPointerText},
    };
    ExpectEachRefused(ValidAbf2(), cases);
    Bytes bytes = ValidAbf2(2);
    Set<int16_t>(bytes, adc0 + 128 + kADCNum, 0);  // two channels on one ADC
    AbfError error{};
    std::string detail;
    EXPECT_FALSE(Recording::FromBytes(bytes, "dup.abf", &error, &detail));
    EXPECT_EQ(error, AbfError::DuplicateAdc);
    EXPECT_EQ(detail, "channels 0 and 1 both sample ADC 0");
    EXPECT_EQ(RefusalFor(error, "dup.abf", detail).text, texts::WithReason(texts::kDuplicateAdcText, "dup.abf", detail));
}

TEST_F(OpenDataFileTest, AMissingFileIsReportedByName) {
    OpenPrevious();
    dialogs.AnswerYesNo(false);
    EXPECT_FALSE(ShowFailure(dialogs, OpenDataFile(ws, dir / "gone.abf", dialogs)));
    ASSERT_EQ(dialogs.Messages().size(), 1u);
    EXPECT_EQ(dialogs.Messages()[0].caption, texts::kCannotOpenCaption);
    EXPECT_NE(dialogs.Messages()[0].text.find("gone.abf"), std::string::npos);
    ExpectPreviousKept();
}

TEST_F(OpenDataFileTest, ALengthPastTheEndOfTheFileIsClippedToTheFramesPresent) {
    std::vector<uint8_t> bytes = ValidBytes(2, 600);
    Set<int32_t>(bytes, abf::kActualAcqLength, 2 * 5000);
    bytes.resize(bytes.size() - 3);  // and a partial last frame
    dialogs.AnswerInput("1");
    ASSERT_TRUE(OpenDataFile(ws, Save(dir, "cut.abf", bytes), dialogs));
    EXPECT_EQ(ws.recording->PointsPerChannel(), 599);
    EXPECT_EQ(ws.recording->BlockCount(), 2);  // 599 / 256 = 2.34
    EXPECT_EQ(ws.recording->Sample(598), int16_t((598 * 2 + 1) % 1000));
    EXPECT_EQ(ws.recording->Sample(100000), ws.recording->Sample(598));
}

TEST_F(OpenDataFileTest, SavePreviousEventsQuestionAndItsAnswers) {
    const auto startedIn = std::filesystem::current_path();
    OpenPrevious();
    const auto next = Save(dir, "next.abf", ValidBytes());
    int saves = 0;
    // Yes, but the save does not happen: the opening stops.
    dialogs.AnswerYesNo(true);
    EXPECT_FALSE(OpenDataFile(ws, next, dialogs, [&] { ++saves; return CommandResult::Cancelled(); }));
    EXPECT_EQ(saves, 1);
    ExpectPreviousKept();
    EXPECT_EQ(dialogs.Transcript().back().text,
              "There are 2 events analysed for previous.abf.  Do you want to save the event data?");
    // Yes and saved: the new file replaces the old, events and history emptied.
    ws.history.Checkpoint(ws.events, "edit");
    dialogs.AnswerYesNo(true);
    EXPECT_TRUE(OpenDataFile(ws, next, dialogs, [&] { ++saves; return CommandResult::Ok(); }));
    EXPECT_EQ(saves, 2);
    EXPECT_EQ(ws.recording->FileName(), "next.abf");
    EXPECT_TRUE(ws.events.Empty());
    EXPECT_FALSE(ws.history.CanUndo());
    EXPECT_FALSE(ws.history.Modified());
    EXPECT_EQ(ws.screenStartBlock, 0);
    // The pickers now start in the new file's folder; the process's own
    // working folder is left alone.
    EXPECT_EQ(ws.Folder(), dir.Path());
    EXPECT_EQ(std::filesystem::current_path(), startedIn);
    // No events: no question.
    EXPECT_TRUE(OpenDataFile(ws, next, dialogs, [&] { ++saves; return CommandResult::Ok(); }));
    EXPECT_EQ(saves, 2);
    EXPECT_TRUE(dialogs.AllAnswersUsed());
}

TEST_F(OpenDataFileTest, ChannelQuestionAsksAgainUntilAValidAnswerOrCancel) {
    const auto three = Save(dir, "three.abf", ValidBytes(3));
    dialogs.AnswerInput("3").AnswerInput("one").AnswerInput("-1").AnswerInput(" 2 ");
    ASSERT_TRUE(OpenDataFile(ws, three, dialogs));
    EXPECT_EQ(ws.recording->Channel(), 2);
    EXPECT_EQ(ws.recording->Sample(1), 5);  // frame 1, position 2 = sample 5
    const auto& t = dialogs.Transcript();
    ASSERT_EQ(t.size(), 7u);  // four questions, three explanations
    EXPECT_EQ(t[0].text, "This file has 3 input channels, starting from channel 0.  Please enter "
                         "the channel number to open.");
    EXPECT_EQ(t[1].text, texts::InvalidChannelText("3", 3));
    EXPECT_EQ(t[3].text, texts::InvalidChannelText("one", 3));

    // Cancel, or an empty answer, keeps the recording that was open.
    const Recording* open = ws.recording.get();
    dialogs.AnswerInput(std::nullopt).AnswerInput("");
    EXPECT_FALSE(OpenDataFile(ws, three, dialogs));
    EXPECT_FALSE(OpenDataFile(ws, three, dialogs));
    EXPECT_EQ(ws.recording.get(), open);
    EXPECT_TRUE(dialogs.AllAnswersUsed());
}

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
    layout.channels = {{.name = "Im", .units = "pA"}, {.name = "Vm", .units = "mV"}, {.name = "", .units = "V"}};
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
    return Save(dir, floating ? "float.abf" : "three.abf", bytes);
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
