#pragma once

#include "game/RoomProbe.h"

#include <deque>
#include <string>
#include <vector>

namespace drench::game {

/// Rooms to choose from, each being asked whether it is there.
class RoomList {
  public:
    struct Entry {
        std::string address;
        RoomProbe probe;
    };

    /// Asks these rooms, and no longer any others.
    void show(const std::vector<std::string>& addresses);

    void service(client::Time now);

    const std::deque<Entry>& entries() const { return entries_; }

    /// For poll(), those that are open.
    void addDescriptors(std::vector<int>& descriptors) const;

  private:
    std::deque<Entry> entries_;
};

} // namespace drench::game
