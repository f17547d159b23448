#pragma once

#include "client/Clock.h"
#include "client/recording/Block.h"
#include "client/recording/Recording.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <utility>

namespace drench::client {

/// The last minutes, in memory, from which a recording can be made at any time.
class RecentRecording {
  public:
    /// The most bytes kept, whatever comes: older ones are forgotten first.
    static constexpr std::size_t mostBytes = std::size_t{64} << 20;

    /// @param header  of the recordings to be made; their start moves along
    /// @param span  how much is kept; up to a second more
    RecentRecording(RecordingHeader header, Time start, RecordedTime span);

    /// The arena became known: see RecordingHeader.
    void setArena(std::string arena) { header_.arena = std::move(arena); }

    /// A datagram passed at `now`. Once a second this takes as long as shrinking a second's
    /// datagrams: a fraction of a millisecond.
    void take(Way way, std::uint32_t line, std::string_view datagram, Time now);

    /// A recording of what is kept, as the bytes of a file; it has no datagrams when nothing is.
    std::string recording();

    /// From the first datagram kept to the last; 0 without any.
    RecordedTime duration() const;

    /// What is kept now, in memory.
    std::size_t bytes() const { return bytes_; }

  private:
    struct Kept {
        std::string block;
        RecordedTime firstTime;
        RecordedTime lastTime;
    };

    void endBlock();

    RecordingHeader header_;
    Time start_;
    RecordedTime span_;
    BlockBuilder builder_;
    std::deque<Kept> blocks_;
    std::size_t bytes_ = 0;
};

} // namespace drench::client
