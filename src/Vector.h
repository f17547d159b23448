#pragma once

#include <iosfwd>

// Small float vectors: plain values, components adjacent in memory in the order x, y, z, w.
// Every operation rounds to single precision, component by component. Nothing checks for zero or
// NaN except normalize(). Compound operators return nothing, so they cannot be chained.

struct vec2 {
    float x;
    float y;

    constexpr vec2(float alongX, float alongY) : x(alongX), y(alongY) {}

    vec2 operator+(const vec2& b) const { return {x + b.x, y + b.y}; }
    vec2 operator-(const vec2& b) const { return {x - b.x, y - b.y}; }
    vec2 operator*(const float& s) const { return {x * s, y * s}; }

    /// Divides each component in turn; s is read anew each time, so `v /= v.x` sees the new x.
    void operator/=(const float& s);

    float dot(vec2 b) const { return x * b.x + y * b.y; }

    /// Scales to unit length in place; a vector of length zero is left as it is.
    void normalize();
};

struct vec3 {
    float x;
    float y;
    float z;

    constexpr vec3() : vec3(0.0f, 0.0f, 0.0f) {}

    /// A number converts to a vector that holds it three times.
    constexpr vec3(float s) : vec3(s, s, s) {}
    constexpr vec3(float alongX, float alongY, float alongZ) : x(alongX), y(alongY), z(alongZ) {}

    vec3 operator+(const vec3& b) const { return {x + b.x, y + b.y, z + b.z}; }
    vec3 operator-(const vec3& b) const { return {x - b.x, y - b.y, z - b.z}; }
    vec3 operator*(const float& s) const { return {x * s, y * s, z * s}; }
    vec3 operator/(const float& s) const { return {x / s, y / s, z / s}; }
    vec3 operator/(const vec3& b) const { return {x / b.x, y / b.y, z / b.z}; }
    void operator+=(const vec3& b) { *this = *this + b; }
    void operator-=(const vec3& b) { *this = *this - b; }

    /// Divides each component in turn; s is read anew each time, so `v /= v.x` sees the new x.
    void operator/=(const float& s);

    float dot(vec3 b) const { return x * b.x + y * b.y + z * b.z; }

    /// The right-handed cross product, this × b.
    vec3 cross(vec3 b) const;

    /// Euclidean length; the root is taken in double precision.
    float length() const;

    /// Scales to unit length in place; a vector of length zero is left as it is.
    void normalize();
};

struct vec4 {
    float x;
    float y;
    float z;
    float w;

    constexpr vec4(float alongX, float alongY, float alongZ, float alongW)
        : x(alongX), y(alongY), z(alongZ), w(alongW) {}

    vec4 operator+(const vec4& b) const { return {x + b.x, y + b.y, z + b.z, w + b.w}; }
    vec4 operator-(const vec4& b) const { return {x - b.x, y - b.y, z - b.z, w - b.w}; }
    vec4 operator*(const float& s) const { return {x * s, y * s, z * s, w * s}; }

    /// Divides each component in turn; s is read anew each time, so `v /= v.x` sees the new x.
    void operator/=(const float& s);

    float dot(vec4 b) const { return x * b.x + y * b.y + z * b.z + w * b.w; }

    /// Scales to unit length in place; a vector of length zero is left as it is.
    void normalize();
};

static_assert(sizeof(vec2) == 8 && sizeof(vec3) == 12 && sizeof(vec4) == 16);

/// Writes the components parted by ", ", without brackets or line end.
std::ostream& operator<<(std::ostream& out, const vec2& v);
std::ostream& operator<<(std::ostream& out, const vec3& v);

/// Like the others, but z and w stand together: (1, 2, 3, 4) is written "1, 2, 34".
std::ostream& operator<<(std::ostream& out, const vec4& v);
