#include "MathOps.h"

#include <cmath>
#include <limits>
#include <numbers>

namespace {

constexpr double radiansPerDegree = 0.017453292519943295;

template<typename Vector>
Vector lerpVector(Vector a, Vector b, float t) {
    return a + (b - a) * t;
}

template<typename Value>
Value normalized(Value v) {
    v.normalize();
    return v;
}

template<typename Vector>
Vector slerpVector(Vector a, Vector b, float t) {
    const float d = clamp(a.dot(b), -1.0f, 1.0f);
    const float theta = std::acos(d) * t;
    // The unit vector that stands on a in the plane of both (Gram and Schmidt): a turn in that
    // plane is a combination of the two.
    const Vector across = normalized(b - a * d);
    return a * std::cos(theta) + across * std::sin(theta);
}

template<typename Vector>
Vector reflectVector(Vector v, Vector n) {
    return v - (n * 2.0f) * n.dot(v);
}

struct SineCosine {
    float s;
    float c;
};

SineCosine sineCosineOfDegrees(float degrees) {
    const double radians = radiansPerDegree * static_cast<double>(degrees);
    return {static_cast<float>(std::sin(radians)), static_cast<float>(std::cos(radians))};
}

template<typename Integer>
Integer truncateTo(float x) {
    using Limits = std::numeric_limits<Integer>;
    // The smallest value is a power of two and so a float; the largest is not.
    constexpr float limit = -static_cast<float>(Limits::min());
    if (x >= limit)
        return Limits::max();
    if (x < -limit)
        return Limits::min();
    if (std::isnan(x))
        return 0;
    return static_cast<Integer>(x);
}

float divideInDouble(double a, float b) {
    return static_cast<float>(a / static_cast<double>(b));
}

} // namespace

int truncateToInt(float x) {
    return truncateTo<int>(x);
}

long truncateToLong(float x) {
    return truncateTo<long>(x);
}

int wrappingAdd(int a, int b) {
    return static_cast<int>(static_cast<unsigned>(a) + static_cast<unsigned>(b));
}

int wrappingMultiply(int a, int b) {
    return static_cast<int>(static_cast<unsigned>(a) * static_cast<unsigned>(b));
}

float clamp(float x, float lo, float hi) {
    if (lo > x)
        return lo;
    if (x > hi)
        return hi;
    return x;
}

int clamp(int x, int lo, int hi) {
    if (lo > x)
        return lo;
    if (x > hi)
        return hi;
    return x;
}

vec2 clamp(vec2 v, float lo, float hi) {
    return {clamp(v.x, lo, hi), clamp(v.y, lo, hi)};
}

vec3 clamp(vec3 v, float lo, float hi) {
    return {clamp(v.x, lo, hi), clamp(v.y, lo, hi), clamp(v.z, lo, hi)};
}

vec4 clamp(vec4 v, float lo, float hi) {
    return {clamp(v.x, lo, hi), clamp(v.y, lo, hi), clamp(v.z, lo, hi), clamp(v.w, lo, hi)};
}

float lerp(float a, float b, float t) {
    return a + (b - a) * t;
}
vec2 lerp(vec2 a, vec2 b, float t) {
    return lerpVector(a, b, t);
}
vec3 lerp(vec3 a, vec3 b, float t) {
    return lerpVector(a, b, t);
}
vec4 lerp(vec4 a, vec4 b, float t) {
    return lerpVector(a, b, t);
}

quat lerp(quat a, quat b, float t) {
    const float s = static_cast<float>(1.0 - static_cast<double>(t));
    return {a.x * s + b.x * t, a.y * s + b.y * t, a.z * s + b.z * t, a.w * s + b.w * t};
}

vec2 nlerp(vec2 a, vec2 b, float t) {
    return normalized(lerp(a, b, t));
}
vec3 nlerp(vec3 a, vec3 b, float t) {
    return normalized(lerp(a, b, t));
}
vec4 nlerp(vec4 a, vec4 b, float t) {
    return normalized(lerp(a, b, t));
}
quat nlerp(quat a, quat b, float t) {
    return normalized(lerp(a, b, t));
}

vec2 slerp(vec2 a, vec2 b, float t) {
    return slerpVector(a, b, t);
}
vec3 slerp(vec3 a, vec3 b, float t) {
    return slerpVector(a, b, t);
}
vec4 slerp(vec4 a, vec4 b, float t) {
    return slerpVector(a, b, t);
}
quat slerp(quat /*a*/, quat /*b*/, float /*t*/) {
    return quat();
}

