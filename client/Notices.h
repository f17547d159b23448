#pragma once

#include "client/Events.h"

#include <string_view>

namespace drench::client {

/// The event that a server's notice tells: PlayerJoined, PlayerLeft, Soaking, or Notice when it has
/// none of their forms. Names may hold any bytes, those of a notice included; the first reading
/// that fits is taken. A soaking between two names of 11 characters has lost its "!" on the wire.
/// @param text  up to its first 0, at most 30 bytes
Event parseNotice(std::string_view text);

} // namespace drench::client
