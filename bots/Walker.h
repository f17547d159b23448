#pragma once

#include "bots/Roadmap.h"
#include "bots/Steps.h"
#include "src/Vector.h"

#include <array>
#include <optional>
#include <vector>

namespace drench::bots {

/// Two neighbours on a route.
struct Stretch {
    int from;
    int to;
};

/// Follows a route over a roadmap, place by place, from nothing but the positions in snapshots.
/// Where the floor is level and open it cuts corners. The same positions give the same steps.
class Walker {
  public:
    /// Follows this route from now on, places as Roadmap::route gives them, the first below the
    /// walker.
    void follow(std::vector<int> route);

    /// What to do after a snapshot; to be called once for each.
    /// @param delay  how many of the latest steps have not acted yet in what the snapshot shows
    Steps step(const Roadmap& roadmap, vec3 position, int delay = 0);

    /// Whether there is nothing left to follow: arrived, or strayed from the route.
    bool isDone() const { return strayed_ || ahead_.empty(); }

    /// Whether it got no nearer for a second and a half, missed a jump again and again, or fell to
    /// a place that is not on the route.
    bool hasStrayed() const { return strayed_; }

    /// The stretch it was on when it strayed; nothing when it has not.
    std::optional<Stretch> failedStretch() const;

    /// Whether it is in a jump or a fall, from which a new route is better not begun.
    bool isAloft() const { return aloft_; }

    /// Places still ahead.
    const std::vector<int>& route() const { return ahead_; }

  private:
    vec3 foreseen(vec3 position, int delay) const;
    Steps chooseSteps(const Roadmap& roadmap, vec3 position, int delay);
    void advance();
    void settle(const Roadmap& roadmap, vec3 position, int here);
    void cutCorners(const Roadmap& roadmap, vec3 position, int row);
    bool landsForJump(const Roadmap& roadmap, vec3 position, vec3 ahead, int here) const;
    bool getsNearer(vec3 position, vec3 target);
    Steps stepOnLine(vec3 position, vec3 ahead, vec3 target, int delay);
    Steps stepOnRoad(const Roadmap& roadmap, vec3 ahead);

    /// The latest headings, the newest first.
    static constexpr int longestLag = 12;
    std::array<vec3, longestLag> headings_ = {};

    /// The position of the snapshot before.
    std::optional<vec3> before_;

    /// The place that it comes from, and those ahead.
    int from_ = -1;
    std::vector<int> ahead_;

    bool aloft_ = false;
    bool strayed_ = false;

    // What follows is about the way to the next place.

    /// It leads straight over open, level floor, from where the line starts.
    bool straight_ = false;
    vec3 lineStart_;
    float lookAhead_ = 0.0f;

    /// How far beside the line it was when it was caught, and ticks for which it has been held up.
    std::optional<vec3> caughtAside_;
    int heldUp_ = 0;

    /// It begins in the middle of the place, to have room on either side.
    bool centres_ = false;

    /// Snapshots since a jump was asked for, -1 when none is awaited.
    int sinceJump_ = -1;
    bool tookOff_ = false;
    int misses_ = 0;

    /// The least distance that is left so far, and snapshots since it was less; -1 at first.
    float nearest_ = 0.0f;
    int sinceNearer_ = -1;
};

} // namespace drench::bots
