// Opening ABF 2 files through the dialogs: damaged sections are refused with
// their own message and leave the open recording and its events as they were.
#include <gtest/gtest.h>

#include "recording/abf2_layout.h"
#include "recording/le_bytes.h"
#include "recording/open_recording.h"
#include "recording/scripted_dialogs.h"
#include "recording/texts.h"
#include "support/abf2_bytes.h"
#include "refusal_cases.h"
#include "support/test_recording.h"

namespace vess {
namespace {

using namespace abf2;

std::vector<uint8_t> ValidAbf2(int channels = 1) {
    test::Abf2Layout abfLayout;
    abfLayout.channels.resize(std::size_t(channels));
    for (int c = 0; c < channels; ++c) abfLayout.channels[std::size_t(c)].adcNum = int16_t(c);
    std::vector<int16_t> samples(std::size_t(600 * channels));
    for (std::size_t i = 0; i < samples.size(); ++i) samples[i] = int16_t(i % 1000);
    return test::Abf2Bytes(abfLayout, samples);
}

using test::Save;
using test::Set;

constexpr std::size_t kAdcEntry0 = test::kAbf2AdcBlock * kBlockBytes;
constexpr std::size_t kAdcEntry1 = kAdcEntry0 + 128;
std::size_t Field(Section s, std::size_t field) { return SectionAt(s) + field; }

TEST(OpenAbf2, DamagedSectionsAreRefusedWithTheirMessage) {
    test::TempDir dir;
    Workspace ws;
    ScriptedDialogs dialogs;
    ASSERT_TRUE(OpenDataFile(ws, Save(dir, "good.abf", ValidAbf2()), dialogs));
    const Recording* previous = ws.recording.get();
    ws.events.Append(EventRecord{});
    const auto damaged = texts::kDamagedAbfCaption;
    const test::Corruption cases[] = {
        {"floating point, cut short",
         [](auto& b) { Set<int16_t>(b, kDataFormat, 1); b.resize(100); },
         texts::kNotIntegerCaption, texts::kNotIntegerText},
        {"shorter than the header", [](auto& b) { b.resize(300); }, damaged, texts::kTooShortText},
        {"protocol section past the end",
         [](auto& b) { Set<uint32_t>(b, Field(Section::Protocol, kSectionBlockIndex), 9000); },
         damaged, texts::kBadProtocolSectionText},
        {"protocol entry too short to hold the resolution",
         [](auto& b) { Set<uint32_t>(b, Field(Section::Protocol, kSectionBytes), 100); }, damaged,
         texts::kBadProtocolSectionText},
        {"ADC section past the end",
         [](auto& b) { Set<uint32_t>(b, Field(Section::ADC, kSectionBlockIndex), 9000); }, damaged,
         texts::kBadAdcSectionText},
        {"ADC entries running past the end",
         [](auto& b) { Set<uint32_t>(b, Field(Section::ADC, kSectionBytes), 0x7FFFFFFF); }, damaged,
         texts::kBadAdcSectionText},
        {"zero channels", [](auto& b) { Set<int64_t>(b, Field(Section::ADC, kSectionEntries), 0); },
         damaged, texts::kBadChannelCountText},
        {"17 channels", [](auto& b) { Set<int64_t>(b, Field(Section::ADC, kSectionEntries), 17); },
         damaged, texts::kBadChannelCountText},
        {"strings section past the end",
         [](auto& b) { Set<uint32_t>(b, Field(Section::Strings, kSectionBlockIndex), 9000); },
         damaged, texts::kBadStringsSectionText},
        {"unit index past the strings",
         [](auto& b) { Set<int32_t>(b, kAdcEntry0 + kADCUnitsIndex, 4); }, damaged,
         texts::kBadStringIndexText},
        {"negative name index",
         [](auto& b) { Set<int32_t>(b, kAdcEntry0 + kADCChannelNameIndex, -1); }, damaged,
         texts::kBadStringIndexText},
        {"ADC 16", [](auto& b) { Set<int16_t>(b, kAdcEntry0 + kADCNum, 16); }, damaged,
         texts::kBadSamplingSequenceText},
        {"zero interval",
         [](auto& b) { Set<float>(b, kBlockBytes + kADCSequenceInterval, 0.0f); }, damaged,
         texts::kBadIntervalText},
        {"zero resolution", [](auto& b) { Set<int32_t>(b, kBlockBytes + kADCResolution, 0); },
         damaged, texts::kBadScalingText},
        {"data section past the end",
         [](auto& b) { Set<uint32_t>(b, Field(Section::Data, kSectionBlockIndex), 9000); }, damaged,
         texts::kBadDataPointerText},
        {"data section inside the header",
         [](auto& b) { Set<uint32_t>(b, Field(Section::Data, kSectionBlockIndex), 0); }, damaged,
         texts::kBadDataPointerText},
        {"32-bit samples", [](auto& b) { Set<uint32_t>(b, Field(Section::Data, kSectionBytes), 4); },
         damaged, texts::kBadDataPointerText},
        {"no samples", [](auto& b) { Set<int64_t>(b, Field(Section::Data, kSectionEntries), 0); },
         damaged, texts::kBadAcqLengthText},
        {"tags past the end",
         [](auto& b) {
             Set<uint32_t>(b, Field(Section::Tag, kSectionBlockIndex), 9000);
             Set<uint32_t>(b, Field(Section::Tag, kSectionBytes), 64);
             Set<int64_t>(b, Field(Section::Tag, kSectionEntries), 2);
         },
         damaged, texts::kBadTagPointerText},
    };
    test::ExpectEachRefused(ws, dialogs, dir, ValidAbf2(), cases, [&] {
        EXPECT_EQ(ws.recording.get(), previous);
        EXPECT_EQ(ws.events.Count(), 1);
    });
}

TEST(OpenAbf2, TwoChannelsOnOneAdcAreRefused) {
    std::vector<uint8_t> bytes = ValidAbf2(2);
    Set<int16_t>(bytes, kAdcEntry1 + kADCNum, 0);
    AbfError error{};
    std::string detail;
    EXPECT_FALSE(Recording::FromBytes(bytes, "dup.abf", &error, &detail));
    EXPECT_EQ(error, AbfError::DuplicateAdc);
    EXPECT_EQ(detail, "channels 0 and 1 both sample ADC 0");
    EXPECT_EQ(RefusalFor(error, "dup.abf", detail).text,
              texts::WithReason(texts::kDuplicateAdcText, "dup.abf", detail));
}

}  // namespace
}  // namespace vess
