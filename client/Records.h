#pragma once

#include "src/Messages.h"

#include <cstddef>
#include <string_view>
#include <variant>

// The room's records as values. A hostile room may send any bytes; behind readRecord() every field
// is a value of its type, and keeps the promises of its record.

namespace drench::client {

/// As much of a name as a room keeps, in characters.
constexpr std::size_t longestName = sizeof(PlayerUpdate::name) - 1;

/// The answer to any datagram of ours.
struct Receipt {};

/// A datagram that is no record of the protocol.
struct UnknownRecord {};

using RoomRecord = std::variant<UnknownRecord, Receipt, AcceptanceMessage, RefusalMessage,
                                UpdateMessage, TalkMessage>;

/// The record that a datagram is, by its code and its exact length.
///
/// An acceptance gives an identifier from '1' to '4', a talk is spoken by one of those or by
/// serverSpeaker: others are unknown records.
///
/// In a state an identifier is 0 or from '1' to '4', `shooting` is true for any byte but 0, a name
/// ends with a 0 after at most 11 characters, and paddings are 0. A slot with another identifier
/// is empty here, and so is one whose position, direction or rotation holds a NaN or an infinity:
/// that player is nowhere. Empty slots may stand anywhere, and are all alike. No more is checked:
/// finite numbers may be of any size, rotation and direction of any length, points any integer, and
/// two slots may bear one identifier.
RoomRecord readRecord(std::string_view datagram);

/// The text in a field: what stands before the first 0, or all of it.
std::string_view untilZero(std::string_view bytes);

/// Whether a room gives this identifier to players.
bool isPlayerId(char id);

/// The slot of the player with this identifier, the first of several, or null; nobody has the
/// identifier 0.
const PlayerUpdate* playerWith(const UpdateMessage& state, char id);

} // namespace drench::client
