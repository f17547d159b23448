#include "client/Joining.h"

#include <algorithm>
#include <chrono>

namespace drench::client {

namespace {

using std::chrono::milliseconds;

/// Longer than nearly all round trips, so that few second copies make a second player.
constexpr milliseconds resendAfter(500);

/// A room answers within a tick; after six copies it will not.
constexpr milliseconds answerPatience(3000);

/// An overtaken datagram may come this much later than its successors.
constexpr milliseconds overtakingPatience(250);

} // namespace

void Joining::sent(Time now) {
    if (timesSent++ == 0)
        firstSent = now;
    lastSent = now;
}

bool Joining::isSendDue(Time now) const {
    return !hasHeard && now >= lastSent + resendAfter;
}

void Joining::takeRefusal(Time now) {
    if (!firstSnapshot && !refused)
        refused = now;
}

bool Joining::isRefused(Time now) const {
    if (!refused || firstSnapshot)
        return false;
    return timesSent == 1 || now >= *refused + overtakingPatience;
}

bool Joining::isUnanswered(Time now) const {
    return now >= answerDeadline();
}

bool Joining::hasMissedAcceptance(Time now) const {
    return firstSnapshot && now >= *firstSnapshot + overtakingPatience;
}

Time Joining::wakeAt() const {
    Time wake = answerDeadline();
    if (!hasHeard)
        wake = std::min(wake, lastSent + resendAfter);
    if (refused && !firstSnapshot)
        wake = std::min(wake, *refused + overtakingPatience);
    return wake;
}

Time Joining::answerDeadline() const {
    return firstSnapshot.value_or(firstSent) + answerPatience;
}

} // namespace drench::client
