#pragma once

#include "game/Captions.h"
#include "game/Labels.h"
#include "game/Match.h"
#include "game/PlayerMark.h"
#include "game/ui/Theme.h"

#include <optional>
#include <string>
#include <vector>

namespace drench::game {

/// What is said over the picture of a match.
struct HudView {
    client::Time now;
    Palette palette = Palette::usual;
    std::vector<Label> labels;

    /// The sounds of the moment in words; null for none.
    const std::vector<Captions::Line>* captions = nullptr;

    /// What is bad about the line, or does not fit; empty for none.
    std::vector<std::string> warnings;

    /// What has just been done, in words.
    std::vector<std::string> news;

    /// Since a recording goes on; nothing without one.
    std::optional<double> recordingSeconds;
    bool hasCrosshair = true;

    /// Units at the lower edge that are left to others.
    float foot = 0.0f;
};

/// Draws it over the whole picture, below all windows.
void drawHud(const Theme& theme, const Match& match, const HudView& view);

} // namespace drench::game
