#include "detection/ordered_work.h"

#include <sched.h>

namespace vess {

int UsableWorkers(int maxWorkers) {
    int cores = int(std::thread::hardware_concurrency());
    cpu_set_t allowed;
    CPU_ZERO(&allowed);
    if (sched_getaffinity(0, sizeof allowed, &allowed) == 0) cores = CPU_COUNT(&allowed);
    return std::clamp(cores, 1, std::max(maxWorkers, 1));
}

}  // namespace vess
