#include "keeper/Headcount.h"

#include "src/Messages.h"

#include <algorithm>
#include <cmath>

namespace drench::keeper {

namespace {

using std::chrono::duration;

/// States a second for each player.
constexpr double usualStates = 62.0;
constexpr double fewestStates = 10.0;

/// Below it a single state more or less would change the number.
constexpr duration<double> shortestStretch{1.5};

constexpr int contradictionsThatCount = 3;

} // namespace

void NetworkHeadcount::take(const std::optional<UdpCounters>& counters, Time now) {
    const bool goesOn =
        counters && counters_ && counters->in >= counters_->in && counters->out >= counters_->out;
    if (!goesOn) {
        counters_ = counters;
        countedAt_ = now;
        players_.reset();
        return;
    }
    const duration<double> stretch = now - countedAt_;
    if (stretch < shortestStretch)
        return;
    const double unanswering = static_cast<double>(counters->out - counters_->out) -
                               static_cast<double>(counters->in - counters_->in);
    const double states = unanswering / stretch.count();
    const auto placesAmong = [](double players) {
        return static_cast<int>(std::clamp(players, 0.0, static_cast<double>(maxPlayers)));
    };
    // What one player says goes to all, so that a single one can make up for several.
    players_ = {.least = states >= usualStates / 2 ? 1 : 0,
                .most = placesAmong(std::floor(states / fewestStates))};
    counters_ = counters;
    countedAt_ = now;
}

void Headcount::reset() {
    byNotices_ = 0;
    leastByNetwork_ = 0;
    contradictions_ = 0;
    seemsToHang_ = false;
}

void Headcount::joined() {
    byNotices_ = std::min(byNotices_ + 1, maxPlayers);
    contradictions_ = 0;
}

void Headcount::left() {
    byNotices_ = std::max(byNotices_ - 1, 0);
    contradictions_ = 0;
}

void Headcount::compare(const std::optional<PlayerRange>& byNetwork) {
    if (byNetwork && byNetwork->most > 0)
        seemsToHang_ = false;
    if (!byNetwork || (byNotices_ >= byNetwork->least && byNotices_ <= byNetwork->most)) {
        contradictions_ = 0;
        return;
    }
    leastByNetwork_ = byNetwork->least;
    if (++contradictions_ < contradictionsThatCount)
        return;
    seemsToHang_ = byNotices_ > 0 && byNetwork->most == 0;
    byNotices_ = std::clamp(byNotices_, byNetwork->least, byNetwork->most);
    contradictions_ = 0;
    ++corrections_;
}

int Headcount::players() const {
    return contradictions_ > 0 ? std::max(byNotices_, leastByNetwork_) : byNotices_;
}

} // namespace drench::keeper
