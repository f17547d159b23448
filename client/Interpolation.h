#pragma once

#include "client/Clock.h"
#include "client/VisualError.h"
#include "src/MapManager.h"
#include "src/Messages.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <vector>

namespace drench::client {

/// Everyone in the room at any moment: between snapshots blended, beyond the newest one carried on
/// by the game's own movement, through no wall. Corrections fade: see VisualError.
class Interpolation {
  public:
    /// @param map  the room's arena; must outlive this
    explicit Interpolation(MapManager& map) : map_(&map) {}

    /// The snapshot of tick `tick` came. Ticks must ascend; another is passed over.
    void take(const UpdateMessage& state, std::int64_t tick, Time arrival);

    /// The players as of tick `tick`, with its fraction, drawn at `now`. Those who spawn, are
    /// soaked or leave do so between two ticks and are never blended. Nothing before the first
    /// snapshot. Movement is carried on for at most `longestCarry` ticks; then players stand.
    std::vector<PlayerUpdate> at(double tick, Time now);

    static constexpr int longestCarry = 30;

  private:
    struct Moment {
        std::int64_t tick;
        UpdateMessage state;
    };

    std::vector<PlayerUpdate> trueAt(double tick) const;
    std::vector<PlayerUpdate> carriedOn(double ticks) const;

    MapManager* map_;

    /// Ascending.
    std::deque<Moment> moments_;

    /// By identifier, from '1' on.
    std::array<VisualError, maxPlayers> errors_;

    /// The last tick drawn.
    double drawn_ = 0.0;
    bool hasDrawn_ = false;
};

/// A clock of ticks for drawing. It follows a target that jumps, and neither jumps itself nor goes
/// back.
class DrawnTick {
  public:
    /// The tick to draw at `now`. A distance to `target` shrinks by a twentieth of the time that
    /// passes, one of more than a tick by half a tick's time a tick; beyond 30 ticks the clock
    /// starts anew.
    /// @param period  milliseconds from tick to tick
    double advance(Time now, double target, double period);

  private:
    double tick_ = 0.0;
    Time last_;
    bool hasStarted_ = false;
};

/// The ticks behind the newest due snapshot at which others are drawn smoothly: two on a good line,
/// so that a single snapshot may get lost, and more by the lateness of snapshots and its standard
/// deviation.
/// @param lateness,spread,period  milliseconds
double interpolationDelay(double lateness, double spread, double period);

} // namespace drench::client
