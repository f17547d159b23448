#include "keeper/Lifecycle.h"

#include <algorithm>
#include <utility>

namespace drench::keeper {

Ending endingDue(const Situation& situation, const Policy& policy, Time now) {
    const std::optional<Time>& empty = situation.emptySince;
    if (situation.stopAskedAt) {
        if (empty)
            return Ending::stopped;
        return now - *situation.stopAskedAt >= policy.waitForPlayers ? Ending::stoppedWithPlayers
                                                                     : Ending::none;
    }
    if (!empty)
        return Ending::none;
    // An allocation says that players are coming, who need time to arrive.
    const Time unusedSince =
        situation.allocatedSince ? std::max(*empty, *situation.allocatedSince) : *empty;
    const Time::duration unused = now - unusedSince;
    if (situation.allocatedSince && policy.longestUnused && unused >= *policy.longestUnused)
        return Ending::unused;
    if (policy.oldAge && now - situation.started >= *policy.oldAge && unused >= policy.quietTime)
        return Ending::aged;
    return Ending::none;
}

bool startsAgain(Ending ending, const Situation& situation, const Policy& policy) {
    if (situation.stopAskedAt)
        return false;
    return policy.startAgain && (ending == Ending::none || ending == Ending::aged);
}

milliseconds RestartPause::after(Time::duration life) {
    if (life >= shortLife)
        next_ = shortest;
    return std::exchange(next_, std::min(2 * next_, longest));
}

} // namespace drench::keeper
