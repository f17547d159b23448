#include "tests/support/Arenas.h"

std::string arenaText(int columns, int rows, int depth,
                      const std::function<bool(int, int, int)>& solid) {
    std::string text =
        std::to_string(columns) + " " + std::to_string(rows) + " " + std::to_string(depth);
    for (int i = 0; i < columns; ++i) {
        for (int j = 0; j < rows; ++j) {
            for (int k = 0; k < depth; ++k)
                text += solid(i, j, k) ? " 1 1" : " 0 0";
        }
    }
    return text;
}

MapManager loaded(const std::string& text) {
    MapManager map;
    map.init(text);
    return map;
}

MapManager onlySolid(int columns, int rows, int depth, int i, int j, int k) {
    return loaded(arenaText(columns, rows, depth, [=](int column, int row, int z) {
        return column == i && row == j && z == k;
    }));
}

MapManager withoutSolids(int columns, int rows, int depth) {
    return loaded(arenaText(columns, rows, depth, [](int, int, int) { return false; }));
}

MapManager corridor(const std::string& cells) {
    return loaded(arenaText(int(cells.size()), 1, 1,
                            [&](int i, int, int) { return cells[size_t(i)] == '#'; }));
}

std::string emptyCourt() {
    return arenaText(32, 16, 32, [](int i, int j, int k) {
        return j == 0 || i == 0 || i == 31 || k == 0 || k == 31;
    });
}
