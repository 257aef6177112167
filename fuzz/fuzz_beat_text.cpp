// Any text as a file of beat times or of RR intervals (the first byte picks
// which, and the segment options): the whole heart-rate analysis runs
// without a crash, and a segment list stays within its bound.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "hrv/analysis.h"
#include "hrv/spectrum.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    if (size < 1) return 0;
    const uint8_t choice = data[0];
    const std::string_view text(reinterpret_cast<const char*>(data + 1), size - 1);
    const std::vector<double> numbers = vess::hrv::ReadNumberList(text);
    std::vector<double> beats = (choice & 1) ? vess::hrv::BeatsFromIntervals(numbers) : numbers;
    std::sort(beats.begin(), beats.end());
    vess::hrv::HrvOptions o;
    o.upperBoundMs = (choice & 2) ? 1e308 : 2000;
    o.lowerBoundMs = (choice & 2) ? -1e308 : 300;
    o.includeZeroSegments = choice & 4;
    o.excludeLastSegment = choice & 8;
    o.pointsPerSegment = (choice & 16) ? 1 : 30000;
    const double length = beats.empty() ? 0 : beats.back();
    const vess::hrv::HrvAnalysis a = vess::hrv::AnalyseBeats(beats, length, o.SegmentMs(1000), o);
    if (a.timeDomain.segments.size() > std::size_t(vess::hrv::kMaxSegmentRows)) __builtin_trap();
    if (choice & 32) {
        vess::hrv::SpectrumOptions so;
        if (choice & 64) {
            so.method = vess::hrv::SpectrumMethod::LombScargle;
            // Lomb-Scargle costs beats times frequencies; a long series is
            // slow, not wrong: past 3e7 products (about a second here) it is
            // left to the unit tests.
            const double spanS = a.rr.endMs.empty() ? 0 : (a.rr.endMs.back() - a.rr.endMs.front()) / 1000;
            const double frequencies = so.bands.hfHighHz * spanS * so.oversampling + 1;
            if (double(a.rr.endMs.size()) * frequencies > 3e7) return 0;
        }
        const auto s = vess::hrv::AnalyseSpectrum(a.rr.endMs, a.rr.rrMs, so);
        if (s.frequencyHz.size() > vess::hrv::kMaxSpectrumPoints) __builtin_trap();
    }
    return 0;
}
