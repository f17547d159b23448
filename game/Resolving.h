#pragma once

#include "client/RoomAddress.h"

#include <memory>
#include <optional>
#include <string>

namespace drench::game {

/// A room's address that is looked up beside the frames: the system's resolver may block for
/// seconds. Whoever is no longer interested lets go of it, and the answer is dropped.
class Resolving {
  public:
    explicit Resolving(std::string hostAndPort);

    struct Answer {
        /// Nothing if there is no such room, and then `problem` says why.
        std::optional<client::RoomAddress> room;
        std::string problem;
    };

    /// Nothing while the look-up goes on.
    std::optional<Answer> answer() const;

  private:
    struct Shared;
    std::shared_ptr<Shared> shared_;
};

} // namespace drench::game
