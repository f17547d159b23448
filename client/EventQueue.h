#pragma once

#include "client/Events.h"

#include <cstddef>
#include <optional>
#include <vector>

namespace drench::client {

/// Events on their way to the caller, the oldest first.
class EventQueue {
  public:
    /// Adds an event; drops it when 1024 wait, since nobody seems to take them.
    void push(Event event);

    /// Adds an event that must not be lost.
    void pushAlways(Event event);

    /// Takes the oldest event.
    std::optional<Event> take();

  private:
    std::vector<Event> events_;

    /// The events before this one have been taken; they go when the room is needed.
    std::size_t first_ = 0;
};

} // namespace drench::client
