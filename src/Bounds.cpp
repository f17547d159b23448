#include "Bounds.h"

#include <ostream>

namespace {

float halved(float x) {
    return static_cast<float>(static_cast<double>(x) / 2.0);
}

} // namespace

Bounds::Bounds(vec2 corner, float w_, float h_)
    : l(corner.x), r(corner.x + w_), b(corner.y), t(corner.y + h_), w(w_), h(h_), halfW(halved(w_)),
      halfH(halved(h_)) {}

Bounds::Bounds(float l_, float r_, float b_, float t_)
    : l(l_), r(r_), b(b_), t(t_), w(r_ - l_), h(t_ - b_), halfW(halved(w)), halfH(halved(h)) {}

bool Bounds::contains(vec2 p) const {
    return l <= p.x && p.x <= r && b <= p.y && p.y <= t;
}

std::ostream& operator<<(std::ostream& out, const Bounds& bounds) {
    out << "l,r,b,t: " << bounds.l << ", " << bounds.r << ", " << bounds.b << ", " << bounds.t
        << std::endl;
    out << "w,h: " << bounds.w << ", " << bounds.h << std::endl;
    return out;
}
