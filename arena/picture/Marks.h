#pragma once

#include "arena/picture/Image.h"
#include "arena/picture/Picture.h"
#include "arena/picture/Scene.h"

#include <span>
#include <string>
#include <vector>

namespace drench::arena {

/// A spawn, in cells.
struct Mark {
    std::string number;

    /// The point below the body's centre, on the ground.
    Triple feet{};

    /// Height of the head.
    double top = 0.0;

    /// The view's horizontal part, of length 1; zero for a view straight up or down.
    double directionX = 0.0;
    double directionZ = 0.0;
};

std::vector<Mark> marksOf(std::span<const SpawnMark> spawns, float cubeSize);

/// A disc with the spawn's number.
void drawNumber(Image& image, ImagePoint centre, double radius, const std::string& number);

} // namespace drench::arena
