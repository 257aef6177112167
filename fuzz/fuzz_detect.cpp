// Any bytes as a recording and detection settings, carried on past parsing:
// the first bytes are the detection parameters, the screen size and the
// screen to open; the rest is the ABF file. Parameters are taken only when
// the readers would take them (the same range checks), and then a screen is
// opened and detected on. Damaged headers with tiny intervals, huge screens
// and periods of hours once lived here: slowness shows as a libFuzzer
// timeout, an overflow as a sanitizer report.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <vector>

#include "detection/analyze_window.h"
#include "recording/safe_answer_dialogs.h"
#include "recording/event_table.h"
#include "recording/recording.h"
#include "recording/screen.h"
#include "recording/value_ranges.h"

namespace {

class SilentDialogs : public vess::SafeAnswerDialogs {
public:
    void Message(const std::string&, const std::string&) override {}
};

template <class T>
T Take(const uint8_t*& data, std::size_t& size) {
    T v{};
    if (size >= sizeof(T)) {
        std::memcpy(&v, data, sizeof(T));
        data += sizeof(T);
        size -= sizeof(T);
    }
    return v;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    vess::AnalysisParameters p;
    p.PeakDirection = Take<int16_t>(data, size);
    p.ThresholdAmplitude = Take<float>(data, size);
    p.PeriodToSearchMax = Take<int32_t>(data, size);
    p.PeriodStartBaseline = Take<int32_t>(data, size);
    p.PeriodFindDecayTime = Take<int32_t>(data, size);
    p.DecayPercent = Take<float>(data, size);
    p.PeriodBaselineAverage = Take<int32_t>(data, size);
    p.AreaThreshold = Take<float>(data, size);
    p.ComplexPeak = (Take<uint8_t>(data, size) & 1) != 0;
    p.NumberPointsPeak = Take<int16_t>(data, size);
    const uint16_t blocksPerScreen = Take<uint16_t>(data, size);
    const uint16_t screen = Take<uint16_t>(data, size);
    if (!vess::ParameterProblem(p).empty()) return 0;
    if (blocksPerScreen < 1 || blocksPerScreen > vess::kMaxBlocksPerScreen) return 0;

    vess::AbfError error = vess::AbfError::None;
    auto rec = vess::Recording::FromBytes(std::vector<uint8_t>(data, data + size), "fuzz.abf", &error);
    if (!rec) return 0;
    const int32_t start = int32_t(screen % uint32_t(rec->BlockCount()));
    const vess::Screen shown(*rec, start, blocksPerScreen);
    vess::EventTable events;
    SilentDialogs dialogs;
    (void)vess::AnalyzeWindow(shown, p, events, dialogs);
    for (int32_t i = 1; i <= events.Count(); ++i) (void)rec->Bit2pA2(events[i].amplitude);
    return 0;
}
