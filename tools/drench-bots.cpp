#include "arena/ArenaFile.h"
#include "arena/picture/Png.h"
#include "bots/Play.h"
#include "bots/Report.h"
#include "bots/Chart.h"
#include "bots/Script.h"
#include "bots/ScriptedPlayer.h"
#include "bots/Tracks.h"
#include "common/Console.h"
#include "common/Files.h"
#include "common/NumberIn.h"
#include "common/StopSignals.h"
#include "src/FilePath.h"
#include "tools/RoomArgument.h"

#include <CLI/CLI.hpp>
#include <arpa/inet.h>
#include <array>
#include <chrono>
#include <iomanip>
#include <iostream>
#include <random>
#include <sstream>
#include <string>
#include <vector>

using namespace drench;

// The command line of players without people; what they see and do is in bots/.

namespace {

using client::Clock;

constexpr int played = 0;
constexpr int nobodyGotIn = 1;
constexpr int notUsable = 2;

constexpr int largestPort = 65535;

/// Of four sockets each, which keeps below the usual limit of 1024 descriptors.
constexpr int mostRooms = 250;

/// Of a picture that shows anything, in pixels.
constexpr int smallestSide = 100;

/// Seconds; some months.
constexpr double longestRun = 1e7;

/// What the server keeps of a name, and what of it leaves room for a number.
constexpr std::size_t longestName = sizeof PlayerUpdate::name - 1;
constexpr std::size_t longestNumberedName = longestName - 2;

struct Options {
    std::string target = "localhost:5000";
    std::string rooms;
    std::string arena = getResourcePath("mapdata");
    int players = 3;
    double skill = 0.5;
    double seconds = 0.0;
    std::uint64_t seed = 0;
    std::string name;
    std::string script;
    std::string record;
    std::string tracks;
    std::array<int, 2> size = {1280, 1000};
    bool json = false;
    bool quiet = false;
};

/// The ports A to B of a host.
std::vector<client::RoomAddress> addressesOf(const std::string& host, const std::string& ports) {
    const client::RoomAddress first = roomAt(host);
    int from = 0;
    int to = 0;
    char dash = 0;
    std::istringstream text(ports);
    if (!(text >> from >> dash >> to) || dash != '-' || !text.eof() || from < 1 || to < from ||
        to > largestPort)
        throw InputError("--rooms " + ports + ": not two ports as in 5000-5063");
    if (to - from >= mostRooms)
        throw InputError("--rooms " + ports + ": more than " + std::to_string(mostRooms) +
                         " rooms");
    if (host.find(':') != std::string::npos)
        throw InputError("--rooms " + ports + ": " + host + " must not name a port as well");
    std::vector<client::RoomAddress> rooms;
    for (int port = from; port <= to; ++port) {
        rooms.push_back(first);
        rooms.back().name = host + ':' + std::to_string(port);
        rooms.back().address.sin_port = htons(static_cast<std::uint16_t>(port));
    }
    return rooms;
}

Clock::duration inSeconds(double seconds) {
    return std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(seconds));
}

