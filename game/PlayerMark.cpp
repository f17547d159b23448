#include "game/PlayerMark.h"

#include "client/Records.h"

namespace drench::game {

namespace {

using Shape = PlayerMark::Shape;

constexpr Shape shapes[] = {Shape::circle, Shape::triangle, Shape::square, Shape::diamond};

/// The hues of the liveries, light enough to be read on dark glass.
constexpr arena::Colour usualColours[] = {
    {255, 122, 72}, {255, 208, 70}, {205, 140, 255}, {110, 170, 255}};

/// Orange, sky blue, yellow and reddish purple of Okabe and Ito, "Color universal design", 2008.
constexpr arena::Colour colourBlindColours[] = {
    {230, 159, 0}, {86, 180, 233}, {240, 228, 66}, {204, 121, 167}};

} // namespace

PlayerMark markOf(char id, Palette palette) {
    if (!client::isPlayerId(id))
        return {Shape::circle, {255, 255, 255}};
    const int index = id - '1';
    const auto& colours = palette == Palette::usual ? usualColours : colourBlindColours;
    return {shapes[index], colours[index]};
}

} // namespace drench::game
