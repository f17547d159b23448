#pragma once

#include "src/NetworkInfo.h"

#include <optional>
#include <string>
#include <vector>

/// A client's end of the protocol: one UDP socket on 127.0.0.1. Datagrams are byte strings.
class UdpPeer {
  public:
    UdpPeer();
    ~UdpPeer();
    UdpPeer(const UdpPeer&) = delete;
    UdpPeer& operator=(const UdpPeer&) = delete;

    /// The address at which the server reaches this peer.
    Client address() const;

    /// Sends to a port on 127.0.0.1.
    void send(const std::string& datagram, int port);

    /// The next datagram, or nothing if none comes within `milliseconds`.
    std::optional<std::string> receive(int milliseconds);

    /// All datagrams that have arrived so far.
    std::vector<std::string> received();

  private:
    int socket_;
};
