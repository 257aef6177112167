// The whole-file detection's read-ahead hands out screens that must hold
// exactly what a screen reading its own samples holds.
#include <gtest/gtest.h>

#include <vector>

#include "recording/screen.h"
#include "recording/screen_read_ahead.h"
#include "support/test_recording.h"

namespace vess {
namespace {

// Every screen, read ahead with buffers of 1, 2 and 3 screens (so that most
// screens sit at a buffer's edge) and of many, equals the screen read on its
// own over its whole reach, before the data, after it and at the last,
// partial screen; screen sizes of 1 and 4 blocks.
TEST(ScreenReadAhead, EveryScreenHoldsWhatItsOwnReadHolds) {
    test::TempDir dir;
    std::vector<int16_t> samples(10 * 1024 + 300);  // the last screen partial
    for (std::size_t i = 0; i < samples.size(); ++i)
        samples[i] = int16_t((i * 7919) % 65536 - 32768);
    const auto rec = test::MakeRecording(dir / "ramp.abf", samples);
    for (int32_t blocksPerScreen : {1, 4}) {
        for (int32_t screensPerRead : {1, 2, 3, 256}) {
            ScreenReadAhead ahead(*rec, blocksPerScreen, screensPerRead);
            for (int32_t block = 0; block < rec->BlockCount(); block += blocksPerScreen) {
                const Screen own(*rec, block, blocksPerScreen);
                const Screen viewed = ahead.At(block);
                ASSERT_TRUE(viewed.Complete());
                const int64_t w = own.WindowLen();
                ASSERT_EQ(viewed.WindowLen(), w);
                ASSERT_NE(viewed.Samples(-w, 3 * w), nullptr);
                for (int64_t i = -w; i < 2 * w; ++i)
                    ASSERT_EQ(viewed.GetSampleValue(i), own.GetSampleValue(i))
                        << blocksPerScreen << " blocks, " << screensPerRead << " per read, block "
                        << block << ", index " << i;
            }
        }
    }
}

}  // namespace
}  // namespace vess
