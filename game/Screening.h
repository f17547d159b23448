#pragma once

#include "game/OpenedRecording.h"
#include "game/Turning.h"
#include "game/WatchKeys.h"
#include "game/Watching.h"

#include <memory>
#include <string>

namespace drench::game {

/// A recorded match that somebody watches in a window, with keys and a mouse.
class Screening {
  public:
    explicit Screening(OpenedRecording opened);

    Watching& watching() { return watching_; }
    const Watching& watching() const { return watching_; }
    const MapManager& map() const { return *map_; }
    const std::string& title() const { return title_; }
    const std::vector<std::string>& problems() const { return problems_; }

    /// An input goes down or up. False if it is not for this.
    bool press(Input input, bool down);
    void releaseAll();

    /// Whether a button of the mouse is held, and its motions turn the camera.
    bool isDragging() const { return isDragging_; }

    /// Turns the camera, where it can be turned.
    void turn(ViewCounts counts);

    /// The next frame, so many seconds later; goes on by half a second at most.
    void pass(double seconds, const Settings& settings, Scene& scene);

  private:
    void act(WatchCommand command);

    std::string title_;
    std::vector<std::string> problems_;
    std::unique_ptr<MapManager> map_;
    Watching watching_;
    FlightKeys flight_;
    bool isDragging_ = false;
};

} // namespace drench::game
