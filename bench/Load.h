#pragma once

#include "bench/FiringPlaces.h"
#include "src/Messages.h"

#include <chrono>
#include <cstdint>
#include <memory>
#include <vector>

namespace drench::bench {

/// The actions and observations of a load's players for some time.
struct Play {
    double seconds = 0.0;

    /// Processor time of the load itself.
    double cpuSeconds = 0.0;

    /// Inputs sent, and receipts for any datagram sent.
    long inputs = 0;
    long receipts = 0;

    /// Milliseconds between successive states to the same player, for all players. Taken from the
    /// kernel's arrival times, so the moment of reading does not matter.
    std::vector<double> gaps;
};

/// The traffic of four players in each of some rooms on 127.0.0.1, by one thread. They join, stand,
/// turn their view by one count to and fro, and fire after fire(). Every failure throws
/// std::runtime_error.
class Load {
  public:
    /// Joins four players in the room at each port and waits until all are let in.
    explicit Load(const std::vector<int>& ports);
    ~Load();
    Load(const Load&) = delete;
    Load& operator=(const Load&) = delete;

    /// Makes the players of the only room leave and join again until they stand at the given
    /// places, one at each.
    void takePlaces(const std::vector<FiringPlace>& places);

    /// Makes the players of the only room turn by the counts of their places and fire from now on.
    /// Without places taken, all use the first one.
    void fire(const std::vector<FiringPlace>& places);

    /// Whether, by the latest states, all players of the only room fire and look in the directions
    /// of their places.
    bool allFire(const std::vector<FiringPlace>& places) const;

    /// Plays for some time. Each player sends `inputsPerSecond` view records a second, spread
    /// evenly over time and players, or only signs of life if it is 0.
    Play play(std::chrono::duration<double> time, double inputsPerSecond);

  private:
    struct Player;
    struct Inbox;

    void awaitAccepted();
    void receive(Player& player);

    /// The first player of every room, then the second one of every room, and so on.
    std::vector<Player> players_;
    std::unique_ptr<Inbox> inbox_;

    /// The sums of receive().
    Play seen_;
};

} // namespace drench::bench
