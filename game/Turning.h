#pragma once

namespace drench::game {

/// Counts of a mouse or of time on a stick, to be sent as one turn: Player::countsPerRadian.
struct ViewCounts {
    int dx = 0;
    int dy = 0;

    bool operator==(const ViewCounts&) const = default;
};

/// Which axes act the other way round.
struct InvertedAxes {
    bool x = false;
    bool y = false;
};

/// Makes whole counts of motions. What is left over of each is kept, so that slow motions turn by
/// the same in sum as fast ones.
class Turning {
  public:
    /// A mouse moved by this many of its own counts; positive x turns right, positive y down.
    /// @param sensitivity  counts of the view for each count of the mouse
    void moveMouse(double x, double y, double sensitivity, InvertedAxes inverted);

    /// A gamepad's stick stood at a place for some seconds.
    /// @param x,y  -1 to 1, right and down positive
    void holdStick(double x, double y, double seconds, double sensitivity, InvertedAxes inverted);

    /// The whole counts so far, which the rest is kept of; none beyond mostCounts.
    ViewCounts take();

    /// Forgets what has not been taken, as when the mouse is captured again.
    void forget() { x_ = y_ = 0.0; }

    /// The most counts of one take, several turns about: what is more is dropped.
    static constexpr double mostCounts = 10000.0;

    /// The counts a second of a stick held to its end with a sensitivity of 1: half a turn.
    static constexpr double stickCountsPerSecond = 1131.0;

  private:
    double x_ = 0.0;
    double y_ = 0.0;
};

/// A place of a stick with its dead zone cut out: the same direction, but nothing within the middle
/// fifth, 1 at the rim, and finer near the middle.
/// @param x,y  -1 to 1; changed in place
void cutDeadZone(double& x, double& y);

/// A trigger or a direction of a stick as a button. It goes down beyond two thirds of the way and
/// up below one third, so that a trembling hand presses it once.
class AxisButton {
  public:
    /// True if the button went down or up.
    /// @param share  0 to 1 of the way; anything less is 0
    bool move(double share);
    bool isDown() const { return down_; }

  private:
    bool down_ = false;
};

} // namespace drench::game
