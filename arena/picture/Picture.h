#pragma once

#include "arena/Map.h"
#include "arena/picture/Image.h"
#include "src/Box.h"
#include "src/MapManager.h"
#include "src/Vector.h"

#include <span>

namespace drench::arena {

// Pictures of arenas. A cube is a cell that blocks, drawn in its material's colour. All throw
// InputError when the map has no cells or the size is no image's.

/// A spawn as pictures show it: its number, and body and view direction of a player who has landed
/// there.
struct SpawnMark {
    int number = 0;
    Box body;
    vec3 direction;
};

/// A corner of the arena as seen from above: north is depth index 0, west is column 0.
enum class Corner { southEast, southWest, northWest, northEast };

/// Isometric picture from above a corner. The two sides next to the viewer are left out above the
/// floor, so that border walls do not hide what they enclose. Bodies stand at the spawns, with an
/// arrow along the view on the ground, faint where cubes are before them, and a numbered pin.
Image isometricPicture(const MapManager& map, std::span<const SpawnMark> spawns, Corner from,
                       int width, int height);

/// Map from above, north up. Each place of the grid shows its highest floor, by height and whether
/// it is reached, whatever hangs over it, and in squares within the next two floors below; or that
/// there is none. `walkable` and `reached` are the cells that feet are in; a floor is such a cell
/// on top of a cube. Spawns beside the map are left out.
Image topPicture(const MapManager& map, std::span<const SpawnMark> spawns,
                 std::span<const CellIndex> walkable, std::span<const CellIndex> reached, int width,
                 int height);

/// Where a map from above lies in its picture.
struct TopView {
    /// Its north-west corner.
    ImagePoint corner;

    /// Pixels per cell.
    double scale = 1.0;

    /// The pixel point above a point of the world, world units.
    ImagePoint above(vec3 point) const;
};

/// Where topPicture puts the map when it is given the same.
TopView topView(const MapManager& map, std::span<const CellIndex> walkable,
                std::span<const CellIndex> reached, int width, int height);

/// What an eye at a point sees when it looks towards another, world units, with bodies standing at
/// the spawns but those that the viewer's own, with the eye in its middle, would overlap. Straight
/// up and down are seen as if the head had been bent from looking north. Throws InputError when a
/// coordinate is not finite, the two points are the same, or the eye is in a cube.
Image eyePicture(const MapManager& map, std::span<const SpawnMark> spawns, vec3 at, vec3 look,
                 int width, int height);

} // namespace drench::arena
