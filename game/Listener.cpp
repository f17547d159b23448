#include "game/Listener.h"

#include <cmath>

namespace drench::game {

Bearing bearingOf(const Listener& listener, vec3 place) {
    const vec3 way = place - listener.place;
    Bearing bearing;
    bearing.distance = way.length();
    const float levelWay = std::hypot(way.x, way.z);
    const float levelView = std::hypot(listener.direction.x, listener.direction.z);
    if (!(levelWay > 0.0f))
        return bearing;
    if (!(levelView > 0.0f)) {
        bearing.ahead = 1.0f;
        return bearing;
    }
    // y points up: the right of a view along z is -x.
    const vec3 view = listener.direction / levelView;
    bearing.right = (way.z * view.x - way.x * view.z) / levelWay;
    bearing.ahead = (way.x * view.x + way.z * view.z) / levelWay;
    return bearing;
}

} // namespace drench::game
