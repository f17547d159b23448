#include "Quaternion.h"

#include <cmath>
#include <iostream>

namespace {

/// normalize() leaves a quaternion alone if its squared length lies within this of zero or one.
constexpr float squaredLengthTolerance = 1e-5f;

} // namespace

void quat::normalize() {
    const float squaredLength = w * w + x * x + y * y + z * z;
    const double squared = static_cast<double>(squaredLength);
    const double tolerance = static_cast<double>(squaredLengthTolerance);
    if (std::fabs(squared) > tolerance && std::fabs(squared - 1.0) > tolerance) {
        const float length = static_cast<float>(std::sqrt(squared));
        w /= length;
        x /= length;
        y /= length;
        z /= length;
    }
}

void quat::fromAxisAngle(vec3 v, float angle) {
    const double half = static_cast<double>(static_cast<float>(static_cast<double>(angle) * 0.5));
    v.normalize();
    const float s = static_cast<float>(std::sin(half));
    x = v.x * s;
    y = v.y * s;
    z = v.z * s;
    w = static_cast<float>(std::cos(half));
}

float quat::getAxisAngle(vec3 /*axis*/, float /*angle*/) const {
    return static_cast<float>(std::acos(static_cast<double>(w)) * 2.0);
}

quat quat::operator*(const quat& b) const {
    return {w * b.x + x * b.w + y * b.z - z * b.y, w * b.y + y * b.w + z * b.x - x * b.z,
            w * b.z + z * b.w + x * b.y - y * b.x, w * b.w - x * b.x - y * b.y - z * b.z};
}

vec3 quat::operator*(const vec3& v) const {
    // v as a quaternion without a scalar part; the products leave only rounding in that part.
    vec3 unit = v;
    unit.normalize();
    const quat turned = *this * (quat(unit.x, unit.y, unit.z, 0.0f) * getConjugate());
    return {turned.x, turned.y, turned.z};
}

mat4 quat::toMatrix() const {
    const float xx = 2.0f * x * x;
    const float yy = 2.0f * y * y;
    const float zz = 2.0f * z * z;
    const float xy = 2.0f * x * y;
    const float xz = 2.0f * x * z;
    const float yz = 2.0f * y * z;
    const float xw = 2.0f * x * w;
    const float yw = 2.0f * y * w;
    const float zw = 2.0f * z * w;
    const float m00 = 1.0f - (yy + zz);
    const float m11 = 1.0f - (xx + zz);
    const float m22 = 1.0f - (xx + yy);
    return {m00,     xy - zw, xz + yw, 0.0f, //
            xy + zw, m11,     yz - xw, 0.0f, //
            xz - yw, yz + xw, m22,     0.0f, //
            0.0f,    0.0f,    0.0f,    1.0f};
}

void quat::display() const {
    std::cout << "quat(" << x << ", " << y << ", " << z << ", " << w << ")";
}