vec2 reflect(vec2 v, vec2 n) {
    return reflectVector(v, n);
}
vec3 reflect(vec3 v, vec3 n) {
    return reflectVector(v, n);
}
vec4 reflect(vec4 v, vec4 n) {
    return reflectVector(v, n);
}

mat4 perspective(float l, float r, float b, float t, float n, float f) {
    const float xScale = 2.0f * n / (r - l);
    const float yScale = 2.0f * n / (t - b);
    const float xShift = (r + l) / (r - l);
    const float yShift = (t + b) / (t - b);
    const float zScale = -(f + n) / (f - n);
    const float zShift = -(2.0f * f * n) / (f - n);
    return {xScale, 0.0f,   xShift, 0.0f,   //
            0.0f,   yScale, yShift, 0.0f,   //
            0.0f,   0.0f,   zScale, zShift, //
            0.0f,   0.0f,   -1.0f,  0.0f};
}

mat4 perspective(float aspect, float fovy, float n, float f) {
    const double halfAngle = static_cast<double>(fovy / 360.0f) * std::numbers::pi;
    const float fh = static_cast<float>(std::tan(halfAngle) * static_cast<double>(n));
    const float fw = fh * aspect;
    return perspective(-fw, fw, -fh, fh, n, f);
}

mat4 ortho(float l, float r, float b, float t, float n, float f) {
    const float xScale = divideInDouble(2.0, r - l);
    const float yScale = divideInDouble(2.0, t - b);
    const float zScale = divideInDouble(-2.0, f - n);
    const float xShift = -((r + l) / (r - l));
    const float yShift = -((t + b) / (t - b));
    const float zShift = -((f + n) / (f - n));
    return {xScale, 0.0f,   0.0f,   xShift, //
            0.0f,   yScale, 0.0f,   yShift, //
            0.0f,   0.0f,   zScale, zShift, //
            0.0f,   0.0f,   0.0f,   1.0f};
}

mat4 ortho(float aspect, float n, float f) {
    if (aspect <= 1.0f) {
        const float b = 1.0f / aspect;
        return ortho(-1.0f, 1.0f, b, -b, n, f);
    }
    return ortho(-aspect, aspect, 1.0f, -1.0f, n, f);
}

mat4 lookAt(vec3 eye, vec3 centre, vec3 up) {
    const vec3 fwd = normalized(eye - centre);
    const vec3 side = normalized(fwd.cross(up));
    const vec3 upv = side.cross(fwd);
    const mat4 turn(side.x, side.y, side.z, 0.0f, //
                    upv.x, upv.y, upv.z, 0.0f,    //
                    fwd.x, fwd.y, fwd.z, 0.0f,    //
                    0.0f, 0.0f, 0.0f, 1.0f);
    return turn * translate(-eye.x, -eye.y, -eye.z);
}

mat4 translate(float x, float y, float z) {
    return {1.0f, 0.0f, 0.0f, x, //
            0.0f, 1.0f, 0.0f, y, //
            0.0f, 0.0f, 1.0f, z, //
            0.0f, 0.0f, 0.0f, 1.0f};
}

mat4 translate(vec3 v) {
    return translate(v.x, v.y, v.z);
}

mat4 scale(float x, float y, float z) {
    return {x,    0.0f, 0.0f, 0.0f, //
            0.0f, y,    0.0f, 0.0f, //
            0.0f, 0.0f, z,    0.0f, //
            0.0f, 0.0f, 0.0f, 1.0f};
}

mat4 scale(float s) {
    return scale(s, s, s);
}

mat4 rotateX(float degrees) {
    const auto [s, c] = sineCosineOfDegrees(degrees);
    return {1.0f, 0.0f, 0.0f, 0.0f, //
            0.0f, c,    -s,   0.0f, //
            0.0f, s,    c,    0.0f, //
            0.0f, 0.0f, 0.0f, 1.0f};
}

mat4 rotateY(float degrees) {
    const auto [s, c] = sineCosineOfDegrees(degrees);
    return {c,    0.0f, s,    0.0f, //
            0.0f, 1.0f, 0.0f, 0.0f, //
            -s,   0.0f, c,    0.0f, //
            0.0f, 0.0f, 0.0f, 1.0f};
}

mat4 rotateZ(float degrees) {
    const auto [s, c] = sineCosineOfDegrees(degrees);
    return {c,    -s,   0.0f, 0.0f, //
            s,    c,    0.0f, 0.0f, //
            0.0f, 0.0f, 1.0f, 0.0f, //
            0.0f, 0.0f, 0.0f, 1.0f};
}
