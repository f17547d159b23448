#pragma once

#include "arena/picture/Image.h"
#include "src/MapManager.h"
#include "src/Messages.h"

#include <deque>
#include <optional>
#include <span>
#include <string>

namespace drench::replay {

/// The path of one player over the ground, and the places of its soakings; the last part of a long
/// path.
class Track {
  public:
    explicit Track(std::string name) : name_(std::move(name)) {}

    /// A snapshot with the player came.
    void see(const PlayerUpdate& self);

    /// The player has left; its path does not connect to its next position.
    void breakOff();

    struct Point {
        vec3 position;

        /// Whether the player appeared here; otherwise it came from the point before.
        bool appeared = false;

        /// Whether it was soaked here.
        bool soaked = false;
    };

    const std::string& name() const { return name_; }
    const std::deque<Point>& points() const { return points_; }

    /// About an hour of running.
    static constexpr std::size_t mostPoints = 50000;

  private:
    void add(const Point& point);

    std::string name_;
    std::deque<Point> points_;

    /// The player's position in the last snapshot that showed it alive; absent if it has died or
    /// left since.
    std::optional<vec3> last_;
};

/// The arena from above, paler than arena::topPicture draws it and with all floors alike, with each
/// track in a colour of its own, a drop where somebody was soaked, and the names below.
arena::Image tracksPicture(const MapManager& map, std::span<const Track> tracks, int width,
                           int height);

} // namespace drench::replay
