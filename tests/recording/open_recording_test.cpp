// Opening a data file: the save question, each refusal leaving what was open, the channel question.
#include <gtest/gtest.h>

#include "recording/abf_layout.h"
#include "recording/abf_writer.h"
#include "recording/open_recording.h"
#include "recording/scripted_dialogs.h"
#include "recording/texts.h"
#include "refusal_cases.h"
#include "support/test_recording.h"

namespace vess {
namespace {

using test::TempDir;

// A valid file of `channels` channels and `frames` frames as bytes.
std::vector<uint8_t> ValidBytes(int channels = 1, int frames = 600) {
    AbfWriteLayout abfLayout = test::MakeAbfLayout(50.0);
    abfLayout.channels.resize(std::size_t(channels));
    std::vector<uint8_t> bytes = BuildAbfHeader(abfLayout, frames);
    const std::size_t at = bytes.size();
    bytes.resize(at + std::size_t(frames * channels) * 2);
    for (int i = 0; i < frames * channels; ++i)
        le::Put<int16_t>(std::span<uint8_t>(bytes), at + 2 * std::size_t(i), int16_t(i % 1000));
    return bytes;
}

using test::Save;
using test::Set;

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
        EventRecord e;
        e.amplitude = 12;
        ws.events.Append(e);
        ws.events.Append(e);
        ws.screenStartBlock = 2;
    }
    void ExpectPreviousKept() {
        EXPECT_EQ(ws.recording.get(), previous);
        EXPECT_EQ(ws.events.Count(), 2);
        EXPECT_EQ(ws.screenStartBlock, 2);
    }
};

TEST_F(OpenDataFileTest, EachMalformedFileIsRefusedWithItsMessageAndChangesNothing) {
    OpenPrevious();
    using namespace abf;
    const std::string_view damaged = texts::kDamagedAbfCaption;
    const std::string floatText = texts::NotIntegerText("0: IN 0 (pA)");  // the file's one channel
    const test::Corruption cases[] = {
        {"signature ABF3", [](auto& b) { b[3] = '3'; }, texts::kNotAbfCaption, texts::kNotAbfText},
        {"empty file", [](auto& b) { b.clear(); }, texts::kNotAbfCaption, texts::kNotAbfText},
        {"floating point", [](auto& b) { Set<int16_t>(b, kDataFormat, 1); },
         texts::kNotIntegerCaption, floatText},
        // Floating point wins over every other fault.
        {"floating point, truncated, no channels",
         [](auto& b) { Set<int16_t>(b, kDataFormat, 1); Set<int16_t>(b, kADCNumChannels, 0);
                       b.resize(200); },
         texts::kNotIntegerCaption, texts::kNotIntegerText},
        {"shorter than the header", [](auto& b) { b.resize(2047); }, damaged, texts::kTooShortText},
        {"no channels", [](auto& b) { Set<int16_t>(b, kADCNumChannels, 0); }, damaged,
         texts::kBadChannelCountText},
        {"17 channels", [](auto& b) { Set<int16_t>(b, kADCNumChannels, 17); }, damaged,
         texts::kBadChannelCountText},
        {"ADC 16 in the sequence", [](auto& b) { Set<int16_t>(b, kADCSamplingSeq, 16); }, damaged,
         texts::kBadSamplingSequenceText},
        {"zero interval", [](auto& b) { Set<float>(b, kADCSampleInterval, 0.0f); }, damaged,
         texts::kBadIntervalText},
        {"NaN interval",
         [](auto& b) { Set<float>(b, kADCSampleInterval, std::numeric_limits<float>::quiet_NaN()); },
         damaged, texts::kBadIntervalText},
        {"zero ADC range", [](auto& b) { Set<float>(b, kADCRange, 0.0f); }, damaged,
         texts::kBadScalingText},
        {"zero resolution", [](auto& b) { Set<int32_t>(b, kADCResolution, 0); }, damaged,
         texts::kBadScalingText},
        // Intervals no digitiser can have.
        {"interval of 1e-30 us", [](auto& b) { Set<float>(b, kADCSampleInterval, 1e-30f); },
         damaged, texts::kBadIntervalText},
        {"interval of a day", [](auto& b) { Set<float>(b, kADCSampleInterval, 8.64e10f); },
         damaged, texts::kBadIntervalText},
        {"zero signal gain", [](auto& b) { Set<float>(b, kSignalGain, 0.0f); }, damaged,
         texts::kBadScalingText},
        {"NaN programmable gain",
         [](auto& b) { Set<float>(b, kADCProgrammableGain, std::numeric_limits<float>::quiet_NaN()); },
         damaged, texts::kBadScalingText},
        {"infinite instrument offset",
         [](auto& b) { Set<float>(b, kInstrumentOffset, std::numeric_limits<float>::infinity()); },
         damaged, texts::kBadScalingText},
        {"data pointer past the end", [](auto& b) { Set<int32_t>(b, kDataSectionPtr, 100000); },
         damaged, texts::kBadDataPointerText},
        {"data pointer inside the header", [](auto& b) { Set<int32_t>(b, kDataSectionPtr, 1); },
         damaged, texts::kBadDataPointerText},
        {"negative data pointer", [](auto& b) { Set<int32_t>(b, kDataSectionPtr, -12); }, damaged,
         texts::kBadDataPointerText},
        {"no samples stated", [](auto& b) { Set<int32_t>(b, kActualAcqLength, 0); }, damaged,
         texts::kBadAcqLengthText},
        {"negative length", [](auto& b) { Set<int32_t>(b, kActualAcqLength, -600); }, damaged,
         texts::kBadAcqLengthText},
        {"header only", [](auto& b) { b.resize(kExtendedHeaderBytes + 1); }, damaged,
         texts::kBadAcqLengthText},
        {"tags past the end",
         [](auto& b) { Set<int32_t>(b, kNumTagEntries, 3); Set<int32_t>(b, kTagSectionPtr, 14); },
         damaged, texts::kBadTagPointerText},
        {"many tags",
         [](auto& b) { Set<int32_t>(b, kNumTagEntries, INT32_MAX); Set<int32_t>(b, kTagSectionPtr, 12); },
         damaged, texts::kBadTagPointerText},
        {"negative tag count", [](auto& b) { Set<int32_t>(b, kNumTagEntries, -1); }, damaged,
         texts::kBadTagPointerText},
        {"synch array past the end",
         [](auto& b) {
             Set<int16_t>(b, kOperationMode, 1); Set<int32_t>(b, kActualEpisodes, 2);
             Set<int32_t>(b, kSynchArraySize, 2); Set<int32_t>(b, kSynchArrayPtr, 100000);
         },
         damaged, texts::kBadSynchSectionText},
        {"synch array longer than the sweeps",
         [](auto& b) {
             Set<int16_t>(b, kOperationMode, 1); Set<int32_t>(b, kActualEpisodes, 1);
             Set<int32_t>(b, kSynchArraySize, 50); Set<int32_t>(b, kSynchArrayPtr, 12);
         },
         damaged, texts::kBadSynchSectionText},
    };
    test::ExpectEachRefused(ws, dialogs, dir, ValidBytes(), cases, [&] { ExpectPreviousKept(); });
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

}  // namespace
}  // namespace vess
