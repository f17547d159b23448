#include "arena/ArenaFile.h"

#include "arena/Plan.h"
#include "common/Files.h"

#include <utility>

namespace drench::arena {

ArenaFile readArena(const std::string& file) {
    const std::string bytes = readFile(file);
    ArenaFile loaded;
    if (isVox(bytes)) {
        loaded.text.map = readVox(file, bytes).map;
    } else if (isPlan(bytes)) {
        Plan plan = readPlan(bytes, file);
        loaded.text.map = std::move(plan.map);
        loaded.name = plan.name;
        loaded.placeOf = [plan](const CellIndex& cell) { return plan.placeOf(cell); };
    } else {
        loaded.text = readMapText(bytes);
        loaded.isMapText = true;
    }
    return loaded;
}

void requireWhole(const MapText& text, const std::string& origin) {
    for (const TextProblem& problem : text.problems) {
        if (!problem.harmless)
            throw InputError(origin + ':' + std::to_string(problem.place.line) + ':' +
                             std::to_string(problem.place.column) + ": " + problem.words);
    }
}

ArenaFile readWholeArena(const std::string& file) {
    ArenaFile loaded = readArena(file);
    requireWhole(loaded.text, file);
    return loaded;
}

VoxImport readVox(const std::string& file, const std::string& bytes) {
    try {
        return readVox(bytes);
    } catch (const InputError& error) {
        throw InputError(file + ": " + error.what());
    }
}

} // namespace drench::arena
