// Any bytes as an arena plan.

#include "arena/Plan.h"
#include "tests/fuzz/InputErrors.h"
#include "tests/fuzz/Maps.h"
#include "tests/fuzz/Require.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <set>
#include <sstream>
#include <string>

using namespace drench;

namespace {

/// How many characters a plan has for kinds of cells.
constexpr std::size_t mostKinds = 93;

bool isSlowPlan(const std::string& text) {
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        std::istringstream words(line);
        std::string first;
        long columns = 0;
        long rows = 0;
        long depth = 0;
        if (words >> first >> columns >> rows >> depth && first == "size" &&
            isSlow(columns, rows, depth))
            return true;
    }
    return false;
}

void requirePlace(const std::string& text, std::string_view words) {
    requireOneLine(words);
    const auto line = takeNumber(words, "plan:");
    const auto column = takeNumber(words, ":");
    require(line && column && words.starts_with(": "),
            "an error begins with file, line and column");
    // Behind the last end of a line no line begins, and a byte order mark is no part of the first.
    const auto there = lineOf(text, *line);
    require(there && (*line == 1 || !there->empty() || !text.ends_with('\n') ||
                      *line <= std::count(text.begin(), text.end(), '\n')),
            "an error names a line of the file");
    require(*column >= 1 && static_cast<std::size_t>(*column) <= there->size() + 1,
            "an error names a column of its line");
}

std::size_t kindsOf(const MapManager& map) {
    std::set<std::pair<int, int>> kinds{{0, 0}};
    for (const auto& column : map.cubes) {
        for (const auto& row : column) {
            for (const Box& cube : row)
                kinds.insert({cube.solid, cube.cellValue});
        }
    }
    return kinds.size();
}

/// In what was read, a cell of one character is of one kind wherever it stands.
void requirePlaces(const std::string& text, const arena::Plan& plan) {
    const MapManager& map = plan.map;
    require(plan.gridLines.size() == static_cast<std::size_t>(map.rows), "every row has its grid");
    std::array<const Box*, 256> kinds{};
    for (int i = 0; i < map.columns; ++i) {
        for (int j = 0; j < map.rows; ++j) {
            for (int k = 0; k < map.depth; ++k) {
                const arena::TextPlace place = plan.placeOf({i, j, k});
                const auto line = lineOf(text, place.line);
                const auto index = static_cast<std::size_t>(place.column) - 1;
                require(line && index < line->size(), "a cell has its place in the plan");
                const Box& cube = arena::cell(map, i, j, k);
                const Box*& known = kinds[static_cast<unsigned char>((*line)[index])];
                if (!known)
                    known = &cube;
                require(known->solid == cube.solid && known->cellValue == cube.cellValue,
                        "cells with one character are of one kind");
            }
        }
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    if (isSlowPlan(text))
        return 0;
    arena::Plan plan;
    try {
        plan = arena::readPlan(text, "plan");
    } catch (const InputError& error) {
        requirePlace(text, error.what());
        return 0;
    }
    require(arena::isPlan(text), "a plan is known by its beginning");
    requirePlaces(text, plan);
    requireTextOf(plan.map);

    std::string written;
    try {
        written = arena::writePlan(plan);
    } catch (const InputError&) {
        require(kindsOf(plan.map) > mostKinds, "a plan that was read can be written");
        return 0;
    }
    const arena::Plan again = arena::readPlan(written, "written");
    require(again.name == plan.name && sameCells(again.map, plan.map),
            "what is written is read as the same plan");
    require(arena::writePlan(again) == written, "the same plan gives the same text");
    return 0;
}
