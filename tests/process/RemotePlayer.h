#pragma once

#include "tests/process/ServerProcess.h"
#include "tests/support/Datagrams.h"
#include "tests/support/UdpPeer.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

/// A client of the real server: joins, keeps what it hears, and sends what it is told to.
class RemotePlayer {
  public:
    explicit RemotePlayer(int port) : port_(port) {}

    /// Joins and waits for the answer: the identifier, or 0 when refused or unanswered.
    char join(const std::string& name);

    char id() const { return id_; }

    void send(const std::string& datagram) { peer_.send(datagram, port_); }

    /// Listens until a datagram satisfies `wanted` and returns it, or nothing in time. Everything
    /// heard on the way is kept in `heard`, states only as `state`.
    std::optional<std::string> waitFor(const std::function<bool(const std::string&)>& wanted,
                                       int milliseconds = patience);

    bool waitForDatagram(const std::string& datagram, int milliseconds = patience);

    /// Listens until a new state satisfies `wanted`; sends a keep-alive every second meanwhile.
    bool waitForState(const std::function<bool(const UpdateMessage&)>& wanted,
                      int milliseconds = patience);

    /// A player in the last state heard, or null.
    const PlayerUpdate* seen(char id) const;

    /// All but receipts and states, in order of arrival.
    std::vector<std::string> heard;
    UpdateMessage state;
    int receipts = 0;

  private:
    UdpPeer peer_;
    int port_;
    char id_ = 0;
};

/// Whether this is the 532-byte answer that every datagram gets.
bool isReceipt(const std::string& datagram);
