#pragma once

#include "client/recording/RecordingReader.h"
#include "src/Messages.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace drench::replay {

using client::RecordedDatagram;
using client::RecordedTime;

/// Follows one line of a recording with several, which all tell the same: the first one that has
/// states, and another one when that has had none for a while.
class OneLine {
  public:
    /// Whether this datagram, the next one of the recording, is of the line that is followed. Only
    /// datagrams from the room are.
    bool takes(const RecordedDatagram& datagram);

  private:
    std::optional<std::uint32_t> line_;
    RecordedTime lastState_{};
};

/// A state as one line has it.
struct Frame {
    RecordedTime time{};
    UpdateMessage state;
};

/// Nine hours of states, which take half a gigabyte.
constexpr std::size_t mostFrames = 2'000'000;

/// The states of one line, from the reader's place on, as client::readRecord() gives them. Throws
/// InputError if there are more than `most`.
std::vector<Frame> statesOf(client::RecordingReader& reader, std::size_t most = mostFrames);

} // namespace drench::replay
