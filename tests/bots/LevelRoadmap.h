#pragma once

#include "arena/Map.h"
#include "arena/Reach.h"
#include "bots/Roadmap.h"
#include "tests/support/Courts.h"

#include <cstdlib>

using namespace drench;

/// A roadmap over a court, made at once: roads lead on foot from each walkable cell to its
/// neighbours in the same row of cubes, without cutting corners.
inline bots::Roadmap levelRoadmap(MapManager& map) {
    constexpr int ticksPerRoad = 11;
    bots::Roadmap roadmap;
    roadmap.map = &map;
    roadmap.grid = arena::gridOf(map);
    roadmap.placeOfCell.assign(static_cast<std::size_t>(map.columns * map.rows * map.depth), -1);
    for (const arena::CellIndex& cell : arena::walkableCells(map)) {
        using arena::cubeEdge;
        const auto middle = [](int index) { return cubeEdge * (static_cast<float>(index) + 0.5f); };
        const vec3 position(middle(cell.column),
                            cubeEdge * static_cast<float>(cell.row) + bots::standingHeight,
                            middle(cell.depth));
        roadmap.placeOfCell[static_cast<std::size_t>(
            (cell.column * map.rows + cell.row) * map.depth + cell.depth)] =
            static_cast<int>(roadmap.reach.places.size());
        roadmap.reach.places.push_back({cell, position, {}});
    }
    roadmap.roads.resize(roadmap.reach.places.size());
    for (std::size_t from = 0; from < roadmap.roads.size(); ++from) {
        arena::StandingPlace& place = roadmap.reach.places[from];
        for (std::size_t to = 0; to < roadmap.roads.size(); ++to) {
            const arena::CellIndex& other = roadmap.reach.places[to].feet;
            if (other.row == place.feet.row && std::abs(other.column - place.feet.column) +
                                                       std::abs(other.depth - place.feet.depth) ==
                                                   1) {
                place.next.push_back(static_cast<int>(to));
                roadmap.roads[from].push_back(
                    {static_cast<int>(to), bots::Gait::walk, ticksPerRoad});
            }
        }
    }
    return roadmap;
}

/// The middle of a body that stands in the middle of a cell of the lowest floor.
inline vec3 standingIn(int column, int depth) {
    return {64.0f * static_cast<float>(column) + 32.0f, 64.0f + bots::standingHeight,
            64.0f * static_cast<float>(depth) + 32.0f};
}
