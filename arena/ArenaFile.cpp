#include "arena/ArenaFile.h"

#include "arena/Plan.h"
#include "common/Files.h"

#include <utility>

namespace drench::arena {

ArenaFile readArena(const std::string& file) {
    const std::string bytes = readFile(file);
    ArenaFile arena;
    if (isVox(bytes)) {
        arena.text.map = readVox(file, bytes).map;
    } else if (isPlan(bytes)) {
        Plan plan = readPlan(bytes, file);
        arena.text.map = std::move(plan.map);
        arena.name = plan.name;
        arena.placeOf = [plan](const CellIndex& cell) { return plan.placeOf(cell); };
    } else {
        arena.text = readMapText(bytes);
        arena.isMapText = true;
    }
    return arena;
}

ArenaFile readWholeArena(const std::string& file) {
    ArenaFile arena = readArena(file);
    for (const TextProblem& problem : arena.text.problems) {
        if (!problem.harmless)
            throw InputError(file + ':' + std::to_string(problem.place.line) + ':' +
                             std::to_string(problem.place.column) + ": " + problem.words);
    }
    return arena;
}

VoxImport readVox(const std::string& file, const std::string& bytes) {
    try {
        return readVox(bytes);
    } catch (const InputError& error) {
        throw InputError(file + ": " + error.what());
    }
}

} // namespace drench::arena
