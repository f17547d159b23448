#pragma once

#include "Matrix.h"
#include "Quaternion.h"
#include "Vector.h"

// Conversions and integer arithmetic without undefined behaviour

/// Truncates toward zero; values beyond the type give its nearest value, NaN gives 0.
int truncateToInt(float x);
long truncateToLong(float x);

/// a + b and a · b modulo 2^32, as two's complement hardware has them.
int wrappingAdd(int a, int b);
int wrappingMultiply(int a, int b);

// Clamping

/// lo if x is below it, else hi if x is above it, else x. The low bound is tested first, so with
/// lo > hi every x from lo upward gives hi. A NaN x is returned as it is, a NaN bound never wins.
float clamp(float x, float lo, float hi);
int clamp(int x, int lo, int hi);

/// Each component clamped to the same bounds.
vec2 clamp(vec2 v, float lo, float hi);
vec3 clamp(vec3 v, float lo, float hi);
vec4 clamp(vec4 v, float lo, float hi);

// Interpolation. t is not limited to 0..1: beyond it the formulas extrapolate.

/// a + (b - a) · t; at t = 1 the last bit may differ from b.
float lerp(float a, float b, float t);
vec2 lerp(vec2 a, vec2 b, float t);
vec3 lerp(vec3 a, vec3 b, float t);
vec4 lerp(vec4 a, vec4 b, float t);

/// a · (1 - t) + b · t, not normalised, and not over the shorter arc.
quat lerp(quat a, quat b, float t);

/// lerp, then normalize() of the type; a vector that normalize() leaves alone is returned as it is.
vec2 nlerp(vec2 a, vec2 b, float t);
vec3 nlerp(vec3 a, vec3 b, float t);
vec4 nlerp(vec4 a, vec4 b, float t);
quat nlerp(quat a, quat b, float t);

/// Spherical interpolation of unit vectors: a turned towards b by t times the angle between them.
/// Opposite vectors have no plane to turn in: the result shrinks through zero.
/// Shoemake, "Animating rotation with quaternion curves", 1985.
vec2 slerp(vec2 a, vec2 b, float t);
vec3 slerp(vec3 a, vec3 b, float t);
vec4 slerp(vec4 a, vec4 b, float t);

/// Always the identity, whatever the arguments.
quat slerp(quat a, quat b, float t);

/// v mirrored by the plane with unit normal n: v - 2n · (n·v).
vec2 reflect(vec2 v, vec2 n);
vec3 reflect(vec3 v, vec3 n);
vec4 reflect(vec4 v, vec4 n);

// Transforms. Equal clip planes divide by zero and give infinities or NaN.

/// Perspective frustum between the planes left, right, bottom, top, near, far.
mat4 perspective(float l, float r, float b, float t, float n, float f);

/// Symmetric frustum: width by height, full vertical angle in degrees, near, far.
mat4 perspective(float aspect, float fovy, float n, float f);

/// Orthographic box between the planes left, right, bottom, top, near, far.
mat4 ortho(float l, float r, float b, float t, float n, float f);

/// Orthographic box whose shorter side reaches from -1 to 1, with y pointing down.
mat4 ortho(float aspect, float n, float f);

/// Viewing transform. Its x axis is (eye - centre) × up, which mirrors the usual one. Degenerate
/// input gives zero rows.
mat4 lookAt(vec3 eye, vec3 centre, vec3 up);

/// Moves by (x, y, z) world units.
mat4 translate(float x, float y, float z);
mat4 translate(vec3 v);

/// Stretches along the axes, or by s along all three.
mat4 scale(float x, float y, float z);
mat4 scale(float s);

/// Right-handed rotations about one axis, angle in degrees.
mat4 rotateX(float degrees);
mat4 rotateY(float degrees);
mat4 rotateZ(float degrees);
