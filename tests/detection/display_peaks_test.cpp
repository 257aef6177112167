// An event-rich screen: its events' peaks are rarer than the 0.5 % that the
// fitted frame leaves out, so without them the frame cuts every peak off.
#include <gtest/gtest.h>

#include "detection/display_fit.h"
#include "detection/trace_zoom.h"

namespace vess {
namespace {

TEST(DisplayFrame, ThePeaksGivenAreInsideTheFrame) {
    // 4096 samples of flat noise with 12 sharp downward peaks of -900 counts.
    std::vector<int16_t> samples(4096);
    for (std::size_t i = 0; i < samples.size(); ++i) samples[i] = int16_t(int(i * 7919 % 21) - 10);
    std::vector<int16_t> peaks;
    for (std::size_t k = 0; k < 12; ++k) {
        samples[200 + k * 300] = -900;
        peaks.push_back(-900);
    }
    const auto bottomOf = [](const DisplayFrame& f) { return f.centreCounts - f.spanCounts / 2; };
    const DisplayFrame plain = FitFrame(samples, -1);
    EXPECT_GT(bottomOf(plain), -900);  // what users saw: every peak off the bottom
    const DisplayFrame withPeaks = FitFrame(samples, -1, peaks);
    EXPECT_LE(bottomOf(withPeaks), -900);
    // The baseline keeps its place a quarter below the top.
    const double top = withPeaks.centreCounts + withPeaks.spanCounts / 2;
    EXPECT_NEAR((top - 0) / withPeaks.spanCounts, kBaselineFromEdge, 0.02);
}

// The zoom stays inside the screen and never narrower than a few samples.
TEST(TraceZoom, LimitsOfTimeAndRectangleZooms) {
    const TraceZoom screen{0, 1024, -100, 100};
    const struct {
        double at, factor;
        double first, last;
    } times[] = {
        {512, 0.5, 256, 768},   // centred
        {0, 0.5, 0, 512},       // the left edge stays
        {1024, 0.5, 512, 1024}, // the right edge stays
        {512, 1e-6, 508, 516},  // the narrowest
        {100, 4, 0, 1024},      // out: the whole screen
    };
    for (const auto& t : times) {
        const TraceZoom z = ZoomTime(screen, t.at, t.factor, 1024);
        EXPECT_DOUBLE_EQ(z.firstIndex, t.first) << t.at << " " << t.factor;
        EXPECT_DOUBLE_EQ(z.lastIndex, t.last) << t.at << " " << t.factor;
    }
    // Corners in any order, clipped to the screen; a click leaves the view.
    EXPECT_EQ(ZoomToRectangle(screen, 900, 10, -50, 50, 1024), (TraceZoom{0, 900, 10, 50}));
    EXPECT_EQ(ZoomToRectangle(screen, 100, 10, 104, 50, 1024), screen);
    EXPECT_EQ(ZoomToRectangle(screen, 100, 10, 300, 11, 1024), screen);
    EXPECT_DOUBLE_EQ(WheelZoomFactor(-120), 1.25);
}

}  // namespace
}  // namespace vess
