#pragma once

#include "game/Window.h"

#include <optional>
#include <string>
#include <vector>

namespace drench::game {

/// What the command line of the window asks for.
struct Options {
    /// Empty if the player is to choose one.
    std::string room;

    /// The recording to watch instead; empty for none.
    std::string recording;

    /// The video to make of it; empty for none.
    std::string video;

    /// Seconds of the recording: where it begins, and the end of a video.
    double from = 0.0;
    std::optional<double> to;

    /// From where it is seen: "eye", "follow" or "above".
    std::string view = "eye";

    /// In whose eye or behind whom; 0 for whoever recorded it.
    int player = 0;

    /// An eye and the point that it looks at, world units; empty for none.
    std::vector<float> camera;

    /// Frames a second of a video.
    int videoRate = 30;

    /// Whether a video has no textures and rough edges.
    bool isPlain = false;

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
