#include "Box.h"

Box::Box(vec3 centre_, float size) : Box(centre_, vec3(size)) {}

Box::Box(vec3 centre_, vec3 dimensions) : centre(centre_) {
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
