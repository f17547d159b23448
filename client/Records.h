#pragma once

#include "src/Messages.h"

#include <cstddef>
#include <string_view>
#include <variant>

// The room's records as values. A hostile room may send any bytes; readRecord() returns only fields
// that are values of their types and keep the promises of their records.

namespace drench::client {

/// The length of the longest name that a room keeps, in characters.
constexpr std::size_t longestName = sizeof(PlayerUpdate::name) - 1;

/// The answer to any datagram of ours.
struct Receipt {};

/// A datagram that is no record of the protocol.
struct UnknownRecord {};

using RoomRecord = std::variant<UnknownRecord, Receipt, AcceptanceMessage, RefusalMessage,
                                UpdateMessage, TalkMessage>;

/// Reads a datagram as the record that its code and its exact length name.
///
/// The identifier of an acceptance is from '1' to '4', the speaker of a talk one of those or
/// serverSpeaker; otherwise the datagram is an unknown record.
///
/// In a state an identifier is 0 or from '1' to '4', `shooting` is true for any byte but 0, a name
/// ends with a 0 after at most 11 characters, and paddings are 0. A slot becomes empty if its
/// identifier is another one, or if its position, direction or rotation holds a NaN or an infinity.
/// Empty slots may stand anywhere and are all alike. Nothing more is checked: finite numbers may be
/// of any size, rotation and direction of any length, points any integer, and two slots may have
/// one identifier.
RoomRecord readRecord(std::string_view datagram);

/// The bytes before the first 0, or all of them if there is none.
std::string_view untilZero(std::string_view bytes);

/// Whether a room gives this identifier to players.
bool isPlayerId(char id);

/// The first slot with this identifier, or null if there is none or the identifier is 0.
const PlayerUpdate* playerWith(const UpdateMessage& state, char id);

/// Whether a state shows the player soaked, waiting for its respawn.
bool isSoaked(const PlayerUpdate& player);

} // namespace drench::client
