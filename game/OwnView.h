#pragma once

#include "game/Camera.h"
#include "src/Messages.h"

namespace drench::game {

/// Puts the camera where this player's eye is, and lets it look there. Stays where it is while the
/// player is soaked, and for numbers that are none.
void look(Camera& camera, const PlayerUpdate& self);

} // namespace drench::game
