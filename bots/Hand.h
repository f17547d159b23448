#pragma once

#include "bots/Skill.h"
#include "bots/View.h"
#include "common/Chance.h"

#include <array>
#include <vector>

namespace drench::bots {

/// Turns the view as people do: by single smooth movements, each of which ends a little beside
/// where it was meant to and is corrected by the next one.
///
/// The profile of a movement is that of least jerk (Flash and Hogan, 1985), movements overlap by
/// adding up (Flash and Henis, 1991), and their ends scatter in proportion to their length (Harris
/// and Wolpert, 1998).
class Hand {
  public:
    Hand(const Skill& skill, Chance chance);

    /// Takes in the view of a snapshot. Call it before move(), once for each.
    void feel(vec3 direction);

    /// The view once all counts that were sent have acted.
    View view() const { return sent_.front(); }

    /// Ticks for which sent counts stayed without effect, from how the view followed them: 0 where
    /// the next snapshot shows them.
    double delay() const { return delay_; }

    /// Counts per tick that are being turned now.
    View speed() const { return speed_; }

    /// Whole mouse counts.
    struct Counts {
        int dx = 0;
        int dy = 0;
    };

    /// Where to turn to.
    struct Aim {
        View view;

        /// How fast that moves, in counts per tick.
        View drift;

        /// Errors within so many counts are let be.
        double tolerance = 0.0;

        /// Share of the hand's speed that it is worth, above 0 and up to 1.
        double haste = 1.0;
    };

    /// The next counts on the way there.
    Counts move(const Aim& aim);

    /// Forgets movements under way and counts on theirs: when another view was set.
    void letGo();

  private:
    struct Movement {
        View way;
        double duration;
        double elapsed;
    };

    /// What of the movements under way is still to come.
    View remaining() const;

    Skill skill_;
    Chance chance_;

    /// The view as of all counts sent up to now, up to a tick ago and so on. A view that lies
    /// beyond all of them tells that counts were lost or refused.
    std::array<View, 16> sent_{};
    bool feltBefore_ = false;
    double delay_ = 0.0;

    std::vector<Movement> movements_;
    double pause_ = 0.0;
    View pursuit_;
    View wobble_;
    View speed_;

    /// Parts of counts that were not sent yet.
    View carry_;
};

} // namespace drench::bots
