#pragma once

#include "arena/Materials.h"

#include <imgui.h>

namespace drench::game {

// The look of everything that is said on the screen. Lengths are given for a picture 720 pixels
// high and grow with it.

/// Fonts, by what they are for.
struct Fonts {
    ImFont* small = nullptr;
    ImFont* text = nullptr;
    ImFont* strong = nullptr;
    ImFont* large = nullptr;
    ImFont* title = nullptr;
};

struct Theme {
    Fonts fonts;

    /// Pixels for each unit of length.
    float scale = 1.0f;

    float px(float units) const { return units * scale; }
    ImVec2 px(float x, float y) const { return {x * scale, y * scale}; }
};

namespace shade {
constexpr ImU32 glass = IM_COL32(7, 27, 52, 214);
constexpr ImU32 thinGlass = IM_COL32(7, 27, 52, 178);
constexpr ImU32 rim = IM_COL32(140, 206, 255, 52);
constexpr ImU32 white = IM_COL32(244, 250, 255, 255);
constexpr ImU32 pale = IM_COL32(172, 200, 226, 255);
constexpr ImU32 warm = IM_COL32(255, 178, 72, 255);
constexpr ImU32 water = IM_COL32(64, 186, 255, 255);
constexpr ImU32 recording = IM_COL32(255, 68, 62, 255);
constexpr ImU32 shadow = IM_COL32(2, 12, 26, 200);
} // namespace shade

/// The colour with its opacity multiplied by this share, 0 to 1.
ImU32 faded(ImU32 colour, float share);

ImU32 shadeOf(arena::Colour colour);

/// The sizes and colours of the library's own widgets.
void applyStyle(const Theme& theme);

/// Builds the fonts into the library's atlas, at this many pixels for each unit. Fonts that are not
/// installed are replaced by the library's own.
Fonts buildFonts(float scale);

/// Pixels for each unit of length in a picture of this size, in steps so that resizing seldom
/// rebuilds fonts. Whatever the player sets, there is room for the pages.
/// @param interfaceScale  of the usual size
float interfaceScaleFor(int width, int height, double interfaceScale);

} // namespace drench::game
