#include "Box.h"

Box::Box(vec3 middle, float size) : Box(middle, vec3(size)) {}

Box::Box(vec3 middle, vec3 dimensions) : centre(middle) {
    const vec3 half = dimensions / 2.0f;
    min = centre - half;
    max = centre + half;
}

void Box::move(vec3 dir, float amount) {
    const vec3 d = dir * amount;
    centre += d;
    min += d;
    max += d;
}
