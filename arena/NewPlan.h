#pragma once

#include <string>

namespace drench::arena {

/// A plan to begin an arena with: a floor, a border to the full height, and marks in the cells
/// where players appear. Throws InputError for a name that no arena can have, and for a size that
/// is no arena's or has no room for all of these cells within the border.
std::string newPlan(const std::string& name, int columns, int rows, int depth);

} // namespace drench::arena
