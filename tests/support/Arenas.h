#pragma once

#include "src/MapManager.h"

#include <functional>
#include <string>

// Small worlds for tests, as the text that MapManager::init reads.

/// A world of the given size. Cell (i, j, k) is solid if `solid(i, j, k)` returns true.
std::string arenaText(int columns, int rows, int depth,
                      const std::function<bool(int, int, int)>& solid);

/// The world that this text describes.
MapManager loaded(const std::string& text);

/// A world of these dimensions with the one cell (i, j, k) solid.
MapManager onlySolid(int columns, int rows, int depth, int i, int j, int k);

MapManager withoutSolids(int columns, int rows, int depth);

/// A row of cells along x, '#' solid and '.' empty.
MapManager corridor(const std::string& cells);

/// 32 × 16 × 32 cubes, as large as the spawns need: a floor with its top at y = 64, walls to full
/// height around it, nothing else.
std::string emptyCourt();

/// Height of a player's centre with its feet a quarter of a unit above such a floor.
constexpr float standing = 139.25f;
