#include "game/Options.h"

#include "arena/picture/Image.h"
#include "common/CommandLine.h"
#include "game/OpenedRecording.h"
#include "game/RoomLink.h"
#include "game/Settings.h"
#include "src/Messages.h"

#include <CLI/CLI.hpp>
#include <utility>

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
    "Exit status: 0 after playing or watching, 1 when the room did not answer, let nobody in or "
    "was "
    "lost, or a video was interrupted, 2 when the command line, a file or the display cannot be "
    "used.";

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
    option("room", options.room,
           "Where to play, or a recorded match to watch; without one you choose on the screen",
           "HOST[:PORT], drench://HOST[:PORT] or FILE");
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
    CLI::Option* const video =
        option("--video", options.video, "Draw the recorded match there, without a display", "MP4");
    CLI::Option* const from = option("--from", options.from, "Where in the recording to begin", "S")
                                  ->check(numberBetween(0.0, longestRun));
    option("--to", options.to, "Where a video ends", "S")
        ->check(numberBetween(0.0, longestRun))
        ->default_str("its end")
        ->needs(video);
    CLI::Option* const view = option("--view", options.view,
                                     "From where it is seen: through a player's eye, behind a "
                                     "player, or above",
                                     "eye|follow|above")
                                  ->check(CLI::IsMember({"eye", "follow", "above"}).description(""))
                                  ->capture_default_str();
    CLI::Option* const player =
        option("--player", options.player, "Which player that is, 1 to 4", "N")
            ->check(numberBetween(1, maxPlayers))
            ->default_str("whoever recorded it");
    CLI::Option* const camera =
        option("--camera", options.camera,
               "See it from one place: the eye and a point to look at, world units", "X,Y,Z,X,Y,Z")
            ->delimiter(',')
            ->expected(6);
    option("--fps", options.videoRate, "Frames a second of a video", "N")
        ->check(numberBetween(1, 240))
        ->capture_default_str()
        ->needs(video);
    app.add_flag("--plain", options.isPlain, "A video without textures, drawn faster")
        ->needs(video);
    app.add_flag("--frame-times", options.frameTimes,
                 "Say at the end how long frames took and what else they cost");
    return parseArguments(app, argc, argv, [&] {
        options.size = {size[0], size[1]};
        if (isRecording(options.room))
            options.recording = std::exchange(options.room, "");
        options.room = roomOfLink(options.room);
        for (const CLI::Option* each : {video, from, view, player, camera}) {
            if (options.recording.empty() && each->count() > 0)
                throw CLI::ValidationError(each->get_name(), "wants a recorded match");
        }
        if (!options.video.empty() && (size[0] % 2 != 0 || size[1] % 2 != 0))
            throw CLI::ValidationError("--size", "a video's width and height are even numbers");
        if (options.name.size() > longestName)
            throw CLI::ValidationError("--name", options.name + " has more than " +
                                                     std::to_string(longestName) + " bytes");
    });
}

} // namespace drench::game
