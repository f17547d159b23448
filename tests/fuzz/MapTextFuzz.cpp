// Any bytes as a map text: what the server makes of them, what it answers about such a map, and
// what the strict reader says. Up to a 0 byte they are the text, what follows are the questions:
// rays of six floats, start and direction.

#include "arena/MapText.h"
#include "bench/LiteralMarch.h"
#include "src/MapManager.h"
#include "tests/fuzz/Bytes.h"
#include "tests/fuzz/InputErrors.h"
#include "tests/fuzz/Maps.h"
#include "tests/fuzz/Require.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <sstream>
#include <vector>

using namespace drench;

namespace {

/// The literal march takes 5000 steps.
constexpr int mostRays = 4;

/// The header as the server reads it; false for one that it trusts with more lists than the input
/// could fill. With 2^31 columns it would allocate as many: a host writes the file, so that is its
/// rule.
bool isHarmlessHeader(const std::string& text) {
    int columns = 0;
    int rows = 0;
    int depth = 0;
    std::istringstream stream(text);
    stream >> columns >> rows >> depth;
    const auto lists = [](int number) { return std::max(1L, static_cast<long>(number)); };
    return lists(columns) <= mostFuzzedCells && lists(rows) <= mostFuzzedCells / lists(columns) &&
           lists(depth) <= mostFuzzedCells / (lists(columns) * lists(rows));
}

void requireShape(const MapManager& map) {
    const auto length = [](int number) { return static_cast<std::size_t>(std::max(0, number)); };
    require(map.cubes.size() == length(map.columns), "a list for each column");
    for (int i = 0; i < map.columns; ++i) {
        const auto& column = map.cubes[static_cast<std::size_t>(i)];
        require(column.size() == length(map.rows), "a list for each row");
        for (int j = 0; j < map.rows; ++j) {
            const auto& row = column[static_cast<std::size_t>(j)];
            require(row.size() == length(map.depth), "a cube for each depth index");
            for (int k = 0; k < map.depth; ++k) {
                const Box& cube = row[static_cast<std::size_t>(k)];
                const vec3 low(64.0f * static_cast<float>(i), 64.0f * static_cast<float>(j),
                               64.0f * static_cast<float>(k));
                require(cube.min.x == low.x && cube.min.y == low.y && cube.min.z == low.z,
                        "a cube stands in its cell");
                require(map.cubeIsNull(i, j, k) == (cube.solid == 0), "null is what is not solid");
                const vec3 middle = low + vec3(32.0f);
                require(map.collides(middle) == (cube.solid != 0), "solid cubes collide");
                require(!map.outOfBounds(middle), "cells are within bounds");
            }
        }
    }
}

bool haveEqualBits(vec3 a, vec3 b) {
    return std::memcmp(&a, &b, sizeof a) == 0;
}

void requireAnswers(const MapManager& map, vec3 start, vec3 dir) {
    const vec3 cell = map.boxToCheckForLineIntersection(start, dir);
    require(haveEqualBits(cell, literal::marchedCell(map, start, dir)),
            "the march ends where the march of single steps does");
    if (cell.x >= 0.0f)
        require(!map.cubeIsNull(static_cast<int>(cell.x), static_cast<int>(cell.y),
                                static_cast<int>(cell.z)),
                "a march ends at a solid cube");
    const vec3 point = map.pointOfIntersection(start, dir);
    const vec3 literalPoint = literal::pointOn(map, cell, start, dir);
    require(haveEqualBits(point, literalPoint) ||
                (std::isnan(point.x + point.y + point.z) &&
                 std::isnan(literalPoint.x + literalPoint.y + literalPoint.z)),
            "a ray enters that cube");

    require(!map.collides(start) || map.collides(Box(start, 0.0f)),
            "a body of no size collides where its point does");
    if (!map.hasCells())
        return;
    const vec3 indices = map.cubeIndices(start);
    require(indices.x >= 0.0f && indices.x < static_cast<float>(map.columns) && indices.y >= 0.0f &&
                indices.y < static_cast<float>(map.rows) && indices.z >= 0.0f &&
                indices.z < static_cast<float>(map.depth),
            "every point has a cell");
}

void requireProblems(const std::string& bytes, const arena::MapText& text) {
    arena::TextPlace last{1, 1};
    for (const arena::TextProblem& problem : text.problems) {
        const auto line = lineOf(bytes, problem.place.line);
        require(line && problem.place.column >= 1 &&
                    static_cast<std::size_t>(problem.place.column) <= line->size() + 1,
                "a problem has its place in the file");
        require(last <= problem.place, "problems come in the order of the file");
        last = problem.place;
        requireOneLine(problem.words);
    }
    require(text.hasHeader || !text.problems.empty(), "no header is a problem");
}

/// In a text without problems every number stands where it is said to.
void requirePlaces(const std::string& bytes, const arena::MapText& text) {
    for (int i = 0; i < text.map.columns; ++i) {
        for (int j = 0; j < text.map.rows; ++j) {
            for (int k = 0; k < text.map.depth; ++k) {
                const arena::TextPlace place = text.placeOf({i, j, k});
                const auto line = lineOf(bytes, place.line);
                require(line.has_value(), "a cell has its line");
                std::istringstream there(
                    std::string(line->substr(static_cast<std::size_t>(place.column) - 1)));
                int solid = 0;
                there >> solid;
                require(solid == arena::cell(text.map, i, j, k).solid,
                        "a cell's number stands at its place");
            }
        }
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto* const end = std::find(data, data + size, std::uint8_t{0});
    const std::string bytes(reinterpret_cast<const char*>(data),
                            static_cast<std::size_t>(end - data));
    std::string joined = bytes;
    std::erase(joined, '\n');
    if (!isHarmlessHeader(joined))
        return 0;

    MapManager map;
    map.init(joined);
    requireShape(map);
    Bytes questions(end, static_cast<std::size_t>(data + size - end));
    questions.next<char>();
    for (int i = 0; i < mostRays && !questions.isEmpty(); ++i) {
        const vec3 start = questions.next<vec3>();
        requireAnswers(map, start, questions.next<vec3>());
    }

    const arena::MapText text = arena::readMapText(bytes);
    requireProblems(bytes, text);
    if (!text.hasHeader)
        return 0;
    require(sameCells(text.map, map), "the strict reader's map is the server's");
    if (text.problems.empty())
        requirePlaces(bytes, text);
    requireTextOf(text.map);
    return 0;
}
