#pragma once

#include "bots/Skill.h"
#include "bots/View.h"
#include "common/Chance.h"

#include <array>
#include <vector>

namespace drench::bots {

/// Turns the view as people do: by single smooth movements. Each ends a little beside its target,
/// and the next one corrects it.
///
/// A movement has the profile of least jerk (Flash and Hogan, 1985), overlapping movements add up
/// (Flash and Henis, 1991), and their ends scatter in proportion to their length (Harris and
/// Wolpert, 1998).
class Hand {
  public:
    Hand(const Skill& skill, Chance chance);

    /// Takes in the view of a snapshot. Call it once for each snapshot, before move().
    void feel(vec3 direction);

    /// The view after all counts sent so far have acted.
    View view() const { return sent_.front(); }

    /// Ticks until sent counts act, estimated from the views of snapshots: 0 if the next snapshot
    /// shows their effect.
    double delay() const { return delay_; }

    /// The present speed of the turn, counts per tick.
    View speed() const { return speed_; }

    /// Whole mouse counts.
    struct Counts {
        int dx = 0;
        int dy = 0;
    };

    /// A target of the view.
    struct Aim {
        View view;

        /// The target's own speed, in counts per tick.
        View drift;

        /// Errors up to this many counts are not corrected.
        double tolerance = 0.0;

        /// The share of the hand's speed to use, above 0 and up to 1.
        double haste = 1.0;
    };

    /// The next counts on the way to the target.
    Counts move(const Aim& aim);

    /// Forgets all movements and counts under way; to be called after the view was set otherwise.
    void letGo();

  private:
    struct Movement {
        View way;
        double duration;
        double elapsed;
    };

    /// The part of the movements under way that is still to come.
    View remaining() const;

    Skill skill_;
    Chance chance_;

    /// The view after all counts sent up to now, up to a tick ago, and so on. If an observed view
    /// lies beyond all of them, counts were lost or refused.
    std::array<View, 16> sent_{};
    bool feltBefore_ = false;
    double delay_ = 0.0;

    std::vector<Movement> movements_;
    double pause_ = 0.0;
    View pursuit_;
    View wobble_;
    View speed_;

    /// Fractions of counts not sent yet.
    View carry_;
};

} // namespace drench::bots
