#pragma once

#include "arena/Map.h"
#include "arena/picture/Image.h"
#include "src/Box.h"
#include "src/MapManager.h"
#include "src/Vector.h"

#include <span>

namespace drench::arena {

// Pictures of arenas. A cube is a cell that blocks, drawn in its material's colour. All throw
// InputError if the map has no cells or no image can have the size.

/// A spawn in pictures: its number, and the body and view direction of a player who has landed
/// there.
struct SpawnMark {
    int number = 0;
    Box body;
    vec3 direction;
};

/// A corner of the arena as seen from above: north is depth index 0, west is column 0.
enum class Corner { southEast, southWest, northWest, northEast };

/// Isometric picture from above a corner. The two sides next to the viewer are left out above the
/// floor, so that border walls do not hide the inside. Bodies stand at the spawns, each with a
/// numbered pin and an arrow on the ground along its view. Bodies and arrows are faint behind
/// cubes.
Image isometricPicture(const MapManager& map, std::span<const SpawnMark> spawns, Corner from,
                       int width, int height);

/// Map from above, north up. Each place of the grid shows its highest floor, coloured by height and
/// by whether it is reached, whatever hangs over it. Smaller squares within show the next two
/// floors below. A place without a floor shows that. `walkable` and `reached` are cells of feet; a
/// floor is such a cell on top of a cube. Spawns beside the map are left out.
Image topPicture(const MapManager& map, std::span<const SpawnMark> spawns,
                 std::span<const CellIndex> walkable, std::span<const CellIndex> reached, int width,
                 int height);

/// The position of a map from above in its picture.
struct TopView {
    /// The map's north-west corner.
    ImagePoint corner;

    /// Pixels per cell.
    double scale = 1.0;

    /// The pixel point of a point of the world, world units, seen from above.
    ImagePoint above(vec3 point) const;
};

/// The position at which topPicture draws the map for the same arguments.
TopView topView(const MapManager& map, std::span<const CellIndex> walkable,
                std::span<const CellIndex> reached, int width, int height);

/// The view of an eye at `at` towards `look`, world units. Bodies stand at the spawns, except those
/// that would overlap the viewer's own body, which has the eye in its middle. A view straight up or
/// down is turned as if the head had been bent from looking north. Throws InputError if a
/// coordinate is not finite, the two points are the same, or the eye is in a cube.
Image eyePicture(const MapManager& map, std::span<const SpawnMark> spawns, vec3 at, vec3 look,
                 int width, int height);

} // namespace drench::arena
