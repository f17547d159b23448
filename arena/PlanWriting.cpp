#include "arena/Map.h"
#include "arena/Materials.h"
#include "arena/Plan.h"
#include "arena/PlanKind.h"
#include "common/Files.h"

#include <algorithm>
#include <map>
#include <string>

namespace drench::arena {

namespace {

PlanKind kindOf(const Box& cube) {
    return {cube.solid, cube.cellValue};
}

/// The kinds of a map's cells and air, each with its character: the material's own if there is a
/// material, otherwise one that no material needs here.
std::map<PlanKind, char> charactersOf(const MapManager& map) {
    std::map<PlanKind, char> characters{{planAir, '\0'}};
    for (const auto& column : map.cubes) {
        for (const auto& row : column) {
            for (const Box& cube : row)
                characters.try_emplace(kindOf(cube), '\0');
        }
    }
    if (characters.size() > legendCharacters.size())
        throw InputError("cells of " + std::to_string(characters.size()) +
                         " kinds, air included; a plan has characters for " +
                         std::to_string(legendCharacters.size()));

    std::string free(legendCharacters);
    std::string unused;
    for (const Material& material : materials()) {
        const auto found = characters.find(usualKind(material.cellValue));
        if (found != characters.end())
            found->second = material.character;
        else
            unused += material.character;
        std::erase(free, material.character);
    }
    free += unused;
    std::size_t next = 0;
    for (auto& [kind, character] : characters) {
        if (character == '\0')
            character = free[next++];
    }
    return characters;
}

std::string legendLine(const PlanKind& kind, char character) {
    std::string name = materialName(kind.cellValue);
    std::replace(name.begin(), name.end(), ' ', '-');
    std::string value = std::to_string(kind.cellValue);
    if (kind != usualKind(kind.cellValue)) {
        value = std::to_string(kind.solid) + ":" + value;
        name = (kind.solid == 0 ? "passable-" : "solid-") + name;
    }
    return character + (" " + value + " " + name + "\n");
}

std::string gridOf(const MapManager& map, int row, const std::map<PlanKind, char>& characters,
                   std::span<const PlanMark> marks) {
    std::string grid;
    for (int k = 0; k < map.depth; ++k) {
        for (int i = 0; i < map.columns; ++i)
            grid += characters.at(kindOf(cell(map, i, row, k)));
        grid += "\n";
    }
    const std::size_t lineLength = static_cast<std::size_t>(map.columns) + 1;
    for (const PlanMark& mark : marks) {
        for (const CellIndex& cell : mark.cells) {
            const auto column = static_cast<std::size_t>(cell.column);
            if (cell.row == row)
                grid[static_cast<std::size_t>(cell.depth) * lineLength + column] = mark.character;
        }
    }
    return grid;
}

void requireName(const std::string& name) {
    const bool isOneLine = !name.empty() && !isBlankInPlan(name.front()) &&
                           !isBlankInPlan(name.back()) &&
                           std::none_of(name.begin(), name.end(), isControl);
    if (!isOneLine)
        throw InputError(quoted(name) + " as the arena's name; a name is not empty and has neither "
                                        "blanks at its ends nor control characters");
}

} // namespace

std::string writePlan(const Plan& plan, std::span<const PlanMark> marks) {
    const MapManager& map = plan.map;
    const std::string size = sizeWords(map.columns, map.rows, map.depth);
    requireName(plan.name);
    if (!isArenaSize(map.columns, map.rows, map.depth))
        throw InputError("a map of " + size + " cells; 1 to " + std::to_string(mostCells) +
                         " are allowed");
    const std::map<PlanKind, char> characters = charactersOf(map);

    std::string text = "arena " + plan.name + "\nsize " + std::to_string(map.columns) + " " +
                       std::to_string(map.rows) + " " + std::to_string(map.depth) + "\nlegend\n" +
                       legendLine(planAir, characters.at(planAir));
    for (const PlanMark& mark : marks)
        text.append(1, mark.character).append(" 0 ").append(mark.name).append("\n");
    for (const auto& [kind, character] : characters) {
        if (kind != planAir)
            text += legendLine(kind, character);
    }
    for (int row = 0; row < map.rows;) {
        const std::string grid = gridOf(map, row, characters, marks);
        const int first = row++;
        while (row < map.rows && gridOf(map, row, characters, marks) == grid)
            ++row;
        std::string range = std::to_string(first);
        if (row - first > 1)
            range += "-" + std::to_string(row - 1);
        text.append("\nrow ").append(range).append("\n").append(grid);
    }
    return text;
}

} // namespace drench::arena
