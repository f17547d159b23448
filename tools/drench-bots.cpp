#include "arena/ArenaFile.h"
#include "arena/MapText.h"
#include "arena/picture/Png.h"
#include "bots/Chart.h"
#include "bots/ChartCache.h"
#include "bots/Play.h"
#include "bots/Presence.h"
#include "bots/Report.h"
#include "bots/Script.h"
#include "bots/ScriptedPlayer.h"
#include "common/Console.h"
#include "common/Decimals.h"
#include "common/ExitStatus.h"
#include "common/Files.h"
#include "common/StopSignals.h"
#include "common/Timekeeper.h"
#include "replay/Tracks.h"
#include "src/FilePath.h"
#include "tools/Arguments.h"
#include "tools/Saving.h"

#include <CLI/CLI.hpp>
#include <array>
#include <chrono>
#include <filesystem>
#include <iomanip>
#include <iostream>
#include <limits>
#include <map>
#include <random>
#include <sstream>
#include <string>
#include <vector>

using namespace drench;

// The command line of players without people; their senses and actions are in bots/.

namespace {

using client::Clock;

constexpr char programName[] = "drench-bots " DRENCH_VERSION;

// Exit statuses, beside notUsable.
constexpr int played = 0;
constexpr int nobodyGotIn = 1;

/// Pixels; a smaller picture shows nothing.
constexpr int smallestSide = 100;

/// The characters of a name that the server keeps.
constexpr std::size_t longestName = sizeof PlayerUpdate::name - 1;

/// A blank and a number fit behind a name of this length.
constexpr std::size_t longestNumberedName = longestName - 2;

/// The time between two updates of the live line.
constexpr std::chrono::seconds livePeriod{1};

struct Options {
    std::string target = "localhost:5000";
    std::string rooms;
    std::string arena = getResourcePath("mapdata");
    int players = 3;
    double skill = 0.5;
    std::string sight = "newest";
    double seconds = 0.0;
    std::uint64_t seed = 0;
    std::string name;
    std::string script;
    std::string record;
    std::string tracks;
    std::string save;
    std::array<int, 2> size = {1280, 1000};
    bool json = false;
    bool quiet = false;
};

const std::map<std::string, bots::Sight> sights = {
    {"newest", bots::Sight::newest}, {"drawn", bots::Sight::drawn}, {"ahead", bots::Sight::ahead}};

/// The problem with a word that is no sight; empty if it is one.
std::string oneOfSights(const std::string& word) {
    return sights.contains(word) ? "" : word + " is not newest, drawn or ahead";
}

std::string liveLine(const bots::Standing& now, std::uint64_t snapshotsBefore, double seconds) {
    std::ostringstream line;
    line << std::fixed << std::setprecision(1);
    const double perPlayer = static_cast<double>(now.snapshots - snapshotsBefore) /
                             static_cast<double>(std::max<std::size_t>(now.playing, 1));
    line << perPlayer / seconds << " ticks/s   round trip ";
    line << decimals(now.medianRoundTrip, 2) << (now.medianRoundTrip ? " ms" : "") << "   soaks "
         << now.soaks << "   playing " << now.playing << " of " << now.players;
    return line.str();
}

int writeReport(const bots::Report& report, const Options& options) {
    if (options.json)
        bots::writeJson(std::cout, report);
    else if (!options.quiet)
        bots::writeTable(std::cout, report);
    return report.playersEntered() > 0 ? played : nobodyGotIn;
}

int playScript(const Options& options) {
    const client::RoomAddress room = roomAt(options.target);
    const std::vector<bots::Action> script =
        bots::readScript(readFile(options.script), options.script);
    if (!options.record.empty())
        requireWritable(options.record);
    Console console(true, options.json);
    // Nobody says which arena the room plays.
    Saving saving(options.save, client::headerNow("", room.name, programName));
    listenForSignals();
    const Timekeeper timekeeper(options.seconds);
    const bots::ScriptedRun run = bots::playScript(
        room, options.name.empty() ? "Script" : options.name, script, !options.record.empty(),
        [&] { return timekeeper.goesOn(); }, client::onLine(saving.tap(), 0));
    const bool isSaved = saving.finish(console);
    bots::Report report;
    report.seconds = timekeeper.elapsed();
    report.rooms = {room.name};
    report.players = {run.player};
    if (!run.trouble.empty())
        std::cerr << room.name << ": " << run.trouble << '\n';
    const int status = writeReport(report, options);
    if (!options.record.empty())
        replaceFile(options.record, run.record);
    if (!isSaved)
        return notUsable;
    return run.trouble.empty() ? status : nobodyGotIn;
}

/// The arena's chart; nothing if a stop was asked for before it was made.
std::optional<bots::Roadmap> chartArena(MapManager& map, const Options& options, Console& console) {
    bool told = options.quiet || console.isLive();
    const auto tell = [&](const std::string& line) {
        console.show(line);
        if (!told)
            console.note(line + ", which takes some seconds");
        told = true;
    };
    std::optional<bots::Roadmap> roadmap = bots::keptChart(
        map, bots::chartFolder(), bots::programChecksum(), [] { return stopAsked == 0; }, tell);
    console.clear();
    return roadmap;
}

/// Lets the bots play until the time is over or a stop is asked for, and makes them leave.
void playOn(bots::Play& play, const Timekeeper& timekeeper, Saving& saving, Console& console) {
    client::Time shown = Clock::now();
    std::uint64_t snapshotsShown = 0;
    while (timekeeper.goesOn()) {
        play.step(std::min(timekeeper.end(), shown + livePeriod));
        const client::Time now = Clock::now();
        if (now < shown + livePeriod)
            continue;
        const bots::Standing standing = play.standing();
        console.show(
            liveLine(standing, snapshotsShown, std::chrono::duration<double>(now - shown).count()));
        saving.tellProblem(console);
        shown = now;
        snapshotsShown = standing.snapshots;
    }
    play.leave();
    console.clear();
}

int playBots(const Options& options) {
    const std::vector<client::RoomAddress> rooms = options.rooms.empty()
                                                       ? std::vector{roomAt(options.target)}
                                                       : roomsAt(options.target, options.rooms);
    arena::ArenaFile loaded = arena::readWholeArena(options.arena);
    if (!options.tracks.empty())
        requireWritable(options.tracks);
    Console console(options.quiet, options.json);
    Saving saving(options.save, client::headerNow(arena::writeMapText(loaded.text.map),
                                                  rooms.front().name, programName));
    listenForSignals();
    const auto note = [&](const std::string& line) { console.note(line); };
    std::optional<bots::Roadmap> roadmap;
    Timekeeper timekeeper(options.seconds);
    if (bots::awaitRoom(rooms, timekeeper, note))
        roadmap = chartArena(loaded.text.map, options, console);
    const bool plays = roadmap.has_value();
    if (!plays)
        roadmap.emplace();
    bots::Play play(*roadmap, rooms,
                    {.playersPerRoom = options.players,
                     .skill = options.skill,
                     .seed = options.seed,
                     .name = options.name,
                     .sight = sights.at(options.sight),
                     .keepTracks = !options.tracks.empty(),
                     .tap = saving.tap()},
                    note);
    if (plays) {
        // Neither waiting nor charting is playing.
        timekeeper = Timekeeper(options.seconds);
        playOn(play, timekeeper, saving, console);
    }
    const bool isSaved = saving.finish(console);

    bots::Report report;
    report.bots = {options.arena, options.seed, options.skill};
    report.seconds = plays ? timekeeper.elapsed() : 0.0;
    for (const client::RoomAddress& room : rooms)
        report.rooms.push_back(room.name);
    report.players = play.players();
    const int status = writeReport(report, options);
    if (!options.tracks.empty()) {
        const auto [width, height] = options.size;
        replaceFile(options.tracks, arena::encodePng(replay::tracksPicture(
                                        loaded.text.map, play.tracks(), width, height)));
    }
    return isSaved ? status : notUsable;
}

constexpr char scriptHelp[] =
    "A script has one input on each line, with the number of the snapshot since joining at which "
    "it is sent; lines that begin with # are skipped:\n"
    "  at 120 hold forward      forward, backward, left, right or fire\n"
    "  at 150 turn 90 -10       mouse counts; positive turns right and down\n"
    "  at 160 jump\n"
    "  at 200 release forward\n"
    "  at 300 say hello\n"
    "  at 310 leave             without it, plays until --seconds or Ctrl-C\n"
    "\n"
    "Exit status: 0 after playing, 1 when nobody got in anywhere or a script's player was out "
    "before its end, 2 when the command line or a file cannot be used.";

/// The options that exclude or need others.
struct Given {
    CLI::Option* seed = nullptr;
    CLI::Option* tracks = nullptr;
    CLI::Option* size = nullptr;
    CLI::Option* script = nullptr;
    CLI::Option* record = nullptr;

