#pragma once

#include "Box.h"
#include "Vector.h"

// Contact tests. Every box test is inclusive: touching counts.

/// Whether `point` lies on the side of the plane that `normal` points to, or on the plane.
bool pointIsInSinglePlane(vec3 point, vec3 planePoint, vec3 normal);

/// Point inside or on the box; a NaN coordinate is outside.
bool intersects(const Box& box, vec3 point);

/// Boxes overlap or touch; only their corners are read.
bool intersects(const Box& a, const Box& b);

/// One slab of the slab test (Kay and Kajiya, "Ray tracing complex scenes", 1986): narrows the
/// parameter range [enter, exit] of start + t · dir to the part between min and max. A dir of
/// magnitude below 1e-8 is parallel: then only `start` is tested and the range is left alone. On
/// false the range is left alone too.
bool Line_AABB_1d(float start, float dir, float min, float max, float& enter, float& exit);

/// Whether the segment meets the box with corners min and max; `hit` becomes the entry point, or
/// `start` when that lies inside. A miss leaves `hit` alone.
bool Line_AABB(vec3 start, vec3 end, vec3 min, vec3 max, vec3& hit);

/// Clips the segment by the box's six face planes (Cyrus and Beck, 1978) and returns whether the
/// clipped segment starts at the box. `hitPoint` becomes that start, on a miss as well; `hitNormal`
/// becomes the outward normal of the last face that moved it, and stays alone if none did.
bool intersectsLineAABB(vec3 start, vec3 end, Box box, vec3& hitPoint, vec3& hitNormal);

/// The outward normal of b's last flagged face whose distance to a is below 1e10: not the face of
/// least overlap. (-1, 0, 0) when no face is flagged.
vec3 normalOfAABBCollision(Box a, Box b);

/// The same for a point and the box's own flags.
vec3 normalOfAABBCollision(Box box, vec3 p);

/// Euclidean distance; the root is taken in double precision.
float distanceVec3(vec3 a, vec3 b);
