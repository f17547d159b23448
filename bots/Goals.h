#pragma once

#include "bots/Roadmap.h"
#include "common/Chance.h"

#include <cstddef>
#include <vector>

namespace drench::bots {

/// Chooses places to go to when nobody is about: either a place long out of sight, or a place to
/// this player's taste. Tastes weigh height, closeness to the middle and distance from the last
/// goal.
class Goals {
  public:
    /// @param curiosity  share of the goals that are places long out of sight
    Goals(const Roadmap& roadmap, double curiosity, Chance chance);

    /// Notes which places are in sight and near; once for each snapshot. Far places do not count: a
    /// player in the shadow of a corner is found only from nearby.
    void look(const Roadmap& roadmap, vec3 eye, vec3 direction);

    /// The next place to go to, -1 if the map has none.
    int next(const Roadmap& roadmap);

    /// Notes that somebody was at this position; the next goals are better near it.
    void noteCompany(vec3 position);

  private:
    double appeal(const Roadmap& roadmap, int place) const;

    Chance chance_;

    double curiosity_;

    /// The weights of this player's taste.
    double forHeight_;
    double forMiddle_;
    double forChange_;
    double forCompany_;

    float lowest_ = 0.0f;
    float highest_ = 0.0f;

    /// The previous goal, -1 if there was none.
    int before_ = -1;

    /// For each place the snapshot in which it was last in sight.
    std::vector<long> seenAt_;
    long tick_ = 0;

    /// The place that look() continues with.
    std::size_t nextLook_ = 0;

    vec3 company_;

    /// The number of goals still to be drawn towards the company.
    int companyCounts_ = 0;
};

} // namespace drench::bots
