#pragma once

#include "client/Events.h"

#include <string_view>

namespace drench::client {

/// Parses a server's notice into PlayerJoined, PlayerLeft or Soaking; any other text is a Notice.
/// Names may hold any bytes, even the words of a notice: the first reading that fits is taken. A
/// soaking between two names of 11 characters has lost its "!" on the wire.
/// @param text  up to its first 0, at most 30 bytes
Event parseNotice(std::string_view text);

/// What a record of words tells: a player's Chat, or the server's notice.
Event wordsOf(const TalkMessage& talk);

} // namespace drench::client
