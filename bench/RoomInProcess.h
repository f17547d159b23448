#pragma once

#include "bench/FiringPlaces.h"
#include "src/Server.h"

#include <array>

namespace drench::bench {

/// The activity of all players of a room.
enum class Pastime { standing, walking, firingAtWalls, firingAtSky };

/// A Server driven without main, with the default arena and four players at known places. Its
/// states go to a socket that nobody reads.
class RoomInProcess {
  public:
    explicit RoomInProcess(Pastime pastime);
    ~RoomInProcess();
    RoomInProcess(const RoomInProcess&) = delete;
    RoomInProcess& operator=(const RoomInProcess&) = delete;

    /// Plays one tick after `inputs` view records of each player have arrived.
    void tick(int inputs);

    Server server;

  private:
    template<typename Record>
    void queue(const Record& record);
    void queueKey(char id, int key, bool down);
    void queueView(char id, int dx, int dy);

    Pastime pastime_;
    Client sink_;
    int sinkSocket_;
    long tick_ = 0;
};

} // namespace drench::bench
