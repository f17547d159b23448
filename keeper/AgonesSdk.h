#pragma once

#include "keeper/AgonesCalls.h"

#include <condition_variable>
#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <thread>

namespace drench::keeper {

/// Speaks to the SDK server of Agones on this machine, in a thread of its own: its owner never
/// waits, whether the SDK server answers, hangs or is not there.
class AgonesSdk {
  public:
    /// @param port  where its REST interface listens on 127.0.0.1
    explicit AgonesSdk(std::uint16_t port);

    /// Ends the thread, which takes as long as the call under way: up to a second for connecting,
    /// one for sending, and one for each part of the answer.
    ~AgonesSdk();
    AgonesSdk(const AgonesSdk&) = delete;
    AgonesSdk& operator=(const AgonesSdk&) = delete;

    /// Tells how the room is, as to AgonesCalls.
    void update(std::optional<Time> answersUntil, const PlayerPlaces& places);

    /// Asks for the end of this game server, and waits for the answer, at most so long. Returns
    /// whether the SDK server took it.
    bool shutDown(milliseconds longest);

    /// The game server's state as last heard; empty before.
    std::string state() const;

    /// Calls without success by their name, since the last call of this function.
    std::map<std::string, int> takeFailures();

  private:
    void run();

    mutable std::mutex mutex_;
    std::condition_variable changed_;
    AgonesCalls calls_;
    std::map<std::string, int> failures_;
    bool isEnding_ = false;
    std::uint16_t port_;
    std::thread thread_;
};

} // namespace drench::keeper
