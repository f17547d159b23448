#pragma once

#include "game/Screens.h"
#include "game/ui/Theme.h"

#include <optional>

namespace drench::game {

/// What a player chose on a page about the room one is in or wants to be in.
enum class RoomChoice { resume, settings, tryNow, stopTrying, leave, quit };

/// The menu of a match.
std::optional<RoomChoice> drawMenu(const Theme& theme, const Screens& screens);

/// That a room is being joined, or what is wrong with it and what can be done.
std::optional<RoomChoice> drawWay(const Theme& theme, const Screens& screens, client::Time now);

} // namespace drench::game
