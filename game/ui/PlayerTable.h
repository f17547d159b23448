#pragma once

#include "game/Match.h"
#include "game/PlayerMark.h"
#include "game/ui/Theme.h"

#include <string>

namespace drench::game {

/// Draws who plays and how well, the best first.
/// @param room  as the player named it
void drawPlayerTable(const Theme& theme, const Match& match, Palette palette,
                     const std::string& room);

} // namespace drench::game
