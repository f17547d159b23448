#pragma once

#include "bots/Roadmap.h"
#include "common/Chance.h"

#include <array>

namespace drench::bots {

/// Where to go when nobody is about: high places, the middle, places not visited lately, each as
/// much as this player likes them.
class Goals {
  public:
    Goals(const Roadmap& roadmap, Chance chance);

    /// A place to go to next, -1 when the map has none.
    int next(const Roadmap& roadmap);

    /// Somebody was there; the next goals are better near it.
    void noteCompany(vec3 position);

  private:
    double appeal(const Roadmap& roadmap, int place) const;

    Chance chance_;

    /// Weights of this one's liking.
    double forHeight_;
    double forMiddle_;
    double forChange_;
    double forCompany_;

    float lowest_ = 0.0f;
    float highest_ = 0.0f;

    /// Goals given out before, the latest first; -1 where there was none.
    std::array<int, 3> before_{-1, -1, -1};

    vec3 company_;

    /// Goals for which the company counts yet.
    int companyCounts_ = 0;
};

} // namespace drench::bots
