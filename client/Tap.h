#pragma once

#include "client/Clock.h"

#include <cstdint>
#include <functional>
#include <string_view>

namespace drench::client {

/// Which way a datagram goes.
enum class Way : std::uint8_t { fromRoom, toRoom };

/// Sees a datagram as it is on the wire, with the moment passed to the call that sends or receives
/// it; for recording. One received is seen before anything is made of it, and cut to 533 bytes, of
/// which the longest record has 532. Must not call the session.
using Tap = std::function<void(Way way, std::string_view datagram, Time now)>;

/// The same for several players at once, each with a line of its own to the room.
using LineTap =
    std::function<void(Way way, std::uint32_t line, std::string_view datagram, Time now)>;

/// Shows one player's datagrams to `tap`, as those of this line; an empty tap if `tap` is empty.
inline Tap onLine(const LineTap& tap, std::uint32_t line) {
    if (!tap)
        return {};
    return [tap, line](Way way, std::string_view datagram, Time now) {
        tap(way, line, datagram, now);
    };
}

} // namespace drench::client