double secondsSince(client::Time start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

/// Whether nobody has asked to stop and the time is not over yet.
class Timekeeper {
  public:
    explicit Timekeeper(double seconds)
        : end_(seconds > 0.0 ? start_ + inSeconds(seconds) : client::Time::max()) {}

    bool goesOn() const { return stopAsked == 0 && Clock::now() < end_; }
    client::Time end() const { return end_; }
    double elapsed() const { return secondsSince(start_); }

  private:
    client::Time start_ = Clock::now();
    client::Time end_;
};

std::string liveLine(const bots::Standing& now, std::uint64_t snapshotsBefore, double seconds) {
    std::ostringstream line;
    line << std::fixed << std::setprecision(1);
    const double perPlayer = static_cast<double>(now.snapshots - snapshotsBefore) /
                             static_cast<double>(std::max<std::size_t>(now.playing, 1));
    line << perPlayer / seconds << " ticks/s   round trip ";
    if (now.medianRoundTrip)
        line << std::setprecision(2) << *now.medianRoundTrip << " ms";
    else
        line << '-';
    line << "   soaks " << now.soaks << "   playing " << now.playing << " of " << now.players;
    return line.str();
}

int writeReport(const bots::Report& report, const Options& options) {
    if (options.json)
        bots::writeJson(std::cout, report);
    else if (!options.quiet)
        bots::writeTable(std::cout, report);
    if (!std::cout.flush())
        throw InputError("the report cannot be written");
    return report.playersEntered() > 0 ? played : nobodyGotIn;
}

int playScript(const Options& options) {
    const client::RoomAddress room = roomAt(options.target);
    const std::vector<bots::Action> script =
        bots::readScript(readFile(options.script), options.script);
    if (!options.record.empty())
        requireWritable(options.record);
    listenForSignals();
    const Timekeeper timekeeper(options.seconds);
    const bots::ScriptedRun run =
        bots::playScript(room, options.name.empty() ? "Script" : options.name, script,
                         !options.record.empty(), [&] { return timekeeper.goesOn(); });
    bots::Report report;
    report.seconds = timekeeper.elapsed();
    report.rooms = {room.name};
    report.players = {run.player};
    if (!run.trouble.empty())
        std::cerr << room.name << ": " << run.trouble << '\n';
    const int status = writeReport(report, options);
    if (!options.record.empty())
        replaceFile(options.record, run.record);
    return run.trouble.empty() ? status : nobodyGotIn;
}

bots::Roadmap chartArena(MapManager& map, Console& console) {
    console.show("charting the arena ...");
    bots::Roadmap roadmap = bots::chart(map, [&](const char* stage, std::size_t places) {
        console.show("charting the arena: " + std::string(stage) + ", " + std::to_string(places) +
                     " places");
    });
    console.clear();
    return roadmap;
}

int playBots(const Options& options) {
    const std::vector<client::RoomAddress> rooms = options.rooms.empty()
                                                       ? std::vector{roomAt(options.target)}
                                                       : addressesOf(options.target, options.rooms);
    arena::ArenaFile arena = arena::readWholeArena(options.arena);
    if (!options.tracks.empty())
        requireWritable(options.tracks);
    Console console(options.quiet, options.json);
    const bots::Roadmap roadmap = chartArena(arena.text.map, console);

    listenForSignals();
    const Timekeeper timekeeper(options.seconds);
    bots::Play play(
        roadmap, rooms,
        {options.players, options.skill, options.seed, options.name, !options.tracks.empty()},
        [&](const std::string& note) { console.note(note); });
    constexpr std::chrono::seconds livePeriod{1};
    client::Time shown = Clock::now();
    std::uint64_t snapshotsShown = 0;
    while (timekeeper.goesOn()) {
        play.step(std::min(timekeeper.end(), shown + livePeriod));
        if (Clock::now() >= shown + livePeriod) {
            const bots::Standing standing = play.standing();
            console.show(liveLine(standing, snapshotsShown, secondsSince(shown)));
            shown = Clock::now();
            snapshotsShown = standing.snapshots;
        }
    }
    play.leave();
    console.clear();

    bots::Report report;
    report.bots = {options.arena, options.seed, options.skill};
    report.seconds = timekeeper.elapsed();
    for (const client::RoomAddress& room : rooms)
        report.rooms.push_back(room.name);
    report.players = play.players();
    const int status = writeReport(report, options);
    if (!options.tracks.empty()) {
        const auto [width, height] = options.size;
        replaceFile(options.tracks,
                    arena::encodePng(bots::tracksPicture(arena.text.map, roadmap.reach,
                                                         play.tracks(), width, height)));
    }
    return status;
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

/// Accepts a number in a range, which a not-a-number is not.
CLI::Validator between(double low, double high) {
    return CLI::Validator(
        [=](const std::string& text) {
            const std::optional<double> value = numberIn<double>(text);
            std::ostringstream words;
            if (!value || !(*value >= low && *value <= high))
                words << text << " is not from " << low << " to " << high;
            return words.str();
        },
        "");
}

/// Accepts whole numbers that a seed can hold; a minus would be taken for a very large one.
CLI::Validator seedNumber() {
    return CLI::Validator(
        [](const std::string& text) {
            return numberIn<std::uint64_t>(text) ? std::string()
                                                 : text + " is no whole number from 0 to 2^64 - 1";
        },
        "");
}

} // namespace

int main(int argc, char** argv) {
    CLI::App app("Players without people, for a match or as load.", "drench-bots");
    app.set_version_flag("--version", "drench-bots " DRENCH_VERSION);
    app.get_formatter()->column_width(30);
    app.footer(scriptHelp);

    Options options;
    app.add_option("room", options.target, "Where to play")
        ->type_name("HOST[:PORT]")
        ->default_str(options.target);
    std::vector<CLI::Option*> ofBots;
    const auto option = [&](const char* name, auto& value, const char* description,
                            const char* type, std::vector<CLI::Option*>* kind = nullptr) {
        CLI::Option* added = app.add_option(name, value, description)->type_name(type);
        if (kind)
            kind->push_back(added);
        return added;
    };
    option("--players", options.players, "Players in each room, 1 to 4", "N", &ofBots)
        ->check(between(1, maxPlayers))
        ->capture_default_str();
    option("--skill", options.skill, "How well they play, 0 to 1", "X", &ofBots)
        ->check(between(0.0, 1.0))
        ->capture_default_str();
    option("--seconds", options.seconds, "How long; 0 is until Ctrl-C", "S")
        ->check(between(0.0, longestRun))
        ->capture_default_str();
    CLI::Option* seed = option("--seed", options.seed, "What they choose by", "K", &ofBots)
                            ->check(seedNumber())
                            ->default_str("random");
    option("--arena", options.arena,
           "What the server plays, if it is not the arena beside drench-bots: a map text, plan or "
           "voxel file",
           "FILE", &ofBots);
    option("--rooms", options.rooms, "Play in the rooms at all these ports of HOST", "A-B",
           &ofBots);
    option("--name", options.name, "Name of the players, before their numbers", "NAME");
    app.add_flag("--json", options.json, "Print the report as one JSON object");
    app.add_flag("--quiet", options.quiet, "Show no live line and no table");
    CLI::Option* tracks = option("--tracks", options.tracks,
                                 "Draw where the players of the first room went", "PNG", &ofBots);
    CLI::Option* size = option("--size", options.size, "Width and height of that picture", "WxH")
                            ->delimiter('x')
                            ->check(between(smallestSide, arena::Image::largestSide))
                            ->default_str("1280x1000");
    CLI::Option* script = option("--script", options.script,
                                 "Instead of bots, one player sends what stands here", "FILE");
    CLI::Option* record =
        option("--record", options.record, "Write what that player sees of itself, as CSV", "FILE");

    try {
        app.parse(argc, argv);
        for (const CLI::Option* given : ofBots) {
            if (!script->empty() && !given->empty())
                throw CLI::ExcludesError(given->get_name(), "--script");
        }
        if (script->empty() && !record->empty())
            throw CLI::RequiresError("--record", "--script");
        if (tracks->empty() && !size->empty())
            throw CLI::RequiresError("--size", "--tracks");
        const std::size_t longest = script->empty() ? longestNumberedName : longestName;
        if (options.name.size() > longest)
            throw CLI::ValidationError("--name",
                                       "has at most " + std::to_string(longest) + " characters");
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? 0 : notUsable;
    }
    if (seed->empty())
        options.seed = std::random_device()();

    try {
        return script->empty() ? playBots(options) : playScript(options);
    } catch (const std::exception& error) {
        std::cerr << error.what() << '\n';
        return notUsable;
    }
}
