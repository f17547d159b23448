#pragma once

#include "game/Bindings.h"

#include <array>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace drench::game {

/// How the arena and all in it are drawn: by light alone, or with textures and smooth edges.
/// Automatic is plain where the driver draws with the processor.
enum class Picture { automatic, plain, full };

/// Their names in the settings file, in their order.
constexpr std::array<const char*, 3> pictureNames = {"automatic", "plain", "full"};

/// Whether a choice comes to the full picture.
/// @param drawsInSoftware  whether the driver draws with the processor
constexpr bool isFull(Picture picture, bool drawsInSoftware) {
    return picture == Picture::full || (picture == Picture::automatic && !drawsInSoftware);
}

/// What a player sets, and what the window remembers for its next start. The defaults are those of
/// a first start.
struct Settings {
    /// At most 11 bytes of whole characters, as a room keeps them.
    std::string name = "Player";

    /// Addresses of rooms, the latest first; see rememberRoom().
    std::vector<std::string> rooms;

    /// Counts of the view for each count of the mouse: Player::countsPerRadian. The default suits a
    /// mouse of 800 counts an inch.
    double sensitivity = 0.3;

    /// Of half a turn a second with the stick at its end.
    double stickSensitivity = 1.0;
    bool invertX = false;
    bool invertY = false;

    /// Whether each press of fire begins or ends it.
    bool toggleFire = false;

    /// Degrees from the left to the right edge of a picture of shape 16:9.
    double fieldOfView = 95.0;
    bool fullScreen = false;
    Picture picture = Picture::automatic;

    /// Frames a second; 0 for no limit.
    int frameLimit = 144;
    bool vsync = true;

    /// Of the window's width and height, what is drawn and then scaled up.
    double renderScale = 1.0;

    /// Of the usual size of text and controls.
    double interfaceScale = 1.0;

    /// Colours that can be told apart without telling red from green.
    bool colourBlind = false;

    /// Nothing that sways, kicks or bobs.
    bool lessMotion = false;

    /// Names sounds on the screen, with their direction.
    bool captions = false;

    /// Shows others where they will be when one's shot gets to the room. At 80 ms of round trip 97
    /// % of shots at what is drawn then meet, and 67 % otherwise: drench-lead-figures.
    bool showWhereShotsMeet = true;

    /// 0 to 1, all sounds and those of the game.
    double masterVolume = 0.8;
    double effectsVolume = 1.0;

    Bindings bindings;

    bool operator==(const Settings&) const = default;
};

/// The smallest and the largest value of a setting; its reader clamps to them.
template<class Number>
struct Limits {
    Number least;
    Number most;
};

constexpr Limits<double> sensitivityLimits{0.01, 10.0};
constexpr Limits<double> stickSensitivityLimits{0.1, 4.0};
constexpr Limits<double> fieldOfViewLimits{60.0, 130.0};
constexpr Limits<int> frameLimitLimits{0, 1000};
constexpr Limits<double> renderScaleLimits{0.25, 1.0};
constexpr Limits<double> interfaceScaleLimits{0.5, 3.0};
constexpr Limits<double> volumeLimits{0.0, 1.0};

/// The lowest frame limit other than none: a slower picture cannot be steered, not even to the
/// menu.
constexpr int leastFrameLimit = 10;

/// The most rooms that are remembered, and the longest address, in bytes: a host's name of 253 and
/// a port.
constexpr std::size_t mostRooms = 10;
constexpr std::size_t longestAddress = 259;

/// Calls `visit` with the table, the key and the field of each single value of the settings, and
/// with its limits if it is a number or its names if it is a choice. This is the only list of them,
/// for whoever reads, writes or clamps settings.
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
    visit("picture", "quality", settings.picture, pictureNames);
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

/// Brings every value within its limits, and no number to the least one. The name becomes one that
/// can be drawn, and what cannot be an address goes.
void clamp(Settings& settings);

/// Puts a room's address first, and forgets the oldest one beyond mostRooms. What cannot be an
/// address is not kept.
void rememberRoom(Settings& settings, std::string_view address);

} // namespace drench::game
