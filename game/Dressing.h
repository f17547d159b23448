#pragma once

#include "arena/Rays.h"
#include "game/Match.h"
#include "game/Scene.h"
#include "game/Settings.h"

#include <optional>

namespace drench::game {

/// The colours that a player chose.
Palette paletteOf(const Settings& settings);

/// Gives the figures of a staged scene their names and colours by what the match knows, and the
/// names that can be seen from its camera their places.
void dress(Scene& scene, const Match& match, const arena::Grid& grid, Palette palette);

/// What is seen of oneself being soaked; nothing while one is alive.
std::optional<SoakedOverlay> soakedIn(const Match& match, client::Time now);

} // namespace drench::game
