#include "Vector.h"

#include <cfloat>
#include <cmath>
#include <ostream>

static_assert(FLT_EVAL_METHOD == 0, "single-precision steps must round to single precision");

namespace {

float rootInDouble(float squared) {
    return static_cast<float>(std::sqrt(static_cast<double>(squared)));
}

template<typename Vector>
void scaleToUnitLength(Vector& v) {
    const float length = rootInDouble(v.dot(v));
    // A NaN length differs from zero and divides on purpose.
    if (static_cast<double>(length) == 0.0)
        return;
    v /= length;
}

} // namespace

void vec2::operator/=(const float& s) {
    x /= s;
    y /= s;
}

void vec2::normalize() {
    scaleToUnitLength(*this);
}

void vec3::operator/=(const float& s) {
    x /= s;
    y /= s;
    z /= s;
}

vec3 vec3::cross(vec3 b) const {
    return {y * b.z - z * b.y, z * b.x - x * b.z, x * b.y - y * b.x};
}

float vec3::length() const {
    return rootInDouble(dot(*this));
}

void vec3::normalize() {
    scaleToUnitLength(*this);
}

void vec4::operator/=(const float& s) {
    x /= s;
    y /= s;
    z /= s;
    w /= s;
}

void vec4::normalize() {
    scaleToUnitLength(*this);
}

std::ostream& operator<<(std::ostream& out, const vec2& v) {
    return out << v.x << ", " << v.y;
}

std::ostream& operator<<(std::ostream& out, const vec3& v) {
    return out << v.x << ", " << v.y << ", " << v.z;
}

std::ostream& operator<<(std::ostream& out, const vec4& v) {
    return out << v.x << ", " << v.y << ", " << v.z << v.w;
}
