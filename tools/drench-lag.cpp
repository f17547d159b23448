#include "common/Console.h"
#include "common/NumberIn.h"
#include "common/StopSignals.h"
#include "lag/Relay.h"
#include "lag/TrafficReport.h"
#include "tools/RoomArgument.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <chrono>
#include <iomanip>
#include <iostream>
#include <optional>
#include <random>
#include <sstream>
#include <stdexcept>
#include <string>
#include <sys/prctl.h>

using namespace drench;

// The command line of a bad line between clients and a room; what it does to datagrams is in lag/.

namespace {

using client::Clock;

constexpr int relayed = 0;
constexpr int notUsable = 2;

constexpr int largestPort = 65535;

/// Milliseconds; longer than a room waits for a player.
constexpr double longestDelay = 10000.0;

/// Datagrams.
constexpr double longestBurst = 1000.0;

/// Seconds; some months.
constexpr double longestRun = 1e7;

constexpr std::chrono::seconds livePeriod{1};

/// What was asked of one direction, or of both.
struct Asked {
    std::optional<double> delay;
    std::optional<double> jitter;
    std::optional<double> loss;
    std::optional<double> burst;
    std::optional<double> duplicate;
    std::optional<double> reorder;
    std::optional<double> reorderBy;
};

struct Options {
    int port = 0;
    std::string room = "localhost:5000";
    Asked both;
    Asked up;
    Asked down;
    double seconds = 0.0;
    std::uint64_t seed = 0;
    bool json = false;
    bool quiet = false;
};

/// The number in a text. Throws where there is none, or none in the range, as is a not-a-number.
double numberBetween(const std::string& option, const std::string& text, double low, double high) {
    const std::optional<double> number = numberIn<double>(text);
    if (number && *number >= low && *number <= high)
        return *number;
    std::ostringstream words;
    words << text << " is no number from " << low << " to " << high;
    throw CLI::ValidationError(option, words.str());
}

/// The share that "2%" is of one.
double shareIn(const std::string& option, const std::string& text) {
    const std::optional<double> percent =
        text.ends_with('%') ? numberIn<double>(text.substr(0, text.size() - 1)) : std::nullopt;
    if (!percent || !(*percent >= 0.0 && *percent <= 100.0))
        throw CLI::ValidationError(option, text + " is no share from 0% to 100%");
    return *percent / 100.0;
}

/// Adds the options of a line: those of both directions to the help, the others beside it.
void addLineOptions(CLI::App& app, const std::string& prefix, Asked& asked) {
    const auto add = [&](const std::string& name, std::optional<double>& value, const char* type,
                         const char* description, auto read) {
        const std::string option = prefix + name;
        CLI::Option* added = app.add_option_function<std::string>(
            option, [&value, option, read](const std::string& text) { value = read(option, text); },
            description);
        added->type_name(type)->group(prefix == "--" ? "Both directions" : "");
    };
    const auto milliseconds = [](const std::string& option, const std::string& text) {
        return numberBetween(option, text, 0.0, longestDelay);
    };
    const auto datagrams = [](const std::string& option, const std::string& text) {
        return numberBetween(option, text, 1.0, longestBurst);
    };
    add("delay", asked.delay, "MS", "How long every datagram takes", milliseconds);
    add("jitter", asked.jitter, "MS",
        "The most that is added to the delay, at random; nobody overtakes", milliseconds);
    add("loss", asked.loss, "P%", "How many datagrams get lost", shareIn);
    add("burst", asked.burst, "N", "How many get lost one after the other, on average", datagrams);
    add("duplicate", asked.duplicate, "P%", "How many datagrams come twice", shareIn);
    add("reorder", asked.reorder, "P%", "How many datagrams are held back and overtaken", shareIn);
    add("reorder-by", asked.reorderBy, "MS", "How long they are held back; 50 unless said",
        milliseconds);
}

lag::Duration inMilliseconds(double milliseconds) {
    return std::chrono::duration_cast<lag::Duration>(
        std::chrono::duration<double, std::milli>(milliseconds));
}

/// What one direction does. Throws where a loss cannot come in bursts as asked.
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

double secondsSince(client::Time start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
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
    listenForSignals();
    (options.json ? std::cerr : std::cout)
        << "drench-lag is listening on port " << relay.port() << std::endl;

    const client::Time start = Clock::now();
    const client::Time end = options.seconds > 0.0
                                 ? start + inMilliseconds(1000.0 * options.seconds)
                                 : client::Time::max();
    client::Time shown = start;
    std::uint64_t upShown = 0;
    std::uint64_t downShown = 0;
    for (client::Time now = start; stopAsked == 0 && now < end;) {
        relay.wait(std::min({relay.wakeAt(), end, shown + livePeriod}) - now);
        now = Clock::now();
        relay.service(now);
        if (now >= shown + livePeriod) {
            console.show(liveLine(relay, upShown, downShown, secondsSince(shown)));
            shown = now;
            upShown = relay.up().in;
            downShown = relay.down().in;
        }
    }
    console.clear();

    const lag::Report report{relay.port(),        room.name,
                             secondsSince(start), options.seed,
                             relay.clientsSeen(), relay.refusals(),
                             relay.waiting(),     up,
                             relay.up(),          down,
                             relay.down()};
    if (options.json)
        lag::writeJson(std::cout, report);
    else if (!options.quiet)
        lag::writeTable(std::cout, report);
    if (!std::cout.flush())
        throw std::runtime_error("the report cannot be written");
    return relayed;
}

constexpr char directionHelp[] =
    "Each of these with --up- or --down- before its name, as in --up-delay 20, is for the way "
    "towards the room or towards the clients alone, and goes before the one for both.\n"
    "\n"
    "Clients join at PORT instead of the room. The first line says which port that is; with --json "
    "it goes to standard error, so that standard output is the report alone.\n"
    "\n"
    "Exit status: 0 after relaying, 2 when the command line or the port cannot be used.";

} // namespace

