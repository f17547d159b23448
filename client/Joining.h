#pragma once

#include "client/Clock.h"

#include <optional>

namespace drench::client {

/// The way into a room: join records sent, answers heard, and what follows from them.
/// Datagrams may be lost or overtake each other: the acceptance may come after snapshots, and the
/// refusal of a second copy of the join record before the acceptance of the first.
struct Joining {
    Time firstSent;
    Time lastSent;
    int timesSent = 0;

    /// Whether any record of the room has come. If so the join record has most likely arrived.
    bool hasHeard = false;

    /// The moment of a refusal, which may answer a second copy of the join record.
    std::optional<Time> refused;

    std::optional<Time> firstSnapshot;

    /// A join record went out.
    void sent(Time now);

    /// Whether another copy of the join record is to be sent.
    bool isSendDue(Time now) const;

    /// A refusal came. It is ignored after the first snapshot, since only players get snapshots.
    void takeRefusal(Time now);

    /// Whether the room has refused us for certain.
    bool isRefused(Time now) const;

    /// Whether the time to wait for an answer is over.
    bool isUnanswered(Time now) const;

    /// Whether snapshots have come for so long that the acceptance must be lost.
    bool hasMissedAcceptance(Time now) const;

    /// The moment at which isSendDue(), isRefused() or isUnanswered() becomes true if nothing is
    /// heard.
    Time wakeAt() const;

  private:
    Time answerDeadline() const;
};

} // namespace drench::client
