#pragma once

#include "common/Chance.h"

#include <optional>

namespace drench::bench {

/// What a player's hands do at one moment.
struct Move {
    /// Milliseconds since the beginning.
    double at = 0.0;

    /// A key change, else a turn; keyIndex::jump is only ever pressed.
    std::optional<int> key;
    bool isDown = false;

    /// Mouse counts of a turn; both may be 0.
    int dx = 0;
    int dy = 0;
};

/// Hands that make two key changes and 125 turns a second.
class Hands {
  public:
    enum class Habit {
        /// Any key at any time, and turns whose speed changes now and then.
        random,

        /// Ever the same: running, strafing, jumping, firing, while the view sways.
        scripted
    };

    Hands(Habit habit, std::uint64_t seed) : habit_(habit), chance_(seed) {}

    /// The next move; moments ascend.
    Move next();

  private:
    Move keyMove();
    Move turn();

    Habit habit_;
    Chance chance_;
    double nextKey_ = 0.0;
    double nextTurn_ = 0.0;
    int keyMoves_ = 0;
    bool keys_[6] = {};

    /// Counts a turn, and the sum of those downward.
    double turning_ = 0.0;
    int pitch_ = 0;
};

} // namespace drench::bench
