#include "lag/Impairment.h"

#include <algorithm>

namespace drench::lag {

double mostLoss(double meanBurst) {
    return meanBurst / (meanBurst + 1.0);
}

Impairment::Impairment(const Settings& settings, std::uint64_t seed)
    : settings_(settings), chance_(seed) {
    const double loss = settings.loss;
    becomesGood_ = settings.meanBurst ? 1.0 / *settings.meanBurst : 1.0 - loss;
    // In balance as many bursts begin as end: becomesBad (1 - loss) = becomesGood loss.
    becomesBad_ = loss < 1.0 ? becomesGood_ * loss / (1.0 - loss) : 1.0;
    isBad_ = chance_.happens(loss);
}

Fate Impairment::decide(Time now) {
    if (chance_.happens(isBad_ ? becomesGood_ : becomesBad_))
        isBad_ = !isBad_;
    const double jitter = chance_.share();
    const bool isHeldBack = chance_.happens(settings_.reordering);
    const bool isDuplicated = chance_.happens(settings_.duplication);
    if (isBad_)
        return {0, now};

    const auto queued = std::chrono::duration_cast<Duration>(settings_.jitter * jitter);
    queueEnd_ = std::max(queueEnd_, now + settings_.delay + queued);
    const Duration heldBack = isHeldBack ? settings_.heldBack : Duration(0);
    return {isDuplicated ? 2 : 1, queueEnd_ + heldBack};
}

} // namespace drench::lag
