#include "game/Pacing.h"

#include <algorithm>
#include <chrono>
#include <poll.h>

namespace drench::game {

void Pacing::begin(Time now) {
    const std::chrono::duration<double> period(1.0 / (resting_ ? restingRate : framesPerSecond_));
    const auto step = std::chrono::duration_cast<Time::duration>(period);
    due_ = std::max(due_ + step, now);
}

void sleepOnSocket(int descriptor, client::Time now, client::Time until) {
    if (until <= now)
        return;
    using namespace std::chrono;
    const nanoseconds left = until - now;
    const seconds whole = duration_cast<seconds>(left);
    const timespec timeout = {whole.count(), (left - whole).count()};
    pollfd readable = {descriptor, POLLIN, 0};
    ::ppoll(&readable, 1, &timeout, nullptr);
}

} // namespace drench::game
