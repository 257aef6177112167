// Low- and high-pass IIR filters designed as second-order sections in double
// precision: Butterworth, Chebyshev (pass-band ripple), inverse Chebyshev
// (stop-band attenuation), elliptic (both) and Bessel (flat delay: events
// keep their shape); and the Gaussian low-pass, a symmetric kernel. Analog prototype, low- or
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

enum class FilterKind { Butterworth = 1, Chebyshev = 2, InverseChebyshev = 3, Elliptic = 4, Bessel = 5, Gaussian = 6 };
inline constexpr FilterKind kFilterKinds[] = {FilterKind::Butterworth, FilterKind::Chebyshev,
                                              FilterKind::InverseChebyshev, FilterKind::Elliptic,
                                              FilterKind::Bessel, FilterKind::Gaussian};
enum class FilterPass { Low = 0, High = 1 };

// What the user chooses. The cut-off is the -3 dB point of Butterworth,
// Bessel and Gaussian filters, the edge of the ripple band of Chebyshev and
// elliptic filters, and the edge of the stop band (where the attenuation is
// first reached) of an inverse Chebyshev filter. The Gaussian filter is a
// low-pass without order; it is centred, so it never delays the trace.
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
    std::vector<Biquad> sections;  // the IIR kinds; empty when error says why not
    std::vector<double> kernel;    // the Gaussian: odd length, centred, sums to 1
    std::string error;
};

// Why the choice cannot be designed at this sampling rate, or "".
std::string FilterChoiceProblem(const FilterChoice& choice, double sampleRateHz);
FilterDesign DesignFilter(const FilterChoice& choice, double sampleRateHz);

// Gain in dB of one pass of the sections at a frequency.
double ResponseDb(const std::vector<Biquad>& sections, double frequencyHz, double sampleRateHz);
// The same for either form of design.
double DesignResponseDb(const FilterDesign& design, double frequencyHz, double sampleRateHz);

// Whether the filter runs forward and then backward: the zero-phase choice of
// the IIR kinds; the Gaussian kernel is centred and runs once.
inline bool RunsBothWays(const FilterChoice& choice) {
    return choice.zeroPhase && choice.kind != FilterKind::Gaussian;
}
// Whether the kind has an order, a ripple, an attenuation to choose.
inline bool HasOrder(FilterKind kind) { return kind != FilterKind::Gaussian; }
inline bool HasRipple(FilterKind kind) { return kind == FilterKind::Chebyshev || kind == FilterKind::Elliptic; }
inline bool HasAttenuation(FilterKind kind) {
    return kind == FilterKind::InverseChebyshev || kind == FilterKind::Elliptic;
}

// The kind as the user reads it: "Butterworth", "Inverse Chebyshev", "Bessel".
std::string_view KindCaption(FilterKind kind);

// Names used on the command line: "butterworth", "chebyshev",
// "inverse-chebyshev", "elliptic", "bessel", "gaussian"; "low", "high".
std::string_view KindName(FilterKind kind);
bool ParseKind(std::string_view name, FilterKind* kind);
std::string_view PassName(FilterPass pass);
bool ParsePass(std::string_view name, FilterPass* pass);

}  // namespace vess
