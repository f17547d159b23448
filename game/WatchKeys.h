#pragma once

#include "game/Inputs.h"

#include <glm/vec3.hpp>
#include <optional>
#include <vector>

namespace drench::game {

/// What a key asks for while a recorded match is watched.
enum class WatchCommand {
    pause,
    back,
    ahead,
    toBegin,
    toEnd,
    lastSoaking,
    nextSoaking,
    slower,
    faster,
    nextView,
    firstPlayer,
    secondPlayer,
    thirdPlayer,
    fourthPlayer
};

/// Nothing if the input asks for nothing there.
std::optional<WatchCommand> watchCommandOf(Input input);

/// The keys of a flight that are down.
class FlightKeys {
  public:
    void press(Input input, bool down);
    void releaseAll() { held_.clear(); }

    /// See Spectator::fly(). Shift makes the way longer.
    glm::vec3 way() const;

  private:
    std::vector<Input> held_;
};

} // namespace drench::game
