#pragma once

#include "client/Tap.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

// What a recording holds; docs/recordings-format.md has its bytes. RecordingWriter writes one while
// a match goes on, RecentRecording keeps the last minutes of one, RecordingReader reads one.

namespace drench::client {

/// What is known from the start.
struct RecordingHeader {
    /// The arena as the server reads it, a map text; empty if unknown.
    std::string arena;

    /// HOST:PORT, as far as known.
    std::string room;

    /// Name and version: "drench-bots 0.1.0".
    std::string program;

    /// When it began, in microseconds since 1970-01-01 00:00 UTC.
    std::int64_t startedAt = 0;
};

/// A header that begins now.
RecordingHeader headerNow(std::string arena, std::string room, std::string program);

/// From the start of a recording.
using RecordedTime = std::chrono::microseconds;

/// A datagram as it was on the wire.
struct RecordedDatagram {
    RecordedTime time{};
    Way way = Way::fromRoom;

    /// Whose line to the room: 0 in a client's recording, up to mostLines - 1 in a relay's.
    std::uint32_t line = 0;
    std::string bytes;
};

/// Limits of every recording: a writer keeps them, a reader refuses what exceeds them.
namespace recordingLimits {
constexpr std::uint32_t lines = 1u << 20;
constexpr std::size_t datagramBytes = 65535;
constexpr std::size_t arenaBytes = std::size_t{16} << 20;

/// Of `room` and `program` each.
constexpr std::size_t textBytes = 1024;

/// Of a file to be read: a hundred hours of four players.
constexpr std::size_t fileBytes = std::size_t{1} << 30;

/// About 50 days.
constexpr RecordedTime duration{std::int64_t{1} << 42};

/// Of RecordingHeader::startedAt, before and after 1970: 36,000 years, which leaves room for sums.
constexpr std::int64_t startedAt = std::int64_t{1} << 60;
} // namespace recordingLimits

/// Whether a recording may have begun then, in microseconds since 1970.
constexpr bool isPossibleStart(std::int64_t startedAt) {
    return -recordingLimits::startedAt <= startedAt && startedAt <= recordingLimits::startedAt;
}

} // namespace drench::client
