#include "game/Pacing.h"

#include <algorithm>
#include <chrono>
#include <poll.h>
#include <vector>

namespace drench::game {

void Pacing::begin(Time now) {
    const std::chrono::duration<double> period(1.0 / (resting_ ? restingRate : rate()));
    const auto step = std::chrono::duration_cast<Time::duration>(period);
    due_ = std::max(due_ + step, now);
}

void sleepOnSockets(std::span<const int> descriptors, client::Time now, client::Time until) {
    if (until <= now)
        return;
    using namespace std::chrono;
    const nanoseconds left = until - now;
    const seconds whole = duration_cast<seconds>(left);
    const timespec timeout = {whole.count(), (left - whole).count()};
    std::vector<pollfd> readable;
    for (const int descriptor : descriptors)
        readable.push_back({descriptor, POLLIN, 0});
    ::ppoll(readable.data(), readable.size(), &timeout, nullptr);
}

} // namespace drench::game
