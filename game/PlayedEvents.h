#pragma once

#include "client/Events.h"

#include <span>
#include <string_view>
#include <vector>

namespace drench::game {

/// A datagram of the room as it was recorded.
struct HeardDatagram {
    /// Since the recording began, which is Time{}.
    client::Time arrival;
    std::string_view bytes;
};

/// What happened in a recorded match, at a moment of the recording.
struct PlayedEvent {
    client::Time moment;
    client::Event event;
};

/// What one line of a recording tells, in the order of its moments.
///
/// A snapshot's moment is the one at which it was due, which a line of ticks over the arrivals
/// around it gives: the line's jitter is not played again. Ticks ascend over all of the recording,
/// even if the room was joined several times.
/// @param heard  by ascending arrival; datagrams that are no record of the protocol are passed over
std::vector<PlayedEvent> playedEvents(std::span<const HeardDatagram> heard);

} // namespace drench::game
