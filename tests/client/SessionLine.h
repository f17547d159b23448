#pragma once

#include "client/Session.h"
#include "tests/support/Datagrams.h"
#include "tests/support/UdpPeer.h"

#include <chrono>
#include <netinet/in.h>
#include <string>
#include <vector>

using namespace drench;

// A session and the room's end of its line, on 127.0.0.1, where what is sent has arrived.

using client::Event;
using client::Session;
using client::Time;
using std::chrono::milliseconds;
using Strings = std::vector<std::string>;

/// An event as one line: its kind and what it holds.
std::string described(const Event& event);

/// The events that the session has, taken from it.
Strings described(Session& session);

sockaddr_in loopback(int port);
int portOf(const UdpPeer& peer);
int portOf(const Session& session);

Session joining(const UdpPeer& room, const std::string& name, Time now);

/// A socket on 127.0.0.1 at this port, as a room that starts there has it.
int boundSocket(int port);

/// A session, the room's end of its line, and the time at both.
struct Line {
    UdpPeer room;
    Time now;
    Session session;
    int port;

    explicit Line(const std::string& name = "Ann")
        : session(joining(room, name, now)), port(portOf(session)) {}

    /// Lets the session hear a datagram.
    void hear(const std::string& datagram);

    /// Lets time pass, then serves the session.
    void pass(milliseconds time);

    /// All that the room heard since it was last asked.
    Strings heardByRoom() { return room.received(); }

    Strings events() { return described(session); }
};

struct Occupant {
    char id;
    std::string name;
};

std::string stateDatagram(const std::vector<Occupant>& players);

/// A state with the player of a PlayingLine.
std::string annAlone();

std::string receiptDatagram();

/// A line whose session plays as player 1 and has been heard and told of that.
struct PlayingLine : Line {
    PlayingLine();

    /// Lets time pass in steps of 50 ms, with a snapshot at the end of each.
    void play(milliseconds time);
};

Strings allButKeepAlives(Strings datagrams);
