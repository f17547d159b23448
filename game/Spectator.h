#pragma once

#include "game/Camera.h"
#include "src/MapManager.h"
#include "src/Messages.h"

#include <glm/vec3.hpp>
#include <span>

namespace drench::game {

/// Where the camera of somebody who looks on is: in a player's eye, behind a player, or flying.
class Spectator {
  public:
    enum class View { eye, following, flying };

    /// @param id  the player to begin with; 0 for the first one
    explicit Spectator(char id) : wanted_(id) {}

    View view() const { return view_; }

    /// A flight begins where the camera is.
    void setView(View view);

    /// Whose eye it is, or who is followed. Flying ends.
    void watch(char id);

    /// Where a flight goes on: world units.
    void flyFrom(glm::vec3 eye, glm::vec3 direction);

    /// Turns a flight, or the camera around whom it follows; radians, right and up.
    void turn(float right, float up);

    /// Flies on.
    /// @param way  right, up and ahead as one looks; 1 is a player's speed, longer ways are faster
    void fly(glm::vec3 way, float seconds);

    /// The player in whose eye one is or whom one follows: the one last wanted or, while it is not
    /// in the room, the first of these; 0 for none.
    char watched(std::span<const PlayerUpdate> players) const;

    /// The match leapt to another moment: nothing flows over from the one before.
    void leap() { followed_ = 0; }

    /// Puts the camera in its place. Behind a player it keeps out of cubes; while the player is
    /// soaked it stays where it was.
    /// @param player  the one watched; null for none
    void place(Camera& camera, const PlayerUpdate* player, const MapManager& map, float seconds);

    /// Whether a figure is so near to the camera that little else could be seen.
    bool isInTheWay(glm::vec3 figure, const Camera& camera) const;

  private:
    void follow(Camera& camera, const PlayerUpdate& player, const MapManager& map, float seconds);

    View view_ = View::eye;
    char wanted_ = 0;

    /// The flight.
    glm::vec3 eye_{0.0f};
    float yaw_ = 0.0f;
    float pitch_ = 0.0f;

    /// Behind a player: where it looks, smoothed, and by how much one looks around.
    char followed_ = 0;
    float followedYaw_ = 0.0f;
    float followedPitch_ = 0.0f;
    float aroundYaw_ = 0.0f;
    float aroundPitch_ = 0.0f;
};

} // namespace drench::game
