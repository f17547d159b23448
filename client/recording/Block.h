#pragma once

#include "client/recording/Recording.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// A recording is a magic number and blocks behind it, each of which can be read without the others.

namespace drench::client {

constexpr std::string_view recordingMagic("DRENCHR\1", 8);

enum class BlockKind : char { header = 'H', arena = 'A', datagrams = 'D', index = 'I' };

/// What stands before the bytes of a block, little-endian.
struct BlockHead {
    char mark[3] = {'B', 'L', 'K'};
    BlockKind kind = BlockKind::datagrams;

    /// Bytes that follow, and what they are when decompressed.
    std::uint32_t storedBytes = 0;
    std::uint32_t bytes = 0;
    std::uint32_t datagrams = 0;

    /// Microseconds: of the first and the last datagram; else 0.
    std::int64_t firstTime = 0;
    std::int64_t lastTime = 0;

    /// Of the bytes that follow, and of this head up to here.
    std::uint64_t storedChecksum = 0;
    std::uint64_t headChecksum = 0;
};

static_assert(sizeof(BlockHead) == 48);

/// Limits of one block, which bound what its reader allocates.
namespace blockLimits {
constexpr std::uint32_t storedBytes = 20u << 20;
constexpr std::uint32_t bytes = 20u << 20;
constexpr std::uint32_t datagrams = 1u << 14;

/// Of a header's content.
constexpr std::uint32_t headerBytes = 4096;

/// Of all the datagrams of a block together.
constexpr std::size_t datagramBytes = std::size_t{8} << 20;
} // namespace blockLimits

/// Brings the checksum of a head up to date.
void seal(BlockHead& head);

/// A whole block: its head, and `bytes` compressed.
std::string blockOf(BlockKind kind, std::string_view bytes, BlockHead head = {});

/// The head at the front of `bytes`, if one is there that keeps the limits.
std::optional<BlockHead> headAt(std::string_view bytes);

/// Decompresses what followed a head. Throws InputError if it is damaged.
std::string contentOf(const BlockHead& head, std::string_view stored);

/// Gathers datagrams into blocks.
class BlockBuilder {
  public:
    /// A datagram earlier than the one before counts as of its time, one longer than
    /// recordingLimits::datagramBytes is cut.
    void add(const RecordedDatagram& datagram);

    /// Whether a datagram belongs into this block: it is not full, and would not span a second.
    bool hasRoomFor(const RecordedDatagram& datagram) const;
    bool isEmpty() const { return datagrams_.empty(); }

    RecordedTime firstTime() const { return datagrams_.front().time; }
    RecordedTime lastTime() const { return last_; }

    /// The block of all that was added since the last call; there must be something.
    std::string take();

  private:
    std::vector<RecordedDatagram> datagrams_;
    std::size_t bytes_ = 0;
    RecordedTime last_{};
};

/// The datagrams of a block. Throws InputError if it is damaged.
std::vector<RecordedDatagram> datagramsOf(const BlockHead& head, std::string_view stored);

} // namespace drench::client
