// Any bytes as an ABF file (ABF 1.x or ABF 2): parsing must refuse or accept
// without touching memory outside the buffer, and an accepted file must serve
// every channel, every conversion, its sweeps and the information report,
// inside and outside its points. The ABF 1.x header an accepted file hands to
// event files must itself parse without harm.
#include <cstddef>
#include <cstdint>
#include <vector>

#include "recording/recording.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    vess::AbfError error = vess::AbfError::None;
    auto rec = vess::Recording::FromBytes(std::vector<uint8_t>(data, data + size), "fuzz.abf",
                                          &error);
    if (!rec) return 0;
    std::vector<int16_t> block(vess::kBlockPoints + 8);
    for (int c = 0; c < rec->ChannelCount(); ++c) {
        rec->SetChannel(uint8_t(c));
        const int64_t last = rec->PointsPerChannel() - 1;
        for (int64_t i : {int64_t(-1), int64_t(0), last, last + 1, int64_t(rec->BlockCount()) * 256})
            (void)rec->Sample(i);
        rec->ReadSamples(last - 4, block);
        rec->ReadSamples(-3, block);
        const int16_t s = rec->Sample(0);
        (void)rec->pA2Bit(rec->Bit2pA(s));
        (void)rec->Bit2pA2(s);
        (void)rec->Bit2msec(int32_t(last));
        (void)rec->Units();
    }
    (void)rec->InfoReport();
    for (int64_t start : rec->SweepStarts())
        if (start < 0 || start >= rec->PointsPerChannel()) __builtin_trap();
    std::vector<uint8_t> copy = rec->HeaderBytes();
    copy.resize(copy.size() + std::size_t(rec->ChannelCount()) * 2, 0);
    if (auto again = vess::Recording::FromBytes(std::move(copy), "copy.abf", &error))
        (void)again->InfoReport();
    return 0;
}
