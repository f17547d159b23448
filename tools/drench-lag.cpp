#include "common/Console.h"
#include "common/ExitStatus.h"
#include "common/NumberIn.h"
#include "common/StopSignals.h"
#include "common/Timekeeper.h"
#include "lag/Relay.h"
#include "lag/TrafficReport.h"
#include "tools/Arguments.h"
#include "tools/Saving.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <chrono>
#include <iomanip>
#include <iostream>
#include <limits>
#include <optional>
#include <random>
#include <sstream>
#include <string>
#include <sys/prctl.h>
#include <vector>

using namespace drench;

// The command line of a bad line between clients and a room; lag/ treats the datagrams.

namespace {

using client::Clock;

/// Milliseconds; a room drops a player before that.
constexpr double longestDelay = 10000.0;

/// The longest mean of datagrams lost one after the other.
constexpr double longestBurst = 1000.0;

/// The time between two updates of the live line.
constexpr std::chrono::seconds livePeriod{1};

/// The options of one direction, or of both.
struct Asked {
    std::optional<double> delay;
    std::optional<double> jitter;
    std::optional<double> loss;
    std::optional<double> burst;
    std::optional<double> duplicate;
    std::optional<double> reorder;
    std::optional<double> reorderBy;
};

/// An option that can be asked of one direction or of both.
struct LineOption {
    const char* name;
    std::optional<double> Asked::*value;
    const char* type;
    const char* description;
    CLI::Validator check;

