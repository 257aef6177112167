// The synthesiser: reproducible from its seed, events where the CSV says,
// with the amplitudes and noise asked for; and the template header.
#include <algorithm>
#include <cmath>
#include <fstream>
#include <functional>

#include <gtest/gtest.h>

#include "recording/synth.h"
#include "recording/template_header.h"
#include "recording/texts.h"
#include "support/test_recording.h"

namespace vess {
namespace {

TEST(Synth, EventsFollowTheRequestedStatistics) {
    const SynthOptions o{.seconds = 20};
    const auto rec = Synthesise(o);
    ASSERT_EQ(rec.samples.size(), 400000u);
    // 5 events a second for 20 s: 100 expected, Poisson spread about 10.
    EXPECT_GT(rec.events.size(), 70u);
    EXPECT_LT(rec.events.size(), 130u);
    std::vector<double> sizes;
    for (std::size_t i = 0; i < rec.events.size(); ++i) {
        const TrueEvent& e = rec.events[i];
        EXPECT_LT(e.amplitudePa, 0);  // direction -1
        sizes.push_back(-e.amplitudePa);
        // Peak 1.279 ms after onset for taus 0.5 and 5 ms: ln(10) x 2.5 / 4.5.
        EXPECT_NEAR(e.peakMs - e.onsetMs, std::log(10.0) * 2.5 / 4.5, 1e-9);
        EXPECT_EQ(e.peakIndex, std::llround(e.peakMs * 20.0));  // 20 points a ms
        if (i > 0) {
            EXPECT_GE(e.onsetMs - rec.events[i - 1].onsetMs, o.minIntervalMs);
        }
    }
    std::nth_element(sizes.begin(), sizes.begin() + std::ptrdiff_t(sizes.size() / 2), sizes.end());
    EXPECT_NEAR(sizes[sizes.size() / 2], 20.0, 3.0);
}

TEST(Synth, NoiseHasTheRequestedSize) {
    const auto quiet = Synthesise({.seconds = 20, .eventsPerSecond = 0, .humAmplitudePa = 0});
    EXPECT_TRUE(quiet.events.empty());
    double sum = 0, sumSq = 0;
    for (int16_t c : quiet.samples) {
        sum += c / 10.0;
        sumSq += (c / 10.0) * (c / 10.0);
    }
    const double n = double(quiet.samples.size());
    const double rms = std::sqrt(sumSq / n - (sum / n) * (sum / n));
    EXPECT_NEAR(rms, 2.0, 0.4);  // the slowest component varies over seconds
}

// Reproducible from its seed; written as an openable file with the true events beside it.
TEST(Synth, WritesAnOpenableFileAndTheTrueEventsBesideIt) {
    test::TempDir dir;
    SynthOptions o{.seconds = 2};
    const auto rec = Synthesise(o);
    EXPECT_EQ(Synthesise(o).samples, rec.samples);
    o.seed = 8;
    EXPECT_NE(Synthesise(o).samples, rec.samples);
    const auto file = dir / "s.abf";
    ASSERT_EQ(WriteSynthetic(file, rec), "");
    auto opened = Recording::Open(file, nullptr);
    ASSERT_TRUE(opened);
    EXPECT_DOUBLE_EQ(opened->IntervalUs(), 50.0);
    EXPECT_EQ(opened->Units(), "pA");
    EXPECT_NEAR(opened->Bit2pA(100), 10.0, 1e-6);  // 0.1 pA a count
    std::vector<int16_t> back(rec.samples.size());
    opened->ReadSamples(0, back);
    EXPECT_EQ(back, rec.samples);

    std::ifstream csv(dir / "s_events.csv");
    std::string line;
    std::getline(csv, line);
    EXPECT_EQ(line, "event,onset_ms,peak_ms,peak_index,amplitude_pA");
    std::size_t rows = 0;
    while (std::getline(csv, line)) ++rows;
    EXPECT_EQ(rows, rec.events.size());
}

TEST(Synth, RefusesOptionsThatMakeNoRecording) {
    EXPECT_EQ(CheckSynthOptions(SynthOptions{}), "");
    const std::function<void(SynthOptions&)> bad[] = {
        [](SynthOptions& o) { o.seconds = 0; },
        [](SynthOptions& o) { o.direction = 0; },
        [](SynthOptions& o) { o.riseTauMs = 6; },          // slower than the decay
        [](SynthOptions& o) { o.eventsPerSecond = 200; },  // one per 5 ms, under the 8 ms dead time
    };
    for (std::size_t k = 0; k < std::size(bad); ++k) {
        SynthOptions o;
        bad[k](o);
        EXPECT_NE(CheckSynthOptions(o), "") << k;
    }
}

TEST(TemplateHeader, WrittenOnceWhenMissingAndKeptAfterwards) {
    test::TempDir dir;
    const auto made = EnsureTemplateHeader(dir.Path());
    ASSERT_EQ(made.error, "");
    EXPECT_EQ(made.path, dir / std::string(texts::kTemplateHeaderFileName));
    EXPECT_EQ(std::filesystem::file_size(made.path), 6144u);
    std::ifstream f(made.path, std::ios::binary);
    char signature[4];
    f.read(signature, 4);
    EXPECT_EQ(std::string(signature, 4), "ABF ");

    // An existing file (perhaps edited by the user) is not overwritten.
    std::ofstream(made.path, std::ios::app) << "x";
    EXPECT_EQ(EnsureTemplateHeader(dir.Path()).error, "");
    EXPECT_EQ(std::filesystem::file_size(made.path), 6145u);
    EXPECT_NE(EnsureTemplateHeader(dir / "missing-folder").error, "");
}

}  // namespace
}  // namespace vess
