#pragma once

#include "keeper/AgonesSdk.h"
#include "keeper/Headcount.h"
#include "keeper/Lifecycle.h"
#include "keeper/Metrics.h"
#include "keeper/MetricsServer.h"
#include "keeper/Notices.h"
#include "keeper/Probe.h"
#include "keeper/RoomProcess.h"

#include <cstdint>
#include <optional>
#include <string>

namespace drench::keeper {

/// Where a keeper's room is, and what it is to do with it.
struct Settings {
    std::uint16_t port = 0;

    /// The executable of the server.
    std::string server;
    Policy policy;

    /// The SDK server of Agones on this machine.
    std::optional<std::uint16_t> agonesPort;

    struct Address {
        std::string host;
        std::uint16_t port = 0;
    };
    std::optional<Address> metrics;

    std::string version;
};

/// Runs one server until its time is up, and everything around it.
class Keeper {
  public:
    /// Starts the server. Throws std::runtime_error if it, the metrics or a pipe cannot be had.
    explicit Keeper(const Settings& settings);

    /// Returns the exit status of the program: 0 after an end that was asked for or due, 1 if the
    /// server ended by itself and is not to start again, notUsable if it cannot be run. Listens to
    /// `stopAsked`.
    int run();

  private:
    void startRoom(Time now);
    void wait(Time now) const;
    void heedSignals(Time now);
    void readConsole();
    void take(const std::string& written);

    /// Asks the room, Agones and the kernel how things are.
    void look(Time now);
    void measure(Time now);
    void heedAgones(Time now);
    void endIfDue(Time now);

    /// After the server's end: the exit status of the program, or nothing if the room starts again.
    std::optional<int> afterTheEnd(Time now);
    int leave(int status);
    void shutDownAgones();

    Settings settings_;
    Metrics metrics_;
    std::optional<MetricsServer> metricsServer_;
    std::optional<AgonesSdk> agones_;
    bool isAgonesToldOfTheEnd_ = false;

    Probe probe_;
    Headcount headcount_;
    NetworkHeadcount network_;
    Situation situation_;
    Ending ending_ = Ending::none;
    RestartPause pause_;

    /// Nothing while a start waits for its moment.
    std::optional<RoomProcess> room_;
    Time startAt_;
    Time measureAt_;
    std::string lastWrite_;
};

} // namespace drench::keeper
