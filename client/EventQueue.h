#pragma once

#include "client/Events.h"

#include <cstddef>
#include <optional>
#include <vector>

namespace drench::client {

/// Events on their way to the caller, the oldest first.
class EventQueue {
  public:
    /// Adds an event. Drops it if 1024 already wait: the caller does not seem to take them.
    void push(Event event);

    /// Adds an event that must not be lost.
    void pushAlways(Event event);

    /// Takes the oldest event.
    std::optional<Event> take();

  private:
    std::vector<Event> events_;

    /// The index of the oldest event. The taken ones before it are erased when memory is needed.
    std::size_t first_ = 0;
};

} // namespace drench::client
