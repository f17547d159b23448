#pragma once

#include "src/Server.h"
#include "tests/support/UdpPeer.h"

#include <string>

/// A Server driven without main: its socket is open on a port of the system's choice, its world is
/// given as text, its clock is the ManualClock, and datagrams go straight into its queue.
struct Room {
    Server server;

    explicit Room(const std::string& mapText);
    ~Room();
    Room(const Room&) = delete;
    Room& operator=(const Room&) = delete;

    /// Queues a datagram as if `peer` had sent it.
    void queue(const std::string& datagram, const UdpPeer& peer);

    /// Queues a datagram and has it processed.
    void dispatch(const std::string& datagram, const UdpPeer& peer);

    /// Joins `peer`, takes its answers off its socket and returns the new player's identifier.
    char join(const std::string& name, UdpPeer& peer);

    /// Lets time pass, then plays one tick.
    void tick(long milliseconds = 16);
};
