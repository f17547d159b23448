#include "arena/picture/Marks.h"

#include <algorithm>
#include <cmath>

namespace drench::arena {

std::vector<Mark> marksOf(std::span<const SpawnMark> spawns, float cubeSize) {
    std::vector<Mark> marks;
    const double size = cubeSize;
    for (const SpawnMark& spawn : spawns) {
        Mark mark;
        mark.number = std::to_string(spawn.number);
        mark.feet = {spawn.body.centre.x / size, spawn.body.min.y / size,
                     spawn.body.centre.z / size};
        mark.top = spawn.body.max.y / size;
        const double x = spawn.direction.x;
        const double z = spawn.direction.z;
        const double length = std::sqrt(x * x + z * z);
        if (length > 0.0) {
            mark.directionX = x / length;
            mark.directionZ = z / length;
        }
        marks.push_back(mark);
    }
    return marks;
}

void drawNumber(Image& image, ImagePoint centre, double radius, const std::string& number) {
    fillCircle(image, centre, radius + std::max(0.16 * radius, 1.0), white);
    fillCircle(image, centre, radius, signalColour);
    const int dot = std::max(1, static_cast<int>(1.25 * radius / glyphHeight));
    drawTextAround(image, centre, number, dot, white);
}

} // namespace drench::arena
