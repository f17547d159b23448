#include "Collisions.h"

#include "MathOps.h"

#include <cmath>
#include <utility>

namespace {

constexpr int faceCount = 6;

/// Components below this magnitude count as parallel to a slab.
constexpr double parallelTolerance = 1e-8;

/// Faces further away than this give no collision normal.
constexpr float farthestFace = 1e10f;

/// Outward, in the order of a box's face flags.
constexpr vec3 faceNormals[faceCount] = {{-1.0f, 0.0f, 0.0f}, {1.0f, 0.0f, 0.0f},
                                         {0.0f, -1.0f, 0.0f}, {0.0f, 1.0f, 0.0f},
                                         {0.0f, 0.0f, -1.0f}, {0.0f, 0.0f, 1.0f}};

vec3 lastFlaggedNormal(const float (&distances)[faceCount], const bool (&flags)[faceCount]) {
    int index = 0;
    for (int i = 0; i < faceCount; ++i) {
        // The bound is never lowered: the last face wins, not the nearest.
        if (flags[i] && farthestFace > distances[i])
            index = i;
    }
    return faceNormals[index];
}

} // namespace

bool pointIsInSinglePlane(vec3 point, vec3 planePoint, vec3 normal) {
    return (point - planePoint).dot(normal) >= 0.0f;
}

bool intersects(const Box& box, vec3 point) {
    return point.x >= box.min.x && box.max.x >= point.x && point.y >= box.min.y &&
           box.max.y >= point.y && point.z >= box.min.z && box.max.z >= point.z;
}

bool intersects(const Box& a, const Box& b) {
    return b.max.x >= a.min.x && a.max.x >= b.min.x && b.max.y >= a.min.y && a.max.y >= b.min.y &&
           b.max.z >= a.min.z && a.max.z >= b.min.z;
}

bool Line_AABB_1d(float start, float dir, float min, float max, float& enter, float& exit) {
    if (parallelTolerance > std::fabs(static_cast<double>(dir)))
        return start >= min && max >= start;

    // The parameters at which the line crosses the two planes, the nearer first.
    const float inverse = 1.0f / dir;
    float t0 = (min - start) * inverse;
    float t1 = (max - start) * inverse;
    if (t0 > t1)
        std::swap(t0, t1);
    if (t0 > exit || enter > t1)
        return false;
    if (t0 > enter)
        enter = t0;
    if (exit > t1)
        exit = t1;
    return true;
}

bool Line_AABB(vec3 start, vec3 end, vec3 min, vec3 max, vec3& hit) {
    // The whole segment at first; each slab leaves the part that lies in it. A point that is in all
    // three slabs is in the box.
    float enter = 0.0f;
    float exit = 1.0f;
    const vec3 d = end - start;
    if (!Line_AABB_1d(start.x, d.x, min.x, max.x, enter, exit) ||
        !Line_AABB_1d(start.y, d.y, min.y, max.y, enter, exit) ||
        !Line_AABB_1d(start.z, d.z, min.z, max.z, enter, exit))
        return false;
    hit = start + d * enter;
    return true;
}

bool intersectsLineAABB(vec3 start, vec3 end, Box box, vec3& hitPoint, vec3& hitNormal) {
    const vec3 planePoints[faceCount] = {{box.min.x, 0.0f, 0.0f}, {box.max.x, 0.0f, 0.0f},
                                         {0.0f, box.min.y, 0.0f}, {0.0f, box.max.y, 0.0f},
                                         {0.0f, 0.0f, box.min.z}, {0.0f, 0.0f, box.max.z}};
    // Each face moves the end that lies beyond its plane to the plane. A segment that meets the box
    // is left with its part inside. One that does not comes to a plane with both ends beyond it,
    // and they stay there, so that its start is not in the box.
    for (int face = 0; face < faceCount; ++face) {
        const vec3 planePoint = planePoints[face];
        const vec3 normal = faceNormals[face];
        const bool startOutside = pointIsInSinglePlane(start, planePoint, normal);
        const bool endOutside = pointIsInSinglePlane(end, planePoint, normal);
        if (startOutside == endOutside)
            continue;
        const float t = normal.dot(planePoint - start) / normal.dot(end - start);
        const vec3 crossing = lerp(start, end, t);
        if (startOutside) {
            start = crossing;
            hitNormal = normal;
        } else {
            end = crossing;
        }
    }
    hitPoint = start;
    return intersects(box, start);
}

vec3 normalOfAABBCollision(Box a, Box b) {
    const float distances[faceCount] = {a.max.x - b.min.x, b.max.x - a.min.x, a.max.y - b.min.y,
                                        b.max.y - a.min.y, a.max.z - b.min.z, b.max.z - a.min.z};
    return lastFlaggedNormal(distances, b.faceFlags);
}

vec3 normalOfAABBCollision(Box box, vec3 p) {
    const float distances[faceCount] = {p.x - box.min.x, box.max.x - p.x, p.y - box.min.y,
                                        box.max.y - p.y, p.z - box.min.z, box.max.z - p.z};
    return lastFlaggedNormal(distances, box.faceFlags);
}

float distanceVec3(vec3 a, vec3 b) {
    return (a - b).length();
}
