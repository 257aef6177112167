// Low- and high-pass IIR filters designed as second-order sections in double
// precision: Butterworth, Chebyshev (pass-band ripple), inverse Chebyshev
// (stop-band attenuation) and elliptic (both). Analog prototype, low- or
// high-pass transform with pre-warping, bilinear transform, then the poles
// and zeros paired into sections; never the expanded transfer function,
// which loses a 1 Hz high-pass at 20 kHz to rounding.
//
// The float-only design routines of the DSP libraries Debian carries cannot
// place poles within 3e-4 of z = 1 accurately enough, hence our own.
#pragma once

#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "recording/value_ranges.h"

namespace vess {

enum class FilterKind { Butterworth = 1, Chebyshev = 2, InverseChebyshev = 3, Elliptic = 4 };
enum class FilterPass { Low = 0, High = 1 };

// What the user chooses. The cut-off is the -3 dB point of a Butterworth
// filter, the edge of the ripple band of Chebyshev and elliptic filters, and
// the edge of the stop band (where the attenuation is first reached) of an
// inverse Chebyshev filter.
struct FilterChoice {
    FilterKind kind = FilterKind::Elliptic;
    FilterPass pass = FilterPass::Low;
    double cutoffHz = 1000;
    int order = 4;
    double rippleDb = 0.5;        // Chebyshev and elliptic
    double attenuationDb = 60;    // inverse Chebyshev and elliptic
    bool zeroPhase = false;

    bool operator==(const FilterChoice&) const = default;
};

// b0 b1 b2 1 a1 a2 of one section: (b0 + b1 z^-1 + b2 z^-2) / (1 + a1 z^-1 + a2 z^-2).
using Biquad = std::array<double, 6>;

struct FilterDesign {
    std::vector<Biquad> sections;  // empty when error says why not
    std::string error;
};

// Why the choice cannot be designed at this sampling rate, or "".
std::string FilterChoiceProblem(const FilterChoice& choice, double sampleRateHz);
FilterDesign DesignFilter(const FilterChoice& choice, double sampleRateHz);

// Gain in dB of one pass of the sections at a frequency.
double ResponseDb(const std::vector<Biquad>& sections, double frequencyHz, double sampleRateHz);

// Names used on the command line: "butterworth", "chebyshev",
// "inverse-chebyshev", "elliptic"; "low", "high".
std::string_view KindName(FilterKind kind);
bool ParseKind(std::string_view name, FilterKind* kind);
std::string_view PassName(FilterPass pass);
bool ParsePass(std::string_view name, FilterPass* pass);

}  // namespace vess
