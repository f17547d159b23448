#pragma once

#include "game/Window.h"

#include <optional>
#include <string>

namespace drench::game {

/// What the command line of the window asks for.
struct Options {
    /// Empty if the player is to choose one.
    std::string room;

    /// Empty for the name of the settings.
    std::string name;

    /// The arena file that the room plays; empty to find it out among those known.
    std::string arena;

    /// How long to play; 0 until the window is closed.
    double seconds = 0.0;

    /// A picture of the last frame is written there; empty for none.
    std::string screenshot;

    /// Inputs to send as drench-bots does; empty for none.
    std::string script;

    /// The skill of a bot that plays instead; nothing for a person.
    std::optional<double> bot;

    PixelSize size;

    /// The most frames a second, 0 for the screen's own; nothing for those of the settings.
    std::optional<int> frameLimit;

    /// Whether to say at the end how long frames took.
    bool frameTimes = false;
};

/// Reads the command line. Returns the exit status if the program is to end, after --help or wrong
/// use.
std::optional<int> readOptions(int argc, char** argv, Options& options);

} // namespace drench::game
