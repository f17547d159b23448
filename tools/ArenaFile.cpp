#include "ArenaFile.h"

#include "Files.h"
#include "Plan.h"

#include <utility>

using arena::InputError;

ArenaFile readArena(const std::string& file) {
    const std::string bytes = arena::readFile(file);
    ArenaFile arena;
    if (arena::isVox(bytes)) {
        arena.text.map = readVox(file, bytes).map;
    } else if (arena::isPlan(bytes)) {
        arena::Plan plan = arena::readPlan(bytes, file);
        arena.text.map = std::move(plan.map);
        arena.name = plan.name;
        arena.placeOf = [plan](const arena::CellIndex& cell) { return plan.placeOf(cell); };
    } else {
        arena.text = arena::readMapText(bytes);
        arena.isMapText = true;
    }
    return arena;
}

ArenaFile readWholeArena(const std::string& file) {
    ArenaFile arena = readArena(file);
    for (const arena::TextProblem& problem : arena.text.problems) {
        if (!problem.harmless)
            throw InputError(file + ':' + std::to_string(problem.place.line) + ':' +
                             std::to_string(problem.place.column) + ": " + problem.words);
    }
    return arena;
}

arena::VoxImport readVox(const std::string& file, const std::string& bytes) {
    try {
        return arena::readVox(bytes);
    } catch (const InputError& error) {
        throw InputError(file + ": " + error.what());
    }
}
