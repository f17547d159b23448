#pragma once

#include "common/Chance.h"
#include "game/sound/Tones.h"

// Sounds made by program: filtered noise for jets, steps and splashes, sines for bubbles and
// bells. The same dice give the same samples. All begin and end in silence, without a click, and
// none but the jet lasts longer than a second.

namespace drench::game {

/// What steps sound like.
enum class Surface { stone, wood, sand, grass, marble, water };
constexpr int surfaceCount = 6;

/// The surface of a cube with this cellValue; stone for unknown ones.
Surface surfaceOf(int material);

/// A jet that goes on: its end leads into its beginning.
Samples jetLoop(Chance chance);

/// The hiss with which a jet begins.
Samples jetStart(Chance chance);
Samples splash(Chance chance);
Samples step(Surface surface, Chance chance);
Samples jump(Chance chance);

/// A thud.
Samples landing(Chance chance);

/// Soaked somebody: three cheerful notes, rising.
Samples soakingBlip();

/// Got soaked: a splash that runs down in bubbles.
Samples soakedGurgle(Chance chance);

/// A player returns: a bell.
Samples spawnChime();

/// Somebody says something: a soft tick.
Samples chatTick();

} // namespace drench::game
