#include "Bounds.h"

#include <ostream>

namespace {

float halved(float x) {
    return static_cast<float>(static_cast<double>(x) / 2.0);
}

} // namespace

Bounds::Bounds(vec2 corner, float width, float height)
    : l(corner.x), r(corner.x + width), b(corner.y), t(corner.y + height), w(width), h(height),
      halfW(halved(width)), halfH(halved(height)) {}

Bounds::Bounds(float left, float right, float bottom, float top)
    : l(left), r(right), b(bottom), t(top), w(right - left), h(top - bottom), halfW(halved(w)),
      halfH(halved(h)) {}

bool Bounds::contains(vec2 p) const {
    return l <= p.x && p.x <= r && b <= p.y && p.y <= t;
}

std::ostream& operator<<(std::ostream& out, const Bounds& bounds) {
    out << "l,r,b,t: " << bounds.l << ", " << bounds.r << ", " << bounds.b << ", " << bounds.t
        << std::endl;
    out << "w,h: " << bounds.w << ", " << bounds.h << std::endl;
    return out;
}
