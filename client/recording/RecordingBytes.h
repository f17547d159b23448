#pragma once

#include "client/recording/Block.h"
#include "client/recording/Recording.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace drench::client {

/// Where a block of datagrams lies in a recording.
struct BlockPlace {
    std::uint64_t offset = 0;
    RecordedTime firstTime{};
    RecordedTime lastTime{};
    std::uint64_t datagrams = 0;
};

/// The end of a whole recording: where its index begins.
struct IndexTrailer {
    char mark[8] = {'D', 'R', 'E', 'N', 'C', 'H', 'I', '\1'};
    std::uint64_t offset = 0;
};

/// Makes the bytes of a recording, bit by bit.
class RecordingBytes {
  public:
    /// Throws InputError if the header exceeds recordingLimits.
    explicit RecordingBytes(const RecordingHeader& header);

    /// See BlockBuilder::add().
    void add(const RecordedDatagram& datagram);

    /// What BlockBuilder::take() gave, its times earlier by `shift`. It must not begin before the
    /// last one ended.
    void addBlock(std::string block, RecordedTime shift);

    /// Ends the block begun, if any, so that nothing waits for a second to pass.
    void endBlock();

    /// Ends the block, and adds the index. The last call but takeReady().
    void end();

    /// The bytes made since the last call, in whole blocks.
    std::string takeReady();

  private:
    void append(const std::string& bytes);

    BlockBuilder builder_;
    std::string ready_;
    std::uint64_t size_ = 0;
    std::vector<BlockPlace> places_;
};

} // namespace drench::client