    /// The option without which this one would do nothing; may be null.
    const char* needed = nullptr;
    std::optional<double> Asked::*neededValue = nullptr;
};

struct Options {
    int port = 0;
    std::string room = "localhost:5000";
    Asked both;
    Asked up;
    Asked down;
    double seconds = 0.0;
    std::uint64_t seed = std::random_device()();
    std::string save;
    std::string arena;
    bool json = false;
    bool quiet = false;
};

/// Accepts a percentage such as "2%", and turns it into a share from 0 to 1.
CLI::Validator share() {
    return CLI::Validator(
        [](std::string& text) {
            const bool isPercent = text.ends_with('%');
            const std::optional<double> percent =
                numberIn<double>(text.substr(0, text.size() - (isPercent ? 1 : 0)));
            if (!percent || !(*percent >= 0.0 && *percent <= 100.0))
                return text + " is no share from 0% to 100%";
            if (!isPercent)
                return text + " is no share: write " + text + '%';
            std::ostringstream words;
            words << std::setprecision(17) << *percent / 100.0;
            text = words.str();
            return std::string();
        },
        "");
}

const std::vector<LineOption>& lineOptions() {
    const auto milliseconds = numberBetween(0.0, longestDelay);
    static const std::vector<LineOption> all = {
        {.name = "delay",
         .value = &Asked::delay,
         .type = "MS",
         .description = "How long every datagram takes",
         .check = milliseconds},
        {.name = "jitter",
         .value = &Asked::jitter,
         .type = "MS",
         .description = "The most that is added to the delay, at random; nobody overtakes",
         .check = milliseconds},
        {.name = "loss",
         .value = &Asked::loss,
         .type = "P%",
         .description = "How many datagrams get lost",
         .check = share()},
        {.name = "burst",
         .value = &Asked::burst,
         .type = "N",
         .description = "How many get lost one after the other, on average",
         .check = numberBetween(1.0, longestBurst),
         .needed = "loss",
         .neededValue = &Asked::loss},
        {.name = "duplicate",
         .value = &Asked::duplicate,
         .type = "P%",
         .description = "How many datagrams come twice",
         .check = share()},
        {.name = "reorder",
         .value = &Asked::reorder,
         .type = "P%",
         .description = "How many datagrams are held back and overtaken",
         .check = share()},
        {.name = "reorder-by",
         .value = &Asked::reorderBy,
         .type = "MS",
         .description = "How long they are held back; 50 unless said",
         .check = milliseconds,
         .needed = "reorder",
         .neededValue = &Asked::reorder},
    };
    return all;
}

/// Adds the options of a line: those of both directions to the help, the others beside it.
void addLineOptions(CLI::App& app, const std::string& prefix, Asked& asked) {
    for (const LineOption& option : lineOptions()) {
        const std::string name = prefix + option.name;
        // Not by CLI::Option::transform(): its errors do not name options that the help leaves out.
        const auto take = [&asked, &option, name](std::string text) {
            if (const std::string problem = option.check(text); !problem.empty())
                throw CLI::ValidationError(name, problem);
            asked.*option.value = numberIn<double>(text);
        };
        app.add_option_function<std::string>(name, take, option.description)
            ->type_name(option.type)
            ->group(prefix == "--" ? "Both directions" : "");
    }
}

/// Throws if an option was given that would change nothing.
void refuseIdleOptions(const Options& options) {
    const Asked* directions[] = {&options.up, &options.down};
    const char* const prefixes[] = {"--up-", "--down-"};
    for (const LineOption& option : lineOptions()) {
        const std::string name = option.name;
        const auto isNeededThere = [&](const Asked& direction) {
            return !option.needed || direction.*option.neededValue ||
                   options.both.*option.neededValue;
        };
        bool overridden = true;
        bool idle = true;
        for (int i = 0; i < 2; ++i) {
            const Asked& direction = *directions[i];
            const bool here = (direction.*option.value).has_value();
            if (here && !isNeededThere(direction))
                throw CLI::ValidationError(prefixes[i] + name,
                                           "does nothing without " +
                                               (prefixes[i] + std::string(option.needed)));
            overridden = overridden && here;
            idle = idle && (here || !isNeededThere(direction));
        }
        if (!(options.both.*option.value))
            continue;
        if (overridden)
            throw CLI::ValidationError("--" + name, std::string("does nothing beside --up-")
                                                        .append(name)
                                                        .append(" and --down-")
                                                        .append(name));
        if (idle)
            throw CLI::ValidationError("--" + name,
                                       "does nothing without --" + std::string(option.needed));
    }
}

lag::Duration inMilliseconds(double milliseconds) {
    return std::chrono::duration_cast<lag::Duration>(
        std::chrono::duration<double, std::milli>(milliseconds));
}

/// The settings of one direction. Throws if a loss cannot come in bursts as asked.
lag::Settings settingsOf(const char* direction, const Asked& one, const Asked& both) {
    const auto chosen = [&](std::optional<double> Asked::*value) {
        return one.*value ? one.*value : both.*value;
    };
    lag::Settings settings;
    settings.delay = inMilliseconds(chosen(&Asked::delay).value_or(0.0));
    settings.jitter = inMilliseconds(chosen(&Asked::jitter).value_or(0.0));
    settings.loss = chosen(&Asked::loss).value_or(0.0);
    settings.meanBurst = chosen(&Asked::burst);
    settings.duplication = chosen(&Asked::duplicate).value_or(0.0);
    settings.reordering = chosen(&Asked::reorder).value_or(0.0);
    if (const std::optional<double> heldBack = chosen(&Asked::reorderBy))
        settings.heldBack = inMilliseconds(*heldBack);
    if (settings.meanBurst && settings.loss > lag::mostLoss(*settings.meanBurst)) {
        std::ostringstream words;
        words << direction << ": bursts of " << *settings.meanBurst << " datagrams lose at most "
              << 100.0 * lag::mostLoss(*settings.meanBurst) << "%, not " << 100.0 * settings.loss
              << '%';
        throw CLI::ValidationError("--burst", words.str());
    }
    return settings;
}

std::string liveLine(const lag::Relay& relay, std::uint64_t upBefore, std::uint64_t downBefore,
                     double seconds) {
    std::ostringstream line;
    line << std::fixed << std::setprecision(0) << relay.clients()
         << (relay.clients() == 1 ? " client" : " clients");
    const auto add = [&](const char* direction, const lag::Traffic& traffic, std::uint64_t before) {
        line << "   " << direction << ' ' << static_cast<double>(traffic.in - before) / seconds
             << "/s, lost " << traffic.lost;
    };
    add("up", relay.up(), upBefore);
    add("down", relay.down(), downBefore);
    line << "   on their way " << relay.waiting();
    return line.str();
}

int relayBetween(const Options& options, const lag::Settings& up, const lag::Settings& down) {
    const client::RoomAddress room = roomAt(options.room);
    Console console(options.quiet, options.json);
    lag::Relay relay(static_cast<std::uint16_t>(options.port), room.address, up, down, options.seed,
                     [&](const std::string& note) { console.note(note); });
    Saving saving(options.save, client::headerNow(arenaTextOf(options.arena), room.name,
                                                  "drench-lag " DRENCH_VERSION));
    relay.showTo(saving.tap());
    listenForSignals();
    (options.json ? std::cerr : std::cout)
        << "drench-lag is listening on port " << relay.port() << std::endl;

    const Timekeeper timekeeper(options.seconds);
    client::Time shown = Clock::now();
    std::uint64_t upShown = 0;
    std::uint64_t downShown = 0;
    while (timekeeper.goesOn()) {
        relay.wait(std::min({relay.wakeAt(), timekeeper.end(), shown + livePeriod}) - Clock::now());
        const client::Time now = Clock::now();
        relay.service(now);
        if (now >= shown + livePeriod) {
            const double seconds = std::chrono::duration<double>(now - shown).count();
            console.show(liveLine(relay, upShown, downShown, seconds));
            saving.tellProblem(console);
            shown = now;
            upShown = relay.up().in;
            downShown = relay.down().in;
        }
    }
    console.clear();
    const bool isSaved = saving.finish(console);

    const lag::Report report{.port = relay.port(),
                             .room = room.name,
                             .seconds = timekeeper.elapsed(),
                             .seed = options.seed,
                             .clients = relay.clientsSeen(),
                             .refusals = relay.refusals(),
                             .waiting = relay.waiting(),
                             .upSettings = up,
                             .up = relay.up(),
                             .downSettings = down,
                             .down = relay.down()};
    if (options.json)
        lag::writeJson(std::cout, report);
    else if (!options.quiet)
        lag::writeTable(std::cout, report);
    return isSaved ? 0 : notUsable;
}

constexpr char directionHelp[] =
    "Each of these with --up- or --down- before its name, as in --up-delay 20, is for the way "
    "towards the room or towards the clients alone, and goes before the one for both.\n"
    "\n"
    "Clients join at PORT instead of the room. The first line says which port that is; with --json "
    "it goes to standard error, so that standard output is the report alone.\n"
    "\n"
    "Exit status: 0 after relaying, 2 when the command line, the port or a file cannot be used.";

void addOptions(CLI::App& app, Options& options) {
    app.set_version_flag("--version", "drench-lag " DRENCH_VERSION);
    app.get_formatter()->column_width(30);
    app.footer(directionHelp);
    app.add_option("port", options.port, "Where clients join; 0 lets the system choose")
        ->type_name("PORT")
        ->check(numberBetween(0, largestPort))
        ->required();
    app.add_option("room", options.room, "The room")
        ->type_name("HOST[:PORT]")
        ->default_str(options.room);
    addLineOptions(app, "--", options.both);
    addLineOptions(app, "--up-", options.up);
    addLineOptions(app, "--down-", options.down);
    app.add_option("--seconds", options.seconds, "How long; 0 is until Ctrl-C")
        ->type_name("S")
        ->check(numberBetween(0.0, longestRun))
        ->default_str("0");
    app.add_option("--seed", options.seed, "What chance follows from")
        ->type_name("K")
        ->check(numberBetween(std::uint64_t{0}, std::numeric_limits<std::uint64_t>::max()))
        ->default_str("random");
    app.add_option("--save", options.save,
                   "Record what passes, with all inputs, as the room has it")
        ->type_name("FILE");
    app.add_option("--arena", options.arena,
                   "What the room plays, to be kept in the recording: a map text, plan or voxel "
                   "file")
        ->type_name("FILE");
    app.add_flag("--json", options.json, "Print the report as one JSON object");
    app.add_flag("--quiet", options.quiet, "Show no live line and no table");
}

} // namespace

int main(int argc, char** argv) {
    CLI::App app("A bad line between clients and a room.", "drench-lag");
    Options options;
    addOptions(app, options);
    lag::Settings up;
    lag::Settings down;
    const auto settle = [&] {
        refuseIdleOptions(options);
        if (options.save.empty() && !options.arena.empty())
            throw CLI::ValidationError("--arena", "does nothing without --save");
        up = settingsOf("up", options.up, options.both);
        down = settingsOf("down", options.down, options.both);
    };
    if (const std::optional<int> status = parseArguments(app, argc, argv, settle))
        return *status;
    // Sleeps end when they are due; by default the system lets them oversleep by 50 us.
    prctl(PR_SET_TIMERSLACK, 1UL);
    return runTool([&] { return relayBetween(options, up, down); });
}
