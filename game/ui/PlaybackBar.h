#pragma once

#include "game/PlayerMark.h"
#include "game/Watching.h"
#include "game/ui/Theme.h"

namespace drench::game {

/// Units above the lower edge of the picture that the bar takes.
constexpr float playbackBarHeight = 92.0f;

/// Draws how far a recorded match has come, with a mark for each soaking in the colour of whoever
/// fired, and does what the mouse asks for there.
void drawPlaybackBar(const Theme& theme, Watching& watching, Palette palette);

/// Whether a place of the window lies on the bar.
bool isOnPlaybackBar(const Theme& theme, float x, float y);

} // namespace drench::game
