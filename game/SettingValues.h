#pragma once

#include "game/Settings.h"

#include <type_traits>

namespace drench::game {

/// Calls `visit` with the table, the key and the field of each single value of the settings, and
/// with its limits if it is a number. This is the only list of them, for whoever reads, writes or
/// clamps settings.
template<class AnySettings, class Visit>
void visitValues(AnySettings& settings, const Visit& visit) {
    static_assert(std::is_same_v<std::remove_const_t<AnySettings>, Settings>);
    visit("mouse", "sensitivity", settings.sensitivity, sensitivityLimits);
    visit("mouse", "stick-sensitivity", settings.stickSensitivity, stickSensitivityLimits);
    visit("mouse", "invert-x", settings.invertX);
    visit("mouse", "invert-y", settings.invertY);
    visit("play", "toggle-fire", settings.toggleFire);
    visit("play", "show-where-shots-meet", settings.showWhereShotsMeet);
    visit("picture", "field-of-view", settings.fieldOfView, fieldOfViewLimits);
    visit("picture", "full-screen", settings.fullScreen);
    visit("picture", "frame-limit", settings.frameLimit, frameLimitLimits);
    visit("picture", "vsync", settings.vsync);
    visit("picture", "render-scale", settings.renderScale, renderScaleLimits);
    visit("picture", "interface-scale", settings.interfaceScale, interfaceScaleLimits);
    visit("picture", "colour-blind", settings.colourBlind);
    visit("picture", "less-motion", settings.lessMotion);
    visit("sound", "master-volume", settings.masterVolume, volumeLimits);
    visit("sound", "effects-volume", settings.effectsVolume, volumeLimits);
    visit("sound", "captions", settings.captions);
}

} // namespace drench::game
