#pragma once

#include "client/SentRecords.h"
#include "src/Player.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace drench::client {

/// One way in which the snapshots up to now can have come about.
struct Hypothesis {
    /// The player after the tick of the latest snapshot. Made without the dice of Player().
    Player player = Player('0', nullptr, 0.0f, 0);

    /// The number of that tick, and the ticks since the snapshot before.
    std::int64_t tick = 0;
    int ticks = 0;

    /// The first record that has neither acted nor is taken for lost.
    std::uint64_t next = 0;

    /// How badly it fits the times at which records should have acted, and the price of its losses:
    /// half a squared number of standard deviations.
    double cost = 0.0;

    /// The numbers of records taken for lost, ascending.
    std::vector<std::uint64_t> lost;
};

/// When the records of a snapshot and of the missed ones before it can have acted.
struct TickTimes {
    /// Ticks since the last snapshot, at least 1.
    int count = 1;

    /// The moment at which the snapshot of the last tick was due, and at which it came.
    Milliseconds due = 0.0;
    Milliseconds arrival = 0.0;
    Milliseconds period = 0.0;

    /// From the sending of a record to the due moment of the first tick in which it can act.
    Milliseconds delay = 0.0;

    /// The standard deviation of that.
    Milliseconds spread = 0.0;

    /// Whether the player moves in the last tick. When another player is removed, the next one
    /// sits out that tick.
    bool lastTickMoves = true;

    /// The cost of this number of ticks, by the moment at which the snapshot came.
    double cost = 0.0;

    /// By how much too early, negative, or too late, positive, a record acts in tick `tick`, 1 to
    /// count; 0 if the times agree.
    Milliseconds misfit(const SentRecord& record, int tick) const;
};

/// How far a search goes.
struct SearchLimits {
    /// The most views taken for lost in this snapshot, overdue ones apart. One key a tick may
    /// always be lost.
    int lostViews = 0;

    /// The most a record may act too early, and a view too late.
    Milliseconds early = 0.0;
    Milliseconds late = 0.0;

    /// A record that is later than this is overdue, and lost. Not less than `late`: among views
    /// with equal counts, the next one would explain as much as one that is a little late.
    Milliseconds overdue = 0.0;

    /// Whether positions and views need only be close, not the same bits.
    bool isTolerant = false;
};

/// Distances within which a tolerant search takes a state for the one seen: world units, and
/// lengths of direction and rotation (half of the turn by one count).
constexpr float closePosition = 0.01f;
constexpr float closeView = 0.0014f;

/// What the steps of a search cost: one for a view that is looked at, these for a record that acts
/// and for a tick. One is about 50 ns.
constexpr int turnEffort = 4;
constexpr int movementEffort = 6;

/// Adds a hypothesis, or lowers the cost of the one with the same future that is there.
void merge(std::vector<Hypothesis>& hypotheses, Hypothesis&& hypothesis);

/// Whether two players of one arena move alike from now on under the same records, to the bit.
bool sameFuture(const Player& a, const Player& b);

/// Whether a player's view, or its position, shows in these fields: to the bit, or within closeView
/// and closePosition.
bool hasView(const Player& player, const PlayerUpdate& seen, bool isTolerant);
bool hasPosition(const Player& player, const PlayerUpdate& seen, bool isTolerant);

/// Gives a player that is close to what was seen exactly that, so that errors do not add up.
void takeOver(Player& player, const PlayerUpdate& seen);

/// Whether a player's state shows in these fields, to the bit.
bool isSeen(const Player& player, const PlayerUpdate& seen);

} // namespace drench::client
