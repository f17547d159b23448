#pragma once

#include "src/Messages.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <string>

/// The state that a room sends next, as bytes: they need not be values of the record's types.
class HostileState {
  public:
    explicit HostileState(const UpdateMessage& state) {
        std::memcpy(bytes_, &state, sizeof bytes_);
    }

    /// Some bytes of one player's slot.
    void change(std::size_t player, std::size_t offset, const std::string& bytes) {
        const std::size_t start = sizeof(UpdateMessage) - sizeof(UpdateMessage::updates) +
                                  sizeof(PlayerUpdate) * (player % maxPlayers) +
                                  offset % sizeof(PlayerUpdate);
        std::memcpy(bytes_ + start, bytes.data(), std::min(bytes.size(), sizeof bytes_ - start));
    }

    std::string datagram() const { return {bytes_, sizeof bytes_}; }

  private:
    char bytes_[sizeof(UpdateMessage)];
};
