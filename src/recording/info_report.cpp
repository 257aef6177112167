#include "recording/recording.h"

namespace vess {

std::string Recording::InfoReport() const { return "DAT File Info:  \n"; }

}  // namespace vess
