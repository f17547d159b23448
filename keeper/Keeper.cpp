#include "keeper/Keeper.h"

#include "common/Counting.h"
#include "common/ExitStatus.h"
#include "common/StopSignals.h"
#include "src/Messages.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <iostream>
#include <iterator>
#include <poll.h>
#include <stdexcept>
#include <unistd.h>

namespace drench::keeper {

namespace {

using client::Clock;
using std::chrono::seconds;

/// How often the kernel is asked for processor time, memory and datagrams.
constexpr milliseconds measuringPeriod{2000};

/// How late a signal, or a duration that is over, may be noticed.
constexpr milliseconds longestWait{1000};

/// How long the end waits for the SDK server of Agones to take it.
constexpr milliseconds longestShutdown{5000};

/// A console that floods must not keep everything else from its turn.
constexpr int writesPerTurn = 64;

/// The exit status of ChildProcess for an executable that cannot be run.
constexpr int cannotRun = 127;

/// Exit statuses from here on stand for signals.
constexpr int firstSignalStatus = 128;

void say(const std::string& line) {
    std::cout << "drench-keeper: " << line << std::endl;
}

std::string inSeconds(Time::duration duration) {
    return std::to_string(std::chrono::duration_cast<seconds>(duration).count()) + " s";
}

const char* reasonOf(Ending ending) {
    switch (ending) {
    case Ending::stopped:
        return "the room is empty and ends, as asked";
    case Ending::stoppedWithPlayers:
        return "the room ends with its players, who were waited for long enough";
    case Ending::aged:
        return "the room is old and empty, and ends";
    case Ending::unused:
        return "the room was allocated and nobody came or stayed: it ends";
    case Ending::none:
        break;
    }
    return "";
}

} // namespace

Keeper::Keeper(const Settings& settings)
    : settings_(settings), metrics_(settings.version), probe_(settings.port) {
    if (access(settings.server.c_str(), X_OK) != 0)
        throw std::runtime_error(settings.server + " cannot be run");
    if (settings.metrics)
        metricsServer_.emplace(settings.metrics->host, settings.metrics->port,
                               [this] { return metrics_.text(); });
    if (settings.agonesPort)
        agones_.emplace(*settings.agonesPort);
    startRoom(Clock::now());
}

void Keeper::startRoom(Time now) {
    room_.emplace(settings_.server, settings_.port);
    ending_ = Ending::none;
    situation_.started = now;
    situation_.emptySince = now;
    headcount_.reset();
    network_ = {};
    probe_.reset(now);
    metrics_.serverStarted();
    // Until it has become the server, it has our memory.
    measureAt_ = now + measuringPeriod;
    lastWrite_.clear();
}

int Keeper::run() {
    for (;;) {
        const Time now = Clock::now();
        heedSignals(now);
        if (!room_) {
            if (situation_.stopAskedAt)
                return leave(0);
            if (now >= startAt_)
                startRoom(now);
        }
        if (room_)
            readConsole();
        look(now);
        if (room_ && room_->hasEnded()) {
            if (const std::optional<int> status = afterTheEnd(now))
                return leave(*status);
        } else if (room_ && ending_ == Ending::none) {
            endIfDue(now);
        }
        wait(now);
    }
}

void Keeper::heedSignals(Time now) {
    if (stopAsked == 0 || situation_.stopAskedAt)
        return;
    situation_.stopAskedAt = now;
    if (headcount_.players() > 0)
        say("asked to stop; " + counted(static_cast<std::size_t>(headcount_.players()), "player") +
            " may go on for up to " + inSeconds(settings_.policy.waitForPlayers));
}

void Keeper::readConsole() {
    for (int writes = 0; writes < writesPerTurn; ++writes) {
        const std::optional<std::string> written = room_->nextWrite();
        if (!written)
            return;
        take(*written);
    }
}

void Keeper::take(const std::string& written) {
    lastWrite_ = printable(written);
    std::cout << lastWrite_ << std::endl;
    switch (noticeIn(written)) {
    case Notice::joined:
        headcount_.joined();
        metrics_.joined();
        break;
    case Notice::left:
        headcount_.left();
        metrics_.left();
        break;
    case Notice::soaked:
        metrics_.soaked();
        break;
    case Notice::refused:
        metrics_.refused();
        break;
    case Notice::other:
        break;
    }
}

void Keeper::look(Time now) {
    if (room_) {
        if (const auto roundTrip = probe_.service(now))
            metrics_.observeRoundTrip(*roundTrip);
        if (now >= measureAt_)
            measure(now);
    }
    // Receipts come from a thread of the server that goes on where its ticks hang.
    const bool answering =
        room_ && !room_->hasEnded() && probe_.answers(now) && !headcount_.seemsToHang();
    const int players = room_ ? headcount_.players() : 0;
    if (players > 0)
        situation_.emptySince.reset();
    else if (!situation_.emptySince)
        situation_.emptySince = now;
    metrics_.setAnswering(answering);
    metrics_.setPlayers(players);
    metrics_.setUnansweredProbes(probe_.unanswered());
    metrics_.setAge(room_ ? now - situation_.started : Time::duration());
    if (agones_) {
        // A room that is to end takes nobody in any more who asks Agones for a place.
        agones_->update(answering ? probe_.answersUntil() : std::nullopt,
                        {players, situation_.stopAskedAt ? players : maxPlayers});
        heedAgones(now);
    }
}

void Keeper::measure(Time now) {
    measureAt_ = now + measuringPeriod;
    if (const std::optional<Usage> usage = usageOf(room_->pid()))
        metrics_.setUsage(*usage);
    network_.take(ownUdpCounters(room_->pid(), settings_.port, probe_.port()), now);
    const std::uint64_t corrections = headcount_.corrections();
    headcount_.compare(network_.players());
    metrics_.setCorrections(headcount_.corrections());
    if (headcount_.corrections() > corrections)
        say("the network says otherwise than the notices: " +
            counted(static_cast<std::size_t>(headcount_.players()), "player"));
}

void Keeper::heedAgones(Time now) {
    for (const auto& [call, times] : agones_->takeFailures())
        metrics_.agonesCallFailed(call, times);
    const std::string state = agones_->state();
    if (state != "Allocated")
        situation_.allocatedSince.reset();
    else if (!situation_.allocatedSince)
        situation_.allocatedSince = now;
    if (state == "Shutdown")
        stopAsked = 1;
}

void Keeper::endIfDue(Time now) {
    ending_ = endingDue(situation_, settings_.policy, now);
    if (ending_ == Ending::none)
        return;
    say(reasonOf(ending_));
    const bool isForGood = !startsAgain(ending_, situation_, settings_.policy);
    // Before the end, so that nobody is sent here any more.
    if (isForGood)
        shutDownAgones();
    // Agones may have taken seconds to answer, in which players came.
    readConsole();
    if (headcount_.players() > 0 && ending_ != Ending::stoppedWithPlayers) {
        ending_ = Ending::none;
        if (isForGood && !situation_.stopAskedAt)
            situation_.stopAskedAt = Clock::now();
        say("somebody came in the last moment, and may play on");
        return;
    }
    // The server handles no signal: this one ends it as any other does, also if it hangs.
    room_->signal(SIGKILL);
}

std::optional<int> Keeper::afterTheEnd(Time now) {
    const int status = room_->status();
    const Time::duration life = now - situation_.started;
    room_.reset();
    if (ending_ == Ending::none) {
        say("the room ended by itself with status " + std::to_string(status) + " after " +
            inSeconds(life) + "; its last line: " + lastWrite_);
        if (status == cannotRun && !situation_.stopAskedAt)
            return notUsable;
    }
    if (!startsAgain(ending_, situation_, settings_.policy))
        return ending_ == Ending::none && !situation_.stopAskedAt ? 1 : 0;
    metrics_.restarted(ending_ == Ending::aged       ? Restart::aged
                       : status >= firstSignalStatus ? Restart::signal
                                                     : Restart::error);
    startAt_ = now + pause_.after(life);
    return std::nullopt;
}

void Keeper::shutDownAgones() {
    if (!agones_ || isAgonesToldOfTheEnd_)
        return;
    isAgonesToldOfTheEnd_ = true;
    if (!agones_->shutDown(longestShutdown))
        say("Agones did not take the end of this game server in " + inSeconds(longestShutdown));
}

int Keeper::leave(int status) {
    shutDownAgones();
    return status;
}

void Keeper::wait(Time now) const {
    Time until = now + longestWait;
    // Without a room its last probe has nobody to read it, and must not wake us up.
    pollfd polled[] = {{-1, POLLIN, 0}, {-1, POLLIN, 0}};
    if (room_) {
        until = std::min({until, probe_.wakeAt(), measureAt_});
        polled[0].fd = room_->console();
        polled[1].fd = probe_.descriptor();
    } else {
        until = std::min(until, startAt_);
    }
    const auto left = std::chrono::ceil<milliseconds>(until - Clock::now());
    poll(polled, std::size(polled), static_cast<int>(std::max(left, milliseconds(0)).count()));
}

} // namespace drench::keeper
