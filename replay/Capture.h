#pragma once

#include "client/recording/Recording.h"

#include <cstdint>
#include <string>
#include <vector>

namespace drench::replay {

/// What became of a capture.
struct Imported {
    std::string recording;
    std::uint64_t datagrams = 0;

    /// Clients, by address and port: each has a line.
    std::uint32_t lines = 0;

    /// Packets left out: of other ports or protocols; fragments; cut off or malformed ones.
    std::uint64_t others = 0;
    std::uint64_t fragments = 0;
    std::uint64_t broken = 0;
};

/// Makes a recording of a file by tcpdump or Wireshark, pcap or pcapng: of all UDP over IPv4 to and
/// from the room's port. Link layers are Ethernet, Linux's "cooked" ones (-i any), BSD's loopback
/// and raw IP. Throws InputError if the file cannot be read, has another link layer or no datagram
/// of the port.
Imported importCapture(const std::string& path, std::uint16_t port, const std::string& arena,
                       const std::string& program);

} // namespace drench::replay
