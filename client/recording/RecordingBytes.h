#pragma once

#include "client/recording/Block.h"
#include "client/recording/Recording.h"

#include <cstddef>
#include <cstdint>
#include <string>

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
    /// @param mostBytes  of the whole file, at least lastBytes
    explicit RecordingBytes(const RecordingHeader& header,
                            std::size_t mostBytes = recordingLimits::fileBytes);

    /// Room for the last two blocks, and for what an index takes besides its places.
    static constexpr std::size_t lastBytes = std::size_t{4} << 20;

    /// See BlockBuilder::add(). Throws InputError, and adds nothing, if the file could become too
    /// large to be read.
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

    std::size_t mostBytes_;
    BlockBuilder builder_;
    std::string ready_;
    std::uint64_t size_ = 0;

    /// The content of the index without its first number, and the last block in it.
    std::string places_;
    std::uint64_t blocks_ = 0;
    BlockPlace last_;
};

} // namespace drench::client
