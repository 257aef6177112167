// Messages and captions of the digital filters.
#pragma once

#include <string>

#include <fmt/format.h>

namespace vess::texts {

inline constexpr const char* kFilterCaption = "Digital Filter";
inline constexpr const char* kFilterResponseTitle = "Filter Response";
inline constexpr const char* kFilterResponseX = "Frequency (Hz)";
inline constexpr const char* kFilterResponseY = "Gain (dB)";
inline constexpr const char* kFilterNoRecording = "Open a recording before filtering it.";

inline std::string CutoffRefusedText(double cutoffHz, double sampleRateHz) {
    return fmt::format(
        "The cut-off frequency must lie above 0 Hz and below half the sampling frequency "
        "({:g} Hz); {:g} Hz cannot be used.",
        sampleRateHz / 2, cutoffHz);
}
inline std::string OrderRefusedText(int order, int maxOrder) {
    return fmt::format("The filter order must be 1 to {}; {} cannot be used.", maxOrder, order);
}
inline std::string RippleRefusedText(double rippleDb) {
    return fmt::format("The pass-band ripple must be above 0 dB; {:g} dB cannot be used.", rippleDb);
}
inline std::string AttenuationRefusedText(double attenuationDb, double rippleDb) {
    return fmt::format(
        "The stop-band attenuation must be above 0 dB and above the pass-band ripple "
        "({:g} dB); {:g} dB cannot be used.",
        rippleDb, attenuationDb);
}
inline constexpr const char* kGaussianLowPassOnly = "The Gaussian filter is a low-pass filter only.";
inline std::string GaussianCutoffRefusedText(double cutoffHz, double leastHz) {
    return fmt::format("The Gaussian filter's cut-off must be at least {:.3g} Hz at this sampling frequency "
                       "(its kernel grows as the cut-off falls); {:g} Hz cannot be used.",
                       leastHz, cutoffHz);
}
inline std::string FilterFailedText(const std::string& why) {
    return "The recording could not be filtered: " + why;
}

}  // namespace vess::texts
