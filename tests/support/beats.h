// A workspace whose events are beats at the given times (ms), in table order.
#pragma once

#include <vector>

#include "recording/workspace.h"

namespace vess::test {

inline Workspace BeatsAt(const std::vector<float>& times) {
    Workspace ws;
    for (float t : times) {
        EventRecord r;
        r.time = t;
        ws.events.Append(r);
    }
    return ws;
}

}  // namespace vess::test
