#pragma once

#include "game/Labels.h"
#include "game/Match.h"
#include "game/PlayerMark.h"
#include "game/ui/Theme.h"

#include <string>
#include <vector>

namespace drench::game {

/// A sound in words, for those who do not hear it.
struct Caption {
    std::string words;

    /// Radians from straight ahead to where it comes from, to the right positive; nothing for
    /// one's own.
    std::optional<float> bearing;

    /// 1 when it begins, 0 when it is gone.
    float opacity = 1.0f;
};

/// What is said over the picture of a match.
struct HudView {
    client::Time now;
    Palette palette = Palette::usual;
    std::vector<Label> labels;
    std::vector<Caption> captions;

    /// What is bad about the line, or does not fit; empty for none.
    std::vector<std::string> warnings;
    bool hasCrosshair = true;
};

/// Draws it over the whole picture, below all windows.
void drawHud(const Theme& theme, const Match& match, const HudView& view);

} // namespace drench::game
