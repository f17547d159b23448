#pragma once

#include "Matrix.h"
#include "Vector.h"

/// A rotation: vector part x, y, z, then the scalar part w, adjacent in memory in that order.
/// All arithmetic is single precision, summed left to right, unless said otherwise.
struct quat {
    float x;
    float y;
    float z;
    float w;

    /// The identity (0, 0, 0, 1).
    constexpr quat() : quat(0.0f, 0.0f, 0.0f, 1.0f) {}
    constexpr quat(float vectorX, float vectorY, float vectorZ, float scalar)
        : x(vectorX), y(vectorY), z(vectorZ), w(scalar) {}

    /// Scales to unit length in place. A squared length within 1e-5 of zero or of one, or NaN,
    /// leaves the quaternion as it is.
    void normalize();

    /// (-x, -y, -z, w); a zero changes its sign too.
    quat getConjugate() const { return {-x, -y, -z, w}; }

    /// Becomes the rotation by `angle` radians about v, whose length does not matter. A zero axis
    /// gives (0, 0, 0, cos(angle / 2)).
    void fromAxisAngle(vec3 v, float angle);

    /// The rotation angle 2·acos(w) in radians. Both parameters are copies that are not read: the
    /// axis is not delivered.
    float getAxisAngle(vec3 axis, float angle) const;

    /// The Hamilton product this × b: as rotations, b first.
    quat operator*(const quat& b) const;

    /// The direction of v turned by this rotation (q v q*). The length of v is dropped: a unit
    /// quaternion gives a unit vector, zero gives zero.
    vec3 operator*(const vec3& v) const;

    /// The rotation matrix of a unit quaternion; others are not normalised first.
    mat4 toMatrix() const;

    /// Writes "quat(x, y, z, w)" to standard output, without line end or flush.
    void display() const;
};

static_assert(sizeof(quat) == 16);
