#include "common/CommandLine.h"
#include "common/StopSignals.h"
#include "keeper/Keeper.h"
#include "src/FilePath.h"
#include "tools/Arguments.h"

#include <CLI/CLI.hpp>
#include <chrono>
#include <cstdlib>
#include <optional>
#include <string>

using namespace drench;

// The command line of the keeper of a room; keeper/ does what it asks for.

namespace {

using keeper::milliseconds;

/// Where the SDK server of Agones listens unless the environment says otherwise.
constexpr std::uint16_t usualAgonesPort = 9358;
constexpr char agonesPortVariable[] = "AGONES_SDK_HTTP_PORT";

constexpr char never[] = "never";

struct Options {
    int port = 0;
    std::string server;
    std::string metrics;
    std::string agones = "auto";
    std::string whenRoomEnds = "restart";
    std::string waitForPlayers = "300";
    std::string recycleAfter = "86400";
    std::string recycleWhenEmptyFor = "60";
    std::string endWhenUnusedFor = "120";
};

milliseconds durationOf(const std::string& seconds) {
    return std::chrono::duration_cast<milliseconds>(
        std::chrono::duration<double>(numberIn<double>(seconds).value()));
}

std::optional<milliseconds> durationUnlessNever(const std::string& seconds) {
    return seconds == never ? std::nullopt : std::optional(durationOf(seconds));
}

/// "PORT" at this machine alone, or "ADDRESS:PORT".
keeper::Settings::Address metricsAddress(const std::string& text) {
    const std::size_t colon = text.rfind(':');
    const std::string port = colon == std::string::npos ? text : text.substr(colon + 1);
    const std::string host = colon == std::string::npos ? "127.0.0.1" : text.substr(0, colon);
    const std::optional<std::uint16_t> number = numberIn<std::uint16_t>(port);
    if (host.empty() || !number || *number == 0)
        throw CLI::ValidationError("--metrics", text + " is neither PORT nor ADDRESS:PORT");
    return {host, *number};
}

std::optional<std::uint16_t> agonesPort(const std::string& mode) {
    const char* given = std::getenv(agonesPortVariable);
    if (mode == "off" || (mode == "auto" && !given))
        return std::nullopt;
    if (!given)
        return usualAgonesPort;
    const std::optional<std::uint16_t> port = numberIn<std::uint16_t>(given);
    if (!port || *port == 0)
        throw CLI::ValidationError(agonesPortVariable, std::string(given) + " is no port");
    return port;
}

keeper::Settings settingsOf(const Options& options) {
    keeper::Settings settings;
    settings.port = static_cast<std::uint16_t>(options.port);
    settings.server = options.server.empty() ? getAppPath() + "/drench-server" : options.server;
    settings.policy = {.waitForPlayers = durationOf(options.waitForPlayers),
                       .oldAge = durationUnlessNever(options.recycleAfter),
                       .quietTime = durationOf(options.recycleWhenEmptyFor),
                       .longestUnused = durationUnlessNever(options.endWhenUnusedFor),
                       .startAgain = options.whenRoomEnds == "restart"};
    settings.agonesPort = agonesPort(options.agones);
    if (!options.metrics.empty())
        settings.metrics = metricsAddress(options.metrics);
    settings.version = DRENCH_VERSION;
    return settings;
}

constexpr char footer[] =
    "SIGTERM and SIGINT end the room once it is empty; a second one ends it at once.\n"
    "\n"
    "Exit status: 0 after an end that was asked for or due, 1 after the server's own end with "
    "--when-room-ends stop, 2 when the command line, the server or a port cannot be used.";

void addOptions(CLI::App& app, Options& options) {
    app.set_version_flag("--version", "drench-keeper " DRENCH_VERSION);
    app.get_formatter()->column_width(38);
    app.footer(footer);
    const auto addSeconds = [&](const char* name, std::string& seconds, const char* help,
                                bool mayBeNever) {
        CLI::Validator valid = numberBetween(0.0, longestRun);
        if (mayBeNever)
            valid = (valid | CLI::IsMember({never})).description("");
        app.add_option(name, seconds, help)->type_name("S")->check(valid)->default_str(seconds);
    };
    app.add_option("port", options.port, "The room's UDP port")
        ->type_name("PORT")
        ->check(numberBetween(1, largestPort))
        ->required();
    app.add_option("--server", options.server, "The server; by default the one beside this program")
        ->type_name("FILE");
    app.add_option("--metrics", options.metrics,
                   "Answer GET /metrics there; the default ADDRESS is 127.0.0.1")
        ->type_name("[ADDRESS:]PORT");
    app.add_option("--agones", options.agones,
                   std::string("Speak to Agones; auto: where ") + agonesPortVariable + " is set")
        ->type_name("auto|on|off")
        ->check(CLI::IsMember({"auto", "on", "off"}).description(""))
        ->default_str(options.agones);
    app.add_option("--when-room-ends", options.whenRoomEnds,
                   "After the server's own end, or an old room's")
        ->type_name("restart|stop")
        ->check(CLI::IsMember({"restart", "stop"}).description(""))
        ->default_str(options.whenRoomEnds);
    addSeconds("--wait-for-players", options.waitForPlayers,
               "After SIGTERM: how long players may go on", false);
    addSeconds("--recycle-after", options.recycleAfter,
               "Age from which an empty room ends, or never", true);
    addSeconds("--recycle-when-empty-for", options.recycleWhenEmptyFor,
               "How long it has to be empty then", false);
    addSeconds("--end-when-unused-for", options.endWhenUnusedFor,
               "Empty so long, an allocated room ends; or never", true);
}

} // namespace

int main(int argc, char** argv) {
    CLI::App app("Keeps one room of the water fight.", "drench-keeper");
    Options options;
    addOptions(app, options);
    keeper::Settings settings;
    const auto settle = [&] { settings = settingsOf(options); };
    if (const std::optional<int> status = parseArguments(app, argc, argv, settle))
        return *status;
    listenForSignals();
    return runTool([&] { return keeper::Keeper(settings).run(); });
}
