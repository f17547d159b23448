#pragma once

#include "arena/Rays.h"
#include "game/Scene.h"

#include <vector>

namespace drench::game {

/// The largest radius of a patch: it crosses no more than one edge of a cube's face to each side.
constexpr float largestPatch = 48.0f;

/// A patch around a point on the face of a cube, cut where no face goes on in its plane.
/// @param axis,side  the face's normal
/// @param radius  at most largestPatch
Patch patchOn(const arena::Grid& grid, glm::vec3 place, int axis, int side, float radius);

/// The shadow of a body in the air or on the ground, on the cube below it: paler the higher the
/// body is. Its strength is 0 where there is none.
Patch shadowOf(const arena::Grid& grid, glm::vec3 position);

/// The wet spots of an arena, drying.
class WetPatches {
  public:
    /// Wet spots at any time; a further one takes the place of the driest.
    static constexpr std::size_t most = 64;

    /// Water lands on a face: wets a spot, or a spot there anew.
    void wet(const arena::Grid& grid, glm::vec3 place, int axis, int side);

    void dry(float seconds);

    const std::vector<Patch>& patches() const { return patches_; }

  private:
    std::vector<Patch> patches_;
};

} // namespace drench::game
