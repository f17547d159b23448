#include "arena/ArenaFile.h"
#include "arena/picture/Png.h"
#include "client/RoomAddress.h"
#include "common/CommandLine.h"
#include "common/Decimals.h"
#include "common/Files.h"
#include "common/StopSignals.h"
#include "common/Timekeeper.h"
#include "game/Frame.h"
#include "game/Options.h"
#include "game/SettingsFile.h"
#include "game/render/Screenshot.h"

#include <future>
#include <iostream>

using namespace drench;
using namespace drench::game;

namespace {

// Exit statuses, beside notUsable.
constexpr int played = 0;
constexpr int noRoom = 1;

void sayFrameTimes(const GapHistogram& times) {
    std::cout << times.count() << " frames: p50 " << decimals(times.percentile(typical), 1)
              << " ms, p99 " << decimals(times.percentile(nearlyAll), 1) << " ms, longest "
              << decimals(times.longest(), 1) << " ms\n";
}

Settings readOwnSettings() {
    const std::string file = settingsFile();
    if (file.empty())
        return {};
    ReadSettings read = readSettings(file);
    for (const std::string& problem : read.problems)
        std::cerr << problem << '\n';
    return read.settings;
}

int play(const Options& options) {
    std::string problem;
    const std::optional<client::RoomAddress> room = client::resolve(options.room, problem);
    if (!room)
        throw InputError(options.room + ": " + problem);
    arena::ArenaFile arena = arena::readWholeArena(options.arena);
    arena::requireCells(arena.text.map);
    std::vector<bots::Action> script;
    if (!options.script.empty())
        script = bots::readScript(readFile(options.script), options.script);
    if (!options.screenshot.empty())
        requireWritable(options.screenshot);
    Settings settings = readOwnSettings();
    if (!options.name.empty())
        settings.name = options.name;
    if (options.frameLimit)
        settings.frameLimit = *options.frameLimit;

    listenForSignals();
    // The surface takes some tenths of a second, and so does opening the window.
    std::future<ArenaMesh> mesh =
        std::async(std::launch::async, [&] { return meshOf(arena.text.map); });
    Window window("Drench", options.size);
    const ArenaMesh surface = mesh.get();
    std::optional<client::Session> session =
        client::Session::join(room->address, settings.name, client::Clock::now(), problem);
    if (!session)
        throw InputError(room->name + ": " + problem);
    Frame frame(window, std::move(*session), arena.text.map, surface, settings);
    frame.playScript(std::move(script));
    const Timekeeper timekeeper(options.seconds);
    while (frame.goesOn() && timekeeper.goesOn())
        frame.run();

    if (!options.screenshot.empty()) {
        frame.drawAgain();
        const PixelSize size = window.size();
        replaceFile(options.screenshot, arena::encodePng(screenshot(size.width, size.height)));
    }
    if (options.frameTimes)
        sayFrameTimes(frame.times());
    if (!frame.trouble().empty())
        std::cerr << room->name << ' ' << frame.trouble() << '\n';
    return frame.trouble().empty() ? played : noRoom;
}

} // namespace

int main(int argc, char** argv) {
    Options options;
    if (const std::optional<int> status = readOptions(argc, argv, options))
        return *status;
    return runTool([&] { return play(options); });
}