    /// The options that a script does not use.
    std::vector<CLI::Option*> ofBots;
};

Given addOptions(CLI::App& app, Options& options) {
    app.set_version_flag("--version", programName);
    app.get_formatter()->column_width(30);
    app.footer(scriptHelp);
    app.add_option("room", options.target, "Where to play")
        ->type_name("HOST[:PORT]")
        ->default_str(options.target);
    const auto option = [&](const char* name, auto& value, const char* description,
                            const char* type) {
        return app.add_option(name, value, description)->type_name(type);
    };
    Given given;
    CLI::Option* players = option("--players", options.players, "Players in each room, 1 to 4", "N")
                               ->check(numberBetween(1, maxPlayers))
                               ->capture_default_str();
    CLI::Option* skill = option("--skill", options.skill, "How well they play, 0 to 1", "X")
                             ->check(numberBetween(0.0, 1.0))
                             ->capture_default_str();
    CLI::Option* sight =
        option("--sight", options.sight,
               "What they go by: the newest snapshot; drawn, as a window shows it; or ahead, the "
               "others where a shot fired now meets them",
               "newest|drawn|ahead")
            ->check(oneOfSights)
            ->capture_default_str();
    option("--seconds", options.seconds, "How long they play; 0 is until Ctrl-C", "S")
        ->check(numberBetween(0.0, longestRun))
        ->capture_default_str();
    given.seed =
        option("--seed", options.seed, "The number that their choices follow from", "K")
            ->check(numberBetween(std::uint64_t{0}, std::numeric_limits<std::uint64_t>::max()))
            ->default_str("random");
    CLI::Option* arenaFile =
        option("--arena", options.arena,
               "What the server plays, if it is not the arena beside drench-bots: a map text, plan "
               "or voxel file",
               "FILE");
    CLI::Option* rooms =
        option("--rooms", options.rooms, "Play in the rooms at all these ports of HOST", "A-B");
    option("--name", options.name, "Name of the players, before their numbers", "NAME");
    app.add_flag("--json", options.json, "Print the report as one JSON object");
    app.add_flag("--quiet", options.quiet, "Show no live line and no table");
    given.tracks =
        option("--tracks", options.tracks, "Draw where the players of the first room went", "PNG");
    given.size = option("--size", options.size, "Width and height of that picture", "WxH")
                     ->delimiter('x')
                     ->check(numberBetween(smallestSide, arena::Image::largestSide))
                     ->default_str("1280x1000");
    option("--save", options.save, "Record what the players of the first room send and hear",
           "FILE");
    given.script = option("--script", options.script,
                          "Instead of bots, one player sends what stands here", "FILE");
    given.record =
        option("--record", options.record, "Write what that player sees of itself, as CSV", "FILE");
    given.ofBots = {players, skill, sight, given.seed, arenaFile, rooms, given.tracks};
    return given;
}

/// Throws if options do not go together.
void settleOptions(const Given& given, Options& options) {
    for (const CLI::Option* ofBots : given.ofBots) {
        if (!given.script->empty() && !ofBots->empty())
            throw CLI::ExcludesError(ofBots->get_name(), "--script");
    }
    if (given.script->empty() && !given.record->empty())
        throw CLI::RequiresError("--record", "--script");
    if (given.tracks->empty() && !given.size->empty())
        throw CLI::RequiresError("--size", "--tracks");
    const std::string ending = std::filesystem::path(options.tracks).extension();
    if (!ending.empty() && ending != ".png")
        throw CLI::ValidationError("--tracks", options.tracks + ": writes PNG files only");
    const std::size_t longest = given.script->empty() ? longestNumberedName : longestName;
    if (options.name.size() > longest)
        throw CLI::ValidationError("--name",
                                   "has at most " + std::to_string(longest) + " characters");
    if (given.seed->empty())
        options.seed = std::random_device()();
}

} // namespace

int main(int argc, char** argv) {
    CLI::App app("Players without people, for a match or as load.", "drench-bots");
    Options options;
    const Given given = addOptions(app, options);
    const auto settle = [&] { settleOptions(given, options); };
    if (const std::optional<int> status = parseArguments(app, argc, argv, settle))
        return *status;
    return runTool([&] { return given.script->empty() ? playBots(options) : playScript(options); });
}
