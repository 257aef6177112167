#include "recording/method_settings.h"

namespace vess {

std::string_view MethodName(DetectionMethod method) {
    switch (method) {
        case DetectionMethod::Threshold: return "threshold";
        case DetectionMethod::Deconvolution: return "deconvolution";
        case DetectionMethod::Template: return "template";
    }
    return "threshold";
}

std::optional<DetectionMethod> ParseMethodName(std::string_view name) {
    for (DetectionMethod m :
         {DetectionMethod::Threshold, DetectionMethod::Deconvolution, DetectionMethod::Template})
        if (MethodName(m) == name) return m;
    return std::nullopt;
}

}  // namespace vess
