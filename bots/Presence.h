#pragma once

#include "client/Clock.h"
#include "client/RoomAddress.h"
#include "common/Timekeeper.h"

#include <functional>
#include <string>
#include <vector>

namespace drench::bots {

/// The answer of a room to the question whether it is there.
enum class Presence { answers, nobodyListens, silent };

/// Asks all rooms at once whether they are there, by a keep-alive of no player: a room answers any
/// datagram with a receipt, and this one changes nothing there. Asks again every half second.
/// Returns when all have answered or refused, at `until`, or after a signal. A room without a route
/// or a free socket counts as silent.
std::vector<Presence> askRooms(const std::vector<client::RoomAddress>& rooms, client::Time until);

/// Asks until one of the rooms answers, for at least three seconds. Returns false if the time ends
/// or a stop is asked first.
/// @param note  called with one line for each silent room, once, with the reason
bool awaitRoom(const std::vector<client::RoomAddress>& rooms, const Timekeeper& timekeeper,
               const std::function<void(const std::string&)>& note);

} // namespace drench::bots
