#include "bots/Presence.h"

#include "bots/Ending.h"
#include "common/Descriptor.h"
#include "src/Messages.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <memory>
#include <poll.h>
#include <sys/socket.h>

namespace drench::bots {

namespace {

using client::Clock;
using client::Time;
using std::chrono::milliseconds;

/// The time between two questions; a receipt takes less on any line that can be played on.
constexpr milliseconds askingPeriod{500};

/// Rooms that do not answer for this long are silent. Players who join wait as long.
constexpr milliseconds longestSilence{3000};

/// If no room answers, all are asked again after this pause.
constexpr milliseconds pause{1000};

/// One room that is being asked.
struct Asked {
    Descriptor socket;
    Presence presence = Presence::silent;

    explicit Asked(const client::RoomAddress& room)
        : socket(::socket(AF_INET, SOCK_DGRAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0)) {
        const auto* address = reinterpret_cast<const sockaddr*>(&room.address);
        // Connected, so that the system reports a closed port. If connecting fails, so does all
        // sending, and the room is silent.
        static_cast<void>(connect(socket.number, address, sizeof room.address));
    }

    void ask() {
        constexpr KeepAliveMessage question;
        if (send(socket.number, &question, sizeof question, 0) < 0 && errno == ECONNREFUSED)
            presence = Presence::nobodyListens;
    }

    void hear() {
        char byte;
        if (recv(socket.number, &byte, 1, 0) >= 0)
            presence = Presence::answers;
        else if (errno == ECONNREFUSED)
            presence = Presence::nobodyListens;
    }
};

/// Waits for datagrams of the silent rooms; false if a signal has come instead.
bool hearUntil(std::vector<std::unique_ptr<Asked>>& rooms, Time until) {
    std::vector<pollfd> polled;
    std::vector<Asked*> silent;
    for (const std::unique_ptr<Asked>& room : rooms) {
        if (room->presence != Presence::silent)
            continue;
        polled.push_back({room->socket.number, POLLIN, 0});
        silent.push_back(room.get());
    }
    const auto left = std::chrono::ceil<milliseconds>(until - Clock::now());
    const int timeout = static_cast<int>(std::max(left, milliseconds(0)).count());
    if (poll(polled.data(), polled.size(), timeout) < 0)
        return false;
    for (std::size_t i = 0; i < polled.size(); ++i) {
        if (polled[i].revents != 0)
            silent[i]->hear();
    }
    return true;
}

} // namespace

std::vector<Presence> askRooms(const std::vector<client::RoomAddress>& rooms, Time until) {
    std::vector<std::unique_ptr<Asked>> asked;
    asked.reserve(rooms.size());
    for (const client::RoomAddress& room : rooms)
        asked.push_back(std::make_unique<Asked>(room));
    const auto isSilent = [](const std::unique_ptr<Asked>& room) {
        return room->presence == Presence::silent;
    };
    bool interrupted = false;
    while (!interrupted && Clock::now() < until &&
           std::any_of(asked.begin(), asked.end(), isSilent)) {
        for (const std::unique_ptr<Asked>& room : asked) {
            if (isSilent(room))
                room->ask();
        }
        const Time askAgain = std::min(until, Clock::now() + askingPeriod);
        while (!interrupted && Clock::now() < askAgain &&
               std::any_of(asked.begin(), asked.end(), isSilent))
            interrupted = !hearUntil(asked, askAgain);
    }
    std::vector<Presence> presences;
    presences.reserve(asked.size());
    for (const std::unique_ptr<Asked>& room : asked)
        presences.push_back(room->presence);
    return presences;
}

bool awaitRoom(const std::vector<client::RoomAddress>& rooms, const Timekeeper& timekeeper,
               const std::function<void(const std::string&)>& note) {
    std::vector<std::string> told(rooms.size());
    do {
        // The end of a short run does not cut the wait: rooms answer no sooner.
        const std::vector<Presence> presences = askRooms(rooms, Clock::now() + longestSilence);
        if (std::count(presences.begin(), presences.end(), Presence::answers) > 0)
            return true;
        if (stopAsked != 0)
            return false;
        for (std::size_t i = 0; i < rooms.size(); ++i) {
            const bool nobodyListens = presences[i] == Presence::nobodyListens;
            const std::string trouble =
                endingBy(client::Unanswered{nobodyListens}) + "; trying again";
            if (told[i] != trouble)
                note(rooms[i].name + ": " + trouble);
            told[i] = trouble;
        }
        const auto left = std::chrono::ceil<milliseconds>(timekeeper.end() - Clock::now());
        poll(nullptr, 0, static_cast<int>(std::clamp(left, milliseconds(0), pause).count()));
    } while (timekeeper.goesOn());
    return false;
}

} // namespace drench::bots
