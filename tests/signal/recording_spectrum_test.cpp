// The noise spectrum of a stretch of a recording, read a segment at a time
// (a 2-hour file once needed 2.5 GB to hold its samples twice), equals the
// spectrum of the same stretch read whole.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

#include "signal/noise_measures.h"
#include "signal/welch_spectrum.h"
#include "support/test_recording.h"

namespace vess {
namespace {

TEST(RecordingSpectrum, SegmentBySegmentEqualsTheWholeStretch) {
    test::TempDir dir;
    std::mt19937 gen(3);
    std::normal_distribution<double> noise(0, 300);
    std::vector<int16_t> samples(20011);
    for (std::size_t i = 0; i < samples.size(); ++i)
        samples[i] = int16_t(std::clamp(std::nearbyint(noise(gen) + 2000 * std::sin(i / 7.0)), -32768.0, 32767.0));
    const auto rec = test::MakeRecording(dir / "n.abf", samples, 50, 3.0f);
    // Whole file, an offset stretch that is no multiple of the hop, and
    // exactly one segment at the file's end.
    const struct {
        int64_t first, count;
        int segment;
    } cases[] = {{0, 20011, 1024}, {17, 10000, 256}, {20011 - 64, 64, 64}};
    for (const auto& c : cases) {
        const TraceStretch whole = ReadStretch(*rec, c.first, c.count);
        const PowerSpectrum expected = WelchSpectrum(whole.values, 1e3 / whole.intervalMs, c.segment);
        const PowerSpectrum streamed = RecordingSpectrum(*rec, c.first, c.count, c.segment);
        ASSERT_GT(expected.segments, 0);
        EXPECT_EQ(streamed.segments, expected.segments) << c.first;
        EXPECT_EQ(streamed.frequencyHz, expected.frequencyHz) << c.first;
        EXPECT_EQ(streamed.psd, expected.psd) << c.first;
    }
    // A stretch beyond the file or shorter than a segment gives no spectrum.
    EXPECT_EQ(RecordingSpectrum(*rec, 20000, 64, 64).segments, 0);
    EXPECT_EQ(RecordingSpectrum(*rec, 0, 63, 64).segments, 0);
}

}  // namespace
}  // namespace vess
