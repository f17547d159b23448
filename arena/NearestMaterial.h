#pragma once

#include "arena/Materials.h"

namespace drench::arena {

/// The solid material whose colour is nearest by distance in Oklab (Ottosson, 2020). Of equally
/// near ones, the lowest cellValue.
int nearestMaterial(Colour colour);

} // namespace drench::arena
