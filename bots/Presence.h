#pragma once

#include "client/Clock.h"
#include "client/RoomAddress.h"
#include "common/Timekeeper.h"

#include <functional>
#include <string>
#include <vector>

namespace drench::bots {

/// What came of asking a room whether it is there.
enum class Presence { answers, nobodyListens, silent };

/// Asks all rooms at once, by a keep-alive of nobody: a room answers any datagram with a receipt,
/// and this one changes nothing there. Asks again every half second, and returns when all have
/// answered or refused, when the time is over, or when a signal has come. A room that cannot be
/// asked, for want of a way or of sockets, is silent.
std::vector<Presence> askRooms(const std::vector<client::RoomAddress>& rooms, client::Time until);

/// Asks until one of the rooms answers, for three seconds at least. False when the time is over, or
/// somebody has asked to stop, before one did.
/// @param note  told of each room in a line, once, why it does not answer
bool awaitRoom(const std::vector<client::RoomAddress>& rooms, const Timekeeper& timekeeper,
               const std::function<void(const std::string&)>& note);

} // namespace drench::bots
