#pragma once

#include "bench/FiringPlaces.h"
#include "src/Messages.h"

#include <chrono>
#include <cstdint>
#include <memory>
#include <vector>

namespace drench::bench {

/// All that the players of a load did and saw for some time.
struct Play {
    double seconds = 0.0;

    /// Processor time that playing them took.
    double cpuSeconds = 0.0;

    /// Inputs sent, and receipts for whatever was sent.
    long inputs = 0;
    long receipts = 0;

    /// Milliseconds between states that came one after the other to the same player, for all of
    /// them, by the kernel's clock on arrival: it does not matter when they are read.
    std::vector<double> gaps;
};

/// The traffic of four players in each of some rooms on 127.0.0.1, by one thread. They join, stand,
/// turn their view by one count to and fro, and fire if told to. Every failure throws
/// std::runtime_error.
class Load {
  public:
    /// Joins four players in the room at each port and waits until all are let in.
    explicit Load(const std::vector<int>& ports);
    ~Load();
    Load(const Load&) = delete;
    Load& operator=(const Load&) = delete;

    /// Has the players of the only room leave and join again until they stand at the given places,
    /// one at each.
    void takePlaces(const std::vector<FiringPlace>& places);

    /// Has the players of the only room turn as told by their places, the first one if they took
    /// none, and fire from now on.
    void fire(const std::vector<FiringPlace>& places);

    /// Whether, by the latest states, all players of the only room fire and look as their places
    /// say.
    bool allFire(const std::vector<FiringPlace>& places) const;

    /// Plays for some time. Each player sends so many view records a second, evenly spread over the
    /// time and the players, or just signs of life when it is 0.
    Play play(std::chrono::duration<double> time, double inputsPerSecond);

  private:
    struct Player;
    struct Inbox;

    void awaitAccepted();
    void receive(Player& player);

    /// The first player of every room, then the second one of every room, and so on.
    std::vector<Player> players_;
    std::unique_ptr<Inbox> inbox_;

    /// receive() adds to it.
    Play seen_;
};

} // namespace drench::bench
