#pragma once

#include "arena/Map.h"

#include <cstddef>
#include <optional>
#include <span>

namespace drench::arena {

/// Cells that lie beside each other, by sides, with floors at most two cubes apart.
struct Area {
    std::size_t cells = 0;

    /// The first of them in the order of the map text.
    CellIndex first;

    bool operator==(const Area&) const = default;
};

/// The largest area of walkable cells that are not reached; of equally large ones, the first. Both
/// lists ascend. Nothing if all are reached.
std::optional<Area> largestUnreachedArea(std::span<const CellIndex> walkable,
                                         std::span<const CellIndex> reached);

} // namespace drench::arena
