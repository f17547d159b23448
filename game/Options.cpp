#include "game/Options.h"

#include "arena/picture/Image.h"
#include "common/CommandLine.h"
#include "game/RoomLink.h"
#include "game/Settings.h"
#include "src/Messages.h"

#include <CLI/CLI.hpp>

namespace drench::game {

namespace {

/// Pixels; in a smaller window nothing can be read.
constexpr int smallestSide = 100;

/// The characters of a name that the server keeps.
constexpr std::size_t longestName = sizeof PlayerUpdate::name - 1;

constexpr char endHelp[] =
    "Keys: W, A, S, D walk, the mouse turns, its left button fires, space jumps, Esc frees the "
    "mouse.\n"
    "\n"
    "Exit status: 0 after playing, 1 when the room did not answer, let nobody in or was lost, 2 "
    "when "
    "the command line, a file or the display cannot be used.";

} // namespace

std::optional<int> readOptions(int argc, char** argv, Options& options) {
    CLI::App app("The window: play a water fight.", "drench");
    app.set_version_flag("--version", "drench " DRENCH_VERSION);
    app.get_formatter()->column_width(30);
    app.footer(endHelp);
    const auto option = [&](const char* name, auto& value, const char* description,
                            const char* type) {
        return app.add_option(name, value, description)->type_name(type);
    };
    option("room", options.room, "Where to play; without one you choose on the screen",
           "HOST[:PORT] or drench://HOST[:PORT]");
    option("--name", options.name, "Your name, at most 11 bytes", "NAME")
        ->default_str("that of the settings");
    option("--arena", options.arena,
           "What the room plays: a map text, plan or voxel file; otherwise it is found out",
           "FILE");
    option("--seconds", options.seconds, "How long to play; 0 until the window is closed", "S")
        ->check(numberBetween(0.0, longestRun))
        ->capture_default_str();
    option("--screenshot", options.screenshot, "Write the last frame there", "PNG");
    option("--script", options.script,
           "Send the inputs that stand here, as drench-bots --script does", "FILE");
    std::array<int, 2> size = {options.size.width, options.size.height};
    option("--bot", options.bot, "Watch a bot of this skill, 0 to 1, play in your stead", "X")
        ->check(numberBetween(0.0, 1.0));
    option("--size", size, "Width and height of the window", "WxH")
        ->delimiter('x')
        ->check(numberBetween(smallestSide, arena::Image::largestSide))
        ->default_str("1280x720");
    option("--fps-limit", options.frameLimit, "The most frames a second; 0 for the screen's own",
           "N")
        ->check(numberBetween(frameLimitLimits.least, frameLimitLimits.most))
        ->default_str("that of the settings");
    app.add_flag("--frame-times", options.frameTimes,
                 "Say at the end how long frames took and what else they cost");
    return parseArguments(app, argc, argv, [&] {
        options.size = {size[0], size[1]};
        options.room = roomOfLink(options.room);
        if (options.name.size() > longestName)
            throw CLI::ValidationError("--name", options.name + " has more than " +
                                                     std::to_string(longestName) + " bytes");
    });
}

} // namespace drench::game
