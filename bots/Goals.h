#pragma once

#include "bots/Roadmap.h"
#include "common/Chance.h"

#include <cstddef>
#include <vector>

namespace drench::bots {

/// Where to go when nobody is about: now a place that was long out of sight, now one that this
/// player likes: high, in the middle, far from the last goal, each as much as its taste has it.
class Goals {
  public:
    /// @param curiosity  share of the goals that are places long out of sight
    Goals(const Roadmap& roadmap, double curiosity, Chance chance);

    /// Takes in which places are in sight and near; once for each snapshot. Far ones do not count:
    /// who stands in the shadow of a corner is only found by going there.
    void look(const Roadmap& roadmap, vec3 eye, vec3 direction);

    /// A place to go to next, -1 when the map has none.
    int next(const Roadmap& roadmap);

    /// Somebody was there; the next goals are better near it.
    void noteCompany(vec3 position);

  private:
    double appeal(const Roadmap& roadmap, int place) const;

    Chance chance_;

    double curiosity_;

    /// Weights of this one's liking.
    double forHeight_;
    double forMiddle_;
    double forChange_;
    double forCompany_;

    float lowest_ = 0.0f;
    float highest_ = 0.0f;

    /// The goal given out before, -1 where there was none.
    int before_ = -1;

    /// For each place when it was last in sight, in snapshots.
    std::vector<long> seenAt_;
    long tick_ = 0;

    /// The place that look() goes on with.
    std::size_t nextLook_ = 0;

    vec3 company_;

    /// Goals for which the company counts yet.
    int companyCounts_ = 0;
};

} // namespace drench::bots
