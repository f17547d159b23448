#pragma once

#include "Vector.h"

// Row-major float matrices for column vectors on the right: element (i, j) of a mat4 is m[4i + j],
// of a mat3 m[3i + j], and a translation stands in the last column.

struct mat3 {
    /// Room as in a mat4; only the first nine are used.
    float m[16] = {};

    /// The identity.
    mat3();

    /// Nine values, row by row.
    mat3(float m00, float m01, float m02, float m10, float m11, float m12, float m20, float m21,
         float m22);

    /// Rows and columns exchanged.
    mat3 transpose() const;

    /// The third column multiplies v.y a second time and v.z is never read: the result is
    /// M × (v.x, v.y, v.y).
    vec3 operator*(const vec3& v) const;

    /// Writes one "|a, b, c|" line a row to standard output.
    void display() const;
};

struct mat4 {
    float m[16] = {};

    /// The identity.
    mat4();

    /// Sixteen values, row by row.
    mat4(float m00, float m01, float m02, float m03, float m10, float m11, float m12, float m13,
         float m20, float m21, float m22, float m23, float m30, float m31, float m32, float m33);

    /// Rows and columns exchanged.
    mat4 transpose() const;

    /// The upper left 3 × 3 block.
    mat3 toMat3() const;

    /// this × b; each element is summed left to right in single precision.
    mat4 operator*(const mat4& b) const;

    /// this × v; each component is summed left to right in single precision.
    vec4 operator*(const vec4& v) const;

    /// Writes one "|a, b, c, d|" line a row to standard output.
    void display() const;
};
