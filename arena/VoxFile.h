#pragma once

#include "arena/Materials.h"
#include "src/MapManager.h"

#include <string>
#include <vector>

// Maps as voxel editors read and write them, in the widely used chunked .vox format. Its axes are
// right-handed with z up, ours are right-handed with y up, so nothing is mirrored:
//
//     column = x, row = z, depth index = (SIZE's y) - 1 - y
//
// A palette index is a cellValue, and its colour is colourOf(cellValue).

namespace drench::arena {

/// A colour of a voxel file that belongs to no cellValue, and the cellValue that its voxels got.
struct ReplacedColour {
    Colour colour;
    int cellValue = 0;
    long voxels = 0;

    bool operator==(const ReplacedColour&) const = default;
};

struct VoxImport {
    MapManager map;

    /// The colour with the most voxels first; equal counts are ordered by red, green and blue.
    std::vector<ReplacedColour> replaced;
};

/// Whether the bytes begin like a voxel file.
bool isVox(const std::string& bytes);

/// Reads a voxel file of one model. A voxel becomes a cell with `solid` 1 and the cellValue of its
/// colour, or of the nearest material if no cellValue has that colour (distance in Oklab; Ottosson,
/// 2020). Of two voxels in one cell the last counts, as in editors. Transparency is ignored, and so
/// are chunks other than SIZE, XYZI, RGBA and PACK. Throws InputError with the wrong byte's offset,
/// counted from 0, before any map is made.
VoxImport readVox(const std::string& bytes);

/// The map as a voxel file. Throws InputError if the format cannot hold it: a side beyond 256
/// cubes, or a cell that is neither `solid` 1 with a cellValue from 1 to 255 nor 0 and 0.
std::string writeVox(const MapManager& map);

} // namespace drench::arena
