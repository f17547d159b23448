#include "game/FrameCosts.h"

#include <ctime>

namespace drench::game {

std::chrono::nanoseconds threadProcessorTime() {
    timespec used{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &used);
    return std::chrono::seconds(used.tv_sec) + std::chrono::nanoseconds(used.tv_nsec);
}

} // namespace drench::game
