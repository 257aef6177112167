// A workspace whose events are beats at the given times (ms), in table order.
#pragma once

#include <vector>

#include "recording/workspace.h"

namespace vess::test {

inline Workspace BeatsAt(const std::vector<float>& times) {
    Workspace ws;
    for (float t : times) ws.events.Append({.time = t});
    return ws;
}

}  // namespace vess::test
