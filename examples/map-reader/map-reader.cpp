// Reads a map as the server does, and asks where a shot along +x through its middle lands.
#include <drench/game/FileLoader.h>
#include <drench/game/MapManager.h>
#include <iostream>

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: map-reader MAPDATA" << std::endl;
        return 2;
    }
    MapManager map;
    map.init(fileStringContents(argv[1]));
    int solid = 0;
    for (const auto& column : map.cubes)
        for (const auto& row : column)
            for (const Box& cube : row)
                solid += cube.solid != 0;
    const vec3 middle(map.width / 2, map.height / 2, map.length / 2);
    std::cout << map.columns << " x " << map.rows << " x " << map.depth << " cells, " << solid
              << " solid; a shot lands at "
              << map.pointOfIntersection(middle, vec3(1.0f, 0.0f, 0.0f)) << std::endl;
}
