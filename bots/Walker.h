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

/// Follows a route over a roadmap, place by place, by the positions in snapshots alone. Cuts
/// corners if the floor is level and open. The same positions give the same steps.
class Walker {
  public:
    /// Begins to follow this route: places as quickestRoute() returns them, the first below the
    /// walker.
    void follow(std::vector<int> route);

    /// The steps after a snapshot; to be called once for each.
    /// @param delay  the number of latest steps that have not acted yet in this snapshot
    Steps step(const Roadmap& roadmap, vec3 position, int delay = 0);

    /// Whether the walk is over: the walker has arrived, or has strayed from the route.
    bool isDone() const { return strayed_ || ahead_.empty(); }

    /// Whether the walker got no nearer for a second and a half, missed a jump again and again, or
    /// fell to a place that is not on the route.
    bool hasStrayed() const { return strayed_; }

    /// The stretch on which the walker strayed; nothing if it has not.
    std::optional<Stretch> failedStretch() const;

    /// Whether the walker is in a jump or a fall. A new route should not begin then.
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

    /// The position in the previous snapshot.
    std::optional<vec3> before_;

    /// The last place reached, and the places ahead.
    int from_ = -1;
    std::vector<int> ahead_;

    bool aloft_ = false;
    bool strayed_ = false;

    // State of the way to the next place.

    /// Whether the way leads straight over open, level floor, and the start of that line.
    bool straight_ = false;
    vec3 lineStart_;
    float lookAhead_ = 0.0f;

    /// The distance beside the line at which the body was caught on a corner, and ticks for which
    /// it has been held up.
    std::optional<vec3> caughtAside_;
    int heldUp_ = 0;

    /// Whether the body goes to the middle of the place first, for room on either side.
    bool centres_ = false;

    /// Snapshots since a jump was asked for, -1 if none is awaited.
    int sinceJump_ = -1;
    bool tookOff_ = false;
    int misses_ = 0;

    /// The least remaining distance so far, and snapshots since that minimum; -1 at first.
    float nearest_ = 0.0f;
    int sinceNearer_ = -1;
};

} // namespace drench::bots