int main(int argc, char** argv) {
    CLI::App app("A bad line between clients and a room.", "drench-lag");
    app.set_version_flag("--version", "drench-lag " DRENCH_VERSION);
    app.get_formatter()->column_width(30);
    app.footer(directionHelp);

    Options options;
    app.add_option_function<std::string>(
           "port",
           [&](const std::string& text) {
               const std::optional<int> port = numberIn<int>(text);
               if (!port || *port < 0 || *port > largestPort)
                   throw CLI::ValidationError("port", text + " is no port from 0 to 65535");
               options.port = *port;
           },
           "Where clients join; 0 lets the system choose")
        ->type_name("PORT")
        ->required();
    app.add_option("room", options.room, "The room")
        ->type_name("HOST[:PORT]")
        ->default_str(options.room);
    addLineOptions(app, "--", options.both);
    addLineOptions(app, "--up-", options.up);
    addLineOptions(app, "--down-", options.down);
    app.add_option_function<std::string>(
           "--seconds",
           [&](const std::string& text) {
               options.seconds = numberBetween("--seconds", text, 0.0, longestRun);
           },
           "How long; 0 is until Ctrl-C")
        ->type_name("S")
        ->default_str("0");
    options.seed = std::random_device()();
    app.add_option_function<std::string>(
           "--seed",
           [&](const std::string& text) {
               const std::optional<std::uint64_t> seed = numberIn<std::uint64_t>(text);
               if (!seed)
                   throw CLI::ValidationError("--seed",
                                              text + " is no whole number from 0 to 2^64 - 1");
               options.seed = *seed;
           },
           "What chance follows from")
        ->type_name("K")
        ->default_str("random");
    app.add_flag("--json", options.json, "Print the report as one JSON object");
    app.add_flag("--quiet", options.quiet, "Show no live line and no table");

    lag::Settings up;
    lag::Settings down;
    try {
        app.parse(argc, argv);
        up = settingsOf("up", options.up, options.both);
        down = settingsOf("down", options.down, options.both);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? 0 : notUsable;
    }
    prctl(PR_SET_TIMERSLACK, 1UL);

    try {
        return relayBetween(options, up, down);
    } catch (const std::runtime_error& error) {
        std::cerr << error.what() << '\n';
        return notUsable;
    }
}
