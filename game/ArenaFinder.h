#pragma once

#include "client/Events.h"
#include "src/MapManager.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace drench::game {

/// Finds out which arena a room plays from the bodies in its snapshots: none is inside a cube, and
/// none stops rising or falling without one. A pure function of the maps and snapshots given to it.
class ArenaFinder {
  public:
    enum class Verdict { several, one, none };

    /// @param arenas  which must outlive this, the likeliest first
    explicit ArenaFinder(std::vector<const MapManager*> arenas);

    /// Judges the arenas by a snapshot. Those with ticks between them teach less.
    void see(const client::Snapshot& snapshot);

    Verdict verdict() const;

    /// The arenas that fit all snapshots so far, as indices, in their order.
    std::vector<std::size_t> fitting() const;

    /// The first of those with the fewest contradictions: what to show meanwhile. There must be an
    /// arena.
    std::size_t best() const;

    /// The snapshots in which an arena was contradicted. So many take it out: a single one may be
    /// a body that something moved.
    long contradictions(std::size_t arena) const { return contradictions_[arena]; }
    static constexpr long mostContradictions = 2;

  private:
    struct Track {
        vec3 position;
        std::int64_t tick = 0;

        /// World units, upward, of the tick before; nothing if a state is missing there.
        std::optional<float> rise;
    };

    Track follow(const PlayerUpdate& player, std::int64_t tick) const;

    std::vector<const MapManager*> arenas_;
    std::vector<long> contradictions_;

    /// One for each identifier.
    std::array<std::optional<Track>, maxPlayers> tracks_;
};

/// Whether a body can be centred there: in the arena, at any height, and inside no cube.
bool mayStandAt(const MapManager& map, vec3 centre);

/// Whether a body that rose or fell by `rise` in a tick, and not at all in the next one, can have
/// been stopped there by a cube.
bool mayStopAt(const MapManager& map, vec3 centre, float rise);

} // namespace drench::game
