// Which detector finds the events, and the parameters of the two detectors
// that work on a filtered trace (deconvolution and the optimally scaled
// template). Saved with the analysis settings.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace vess {

enum class DetectionMethod { Threshold, Deconvolution, Template };

struct MethodParameters {
    DetectionMethod method = DetectionMethod::Threshold;
    double riseTauMs = 0.5;          // event kernel: exp(-t/decay) - exp(-t/rise)
    double decayTauMs = 6;
    double deconvolutionThreshold = 5.2;  // in noise SDs of the deconvolved trace
    double templateThreshold = 4;       // scale over its standard error
    double lowPassMs = 0.8;             // SD of the Gaussian smoothing of the deconvolved trace
    double minSeparationMs = 1.5;       // closer crossings are one event unless two peaks show
    // The kernel and thresholds are suggested from each recording the first
    // time it is analysed with a filtering method (a new installation's way).
    bool suggestFromRecording = false;

    bool operator==(const MethodParameters&) const = default;
};

// "threshold", "deconvolution", "template".
std::string_view MethodName(DetectionMethod method);
std::optional<DetectionMethod> ParseMethodName(std::string_view name);

}  // namespace vess
