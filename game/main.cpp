#include "arena/ArenaFile.h"
#include "arena/picture/Png.h"
#include "client/RoomAddress.h"
#include "common/CommandLine.h"
#include "common/Console.h"
#include "common/Decimals.h"
#include "common/Files.h"
#include "common/StopSignals.h"
#include "common/Timekeeper.h"
#include "game/Frame.h"
#include "game/Options.h"
#include "game/SettingsFile.h"
#include "game/Video.h"
#include "game/render/Screenshot.h"

#include <iostream>
#include <sys/resource.h>

using namespace drench;
using namespace drench::game;

namespace {

// Exit statuses, beside notUsable.
constexpr int played = 0;
constexpr int noRoom = 1;
constexpr int interrupted = 1;

/// @param start  of the program
void sayFrameCosts(const FrameCosts& costs, client::Time start) {
    const auto say = [](const GapHistogram& times) {
        std::cout << "p50 " << decimals(times.percentile(typical), 1) << " ms, p99 "
                  << decimals(times.percentile(nearlyAll), 1) << " ms, longest "
                  << decimals(times.longest(), 1) << " ms";
    };
    std::cout << costs.times.count() << " frames: ";
    say(costs.times);
    std::cout << "\nprocessor apart from rasterising: ";
    say(costs.processor);
    rusage used{};
    getrusage(RUSAGE_SELF, &used);
    const std::chrono::duration<double, std::milli> toFirst = costs.first.value_or(start) - start;
    std::cout << "\ndraw calls: at most " << costs.mostDrawCalls << "\nfirst frame: after "
              << decimals(toFirst.count(), 0) << " ms\nmemory: " << used.ru_maxrss / 1024
              << " MiB at most\n";
}

ReadSettings readOwnSettings() {
    const std::string file = settingsFile();
    ReadSettings read;
    if (!file.empty())
        read = readSettings(file);
    for (const std::string& problem : read.problems)
        std::cerr << problem << '\n';
    return read;
}

/// Keeps what the player changed, and not what the command line asked for this time.
void keep(Settings settings, const Settings& asked, const Settings& before) {
    if (settings.name == asked.name)
        settings.name = before.name;
    if (settings.frameLimit == asked.frameLimit)
        settings.frameLimit = before.frameLimit;
    if (const std::string file = settingsFile(); !file.empty())
        writeSettings(file, settings);
}

/// The room of the command line; nothing if the player is to choose.
std::optional<client::RoomAddress> roomOf(const Options& options) {
    if (options.room.empty())
        return std::nullopt;
    std::string problem;
    std::optional<client::RoomAddress> room = client::resolve(options.room, problem);
    if (!room)
        throw InputError(options.room + ": " + problem);
    return room;
}

/// Those that rooms may play, the likeliest first: the one of the command line alone, or all known.
KnownArenas arenasFor(const Options& options) {
    if (options.arena.empty())
        return readArenas(usualArena(), arenaFolders());
    arena::ArenaFile arena = arena::readWholeArena(options.arena);
    arena::requireCells(arena.text.map);
    KnownArenas named;
    named.arenas.push_back({options.arena, options.arena, std::move(arena.text.map)});
    return named;
}

/// Shows what the command line asks for.
void begin(Watching& watching, const MapManager& map, const Options& options) {
    Spectator& spectator = watching.spectator();
    if (options.player > 0)
        spectator.watch(static_cast<char>('0' + options.player));
    if (options.view == "follow") {
        spectator.setView(Spectator::View::following);
    } else if (options.view == "above") {
        const Camera camera = overviewOf(map);
        spectator.flyFrom(camera.eye, camera.direction);
    }
    if (!options.camera.empty()) {
        const std::vector<float>& at = options.camera;
        const glm::vec3 eye(at[0], at[1], at[2]);
        spectator.flyFrom(eye, glm::vec3(at[3], at[4], at[5]) - eye);
    }
    watching.playback().seek(options.from);
}

/// Draws a recorded match into a file.
int film(const Options& options) {
    requireWritable(options.video);
    const KnownArenas known = arenasFor(options);
    OpenedRecording opened = openRecording(options.recording, known.arenas, !options.arena.empty());
    for (const std::string& problem : opened.problems)
        std::cerr << problem << '\n';
    Watching watching(std::move(opened.playback), *opened.map);
    begin(watching, *opened.map, options);
    listenForSignals();
    Console console(false, false);
    ProgressLine progress(console);
    const VideoPlan plan{options.video, options.size, options.videoRate,
                         options.from,  options.to,   !options.isPlain};
    const bool isWhole = makeVideo(plan, watching, *opened.map, opened.mesh, [&](double share) {
        progress.show("Drawing: " + decimals(100.0 * share, 0) + " %");
        return stopAsked == 0;
    });
    return isWhole ? played : interrupted;
}

int play(const Options& options) {
    const client::Time start = client::Clock::now();
    const std::optional<client::RoomAddress> room = roomOf(options);
    KnownArenas known = arenasFor(options);
    std::vector<bots::Action> script;
    if (!options.script.empty())
        script = bots::readScript(readFile(options.script), options.script);
    if (!options.screenshot.empty())
        requireWritable(options.screenshot);
    const ReadSettings read = readOwnSettings();
    Settings asked = read.settings;
    if (!options.name.empty())
        asked.name = options.name;
    if (options.frameLimit)
        asked.frameLimit = *options.frameLimit;

    std::optional<OpenedRecording> opened;
    if (!options.recording.empty())
        opened = openRecording(options.recording, known.arenas, !options.arena.empty());

    listenForSignals();
    // The surface takes some tenths of a second, and so does opening the window.
    ShownArena arena(known.arenas);
    Window window("Drench", options.size);
    Frame frame(window, arena, asked,
                [&](const Settings& settings) { keep(settings, asked, read.settings); });
    for (const std::string& problem : read.problems)
        frame.warn(problem);
    for (const std::string& problem : known.problems)
        frame.warn(problem);
    if (room)
        frame.visit().join(*room, asked.name, client::Clock::now());
    if (opened) {
        frame.watch(std::move(*opened));
        begin(frame.screening()->watching(), frame.screening()->map(), options);
    }
    frame.autopilot().playScript(std::move(script));
    if (options.bot)
        frame.autopilot().letBotPlay(*options.bot);
    const Timekeeper timekeeper(options.seconds);
    while (frame.goesOn() && timekeeper.goesOn())
        frame.run();

    if (!options.screenshot.empty()) {
        frame.drawAgain();
        const PixelSize size = window.size();
        replaceFile(options.screenshot, arena::encodePng(screenshot(size.width, size.height)));
    }
    if (options.frameTimes)
        sayFrameCosts(frame.costs(), start);
    const std::string trouble = frame.visit().screens().whyNotPlaying();
    if (!trouble.empty())
        std::cerr << trouble << '\n';
    frame.visit().leave(client::Clock::now());
    return trouble.empty() ? played : noRoom;
}

} // namespace

int main(int argc, char** argv) {
    Options options;
    if (const std::optional<int> status = readOptions(argc, argv, options))
        return *status;
    return runTool([&] { return options.video.empty() ? play(options) : film(options); });
}
