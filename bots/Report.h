#pragma once

#include "bots/Tally.h"

#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

namespace drench::bots {

/// The results of one player.
struct PlayerReport {
    /// Its room as the user named it: "localhost:5000".
    std::string room;
    std::string name;
    Tally tally;
};

/// The choices of the user that decide how bots play.
struct BotSettings {
    std::string arena;
    std::uint64_t seed = 0;
    double skill = 0.0;
};

/// A run and its results.
struct Report {
    /// Absent when a script played.
    std::optional<BotSettings> bots;
    double seconds = 0.0;
    std::vector<std::string> rooms;

    /// The players of a room are adjacent, and the rooms are in their order.
    std::vector<PlayerReport> players;

    /// The number of rooms that let a player in.
    std::size_t roomsEntered() const;

    /// The number of players that were let in.
    std::size_t playersEntered() const;

    /// The total of all players, or of the players of a room.
    Tally total() const;
    Tally total(const std::string& room) const;

    /// The room with the longest gaps between snapshots, by the 99th percentile; empty if no room
    /// sent two snapshots.
    std::string worstRoom() const;

    /// The median over the players that know theirs, in milliseconds.
    std::optional<double> medianRoundTrip() const;
};

/// Writes a table for people: a line for each player who got in, or with several rooms a line for
/// the worst room; then the total of all players.
void writeTable(std::ostream& out, const Report& report);

/// Writes the same, with every player, as one JSON object for programs.
void writeJson(std::ostream& out, const Report& report);

} // namespace drench::bots
