#pragma once

#include "game/PlayerMark.h"
#include "game/ui/Theme.h"

#include <string_view>

namespace drench::game {

/// Draws a player's shape in its colour, with a white edge, around a centre.
/// @param radius  pixels
void drawMark(ImDrawList& list, ImVec2 centre, float radius, const PlayerMark& mark,
              float opacity = 1.0f);

/// The size of a line of text, in pixels.
ImVec2 sizeOf(const ImFont* font, std::string_view text);

/// Draws a line of text with its upper left corner there. With a shadow it can be read on anything.
void drawText(ImDrawList& list, const ImFont* font, ImVec2 place, ImU32 colour,
              std::string_view text, bool hasShadow = false);

/// Draws a pane of glass.
void drawGlass(ImDrawList& list, const Theme& theme, ImVec2 from, ImVec2 to, float opacity = 1.0f);

} // namespace drench::game
