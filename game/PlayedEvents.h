#pragma once

#include "client/Events.h"
#include "client/Records.h"
#include "client/TickClock.h"

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace drench::game {

/// What happened in a recorded match, at a moment of the recording.
struct PlayedEvent {
    client::Time moment;
    client::Event event;
};

/// Reads one line of a recording: what a room said to one client, datagram by datagram.
class LineDecoder {
  public:
    /// More are passed over: four hours of a match, 300 MB in memory.
    static constexpr std::size_t mostEvents = 1'000'000;

    /// @param arrival  since the recording began, which is Time{}; must not descend
    /// @param datagram  passed over if it is no record of the protocol
    void take(client::Time arrival, std::string_view datagram);

    /// What the client sent tells who it is in a recording that began after its joining.
    void takeSent(client::Time moment, std::string_view datagram);

    /// All that the line told, in the order of its moments.
    ///
    /// A snapshot's moment is the one at which it was due, which a line of ticks over the arrivals
    /// around it gives: the line's jitter is not played again. Ticks ascend over all of the
    /// recording, even if the room was joined several times.
    std::vector<PlayedEvent> finish();

  private:
    void add(const client::Event& event);
    void take(const AcceptanceMessage& acceptance);
    void take(const UpdateMessage& state);
    void take(const TalkMessage& talk);
    void take(const client::UnknownRecord&) {}
    void take(const client::Receipt&) {}
    void take(const RefusalMessage&) {}

    std::vector<PlayedEvent> events_;
    client::TickClock clock_;
    client::Time now_;

    /// The tick of a session's first snapshot, and the newest one's.
    std::int64_t firstTick_ = 0;
    std::int64_t tick_ = 0;
    client::Time newest_;

    /// The recorder's identifier, and whether the newest snapshot has it.
    char ownId_ = 0;
    bool isIn_ = false;
    bool hasBegun_ = false;
};

} // namespace drench::game
