#pragma once

#include "src/Messages.h"
#include "tests/fuzz/RoomSocket.h"

#include <atomic>
#include <thread>

/// A room in which nothing ever moves, with places for players of one's own choice. It takes in one
/// player, who becomes the state's player '1', and sends a snapshot every tick.
class StillRoom {
  public:
    explicit StillRoom(const UpdateMessage& state);

    /// On 127.0.0.1.
    int port() const;

    /// What the player has said so far after joining: at least a sign of life a second.
    int heard() const { return heard_; }

  private:
    void run(const std::stop_token& ends);
    void answer();

    RoomSocket socket_;
    UpdateMessage state_;
    bool hasPlayer_ = false;
    std::atomic<int> heard_ = 0;
    std::jthread thread_;
};
