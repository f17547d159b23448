#pragma once

#include "game/FigurePoses.h"
#include "game/GunMotion.h"
#include "game/Scene.h"
#include "game/Water.h"

#include <optional>
#include <span>

namespace drench::game {

/// One's own living body.
struct OwnBody {
    char id = 0;

    /// The middle of the body, where the eye is.
    glm::vec3 position{0.0f};
    glm::vec3 direction{0.0f, 0.0f, 1.0f};
    bool shooting = false;
};

/// From where everybody is to what is seen of them: figures, water, one's own gun. Driven by states
/// and by the time that passes, so a prediction that is played again repeats nothing.
class Staging {
  public:
    /// @param map  the room's arena; must outlive this
    /// @param seed  for the drops
    Staging(const MapManager& map, std::uint64_t seed) : map_(&map), water_(map, seed) {}

    /// Sets all in the scene but names, sounds and what the screen shows of oneself being soaked.
    /// The camera must be in its place.
    /// @param own  nothing while soaked or looking on
    /// @param others  at most one of each identifier
    /// @param seconds  since the last call
    /// @param isCalm  less motion
    void show(Scene& scene, const std::optional<OwnBody>& own, std::span<const PlayerUpdate> others,
              float seconds, bool isCalm);

    const arena::Grid& grid() const { return water_.grid(); }

  private:
    void showOwn(Scene& scene, const OwnBody& own, float seconds, bool isCalm);

    const MapManager* map_;
    FigurePoses figures_;
    Walking walking_;
    GunMotion gunMotion_;
    Water water_;
};

} // namespace drench::game
