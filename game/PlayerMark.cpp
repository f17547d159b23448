#include "game/PlayerMark.h"

#include "client/Records.h"

namespace drench::game {

namespace {

PlayerMark::Shape shapeOf(Headgear headgear) {
    switch (headgear) {
    case Headgear::fin:
        return PlayerMark::Shape::triangle;
    case Headgear::hat:
        return PlayerMark::Shape::square;
    case Headgear::eyes:
        return PlayerMark::Shape::circle;
    case Headgear::cone:
        break;
    }
    return PlayerMark::Shape::diamond;
}

} // namespace

PlayerMark markOf(char id, Palette palette) {
    if (!client::isPlayerId(id))
        return {PlayerMark::Shape::circle, {255, 255, 255}};
    const Livery& livery = liveryOf(id - '1', palette);
    return {shapeOf(livery.headgear), livery.colour};
}

} // namespace drench::game
