#include "tests/client/SessionLine.h"

#include "client/RoomAddress.h"

#include <stdexcept>
#include <sys/socket.h>

namespace {

struct Described {
    std::string operator()(const client::Joined& event) const {
        return std::string("joined ") + event.id;
    }
    std::string operator()(const client::Refused&) const { return "refused"; }
    std::string operator()(const client::Unanswered& event) const {
        return event.nobodyListens ? "nobody listens" : "unanswered";
    }
    std::string operator()(const client::Dropped& event) const {
        return event.reason == client::Dropped::Reason::silence ? "silence" : "replaced";
    }
    std::string operator()(const client::Snapshot& event) const {
        return "tick " + std::to_string(event.tick);
    }
    std::string operator()(const client::Chat& event) const {
        return std::string("chat ") + event.speaker + " " + event.text;
    }
    std::string operator()(const client::PlayerJoined& event) const {
        return "joining [" + event.name + "]";
    }
    std::string operator()(const client::PlayerLeft& event) const {
        return "leaving [" + event.name + "]";
    }
    std::string operator()(const client::Soaking& event) const {
        return "soaking [" + event.shooter + "] [" + event.victim + "]";
    }
    std::string operator()(const client::Notice& event) const {
        return "notice [" + event.text + "]";
    }
};

} // namespace

std::string described(const Event& event) {
    return std::visit(Described(), event);
}

Strings described(Session& session) {
    Strings all;
    while (const std::optional<Event> event = session.nextEvent())
        all.push_back(described(*event));
    return all;
}

sockaddr_in loopback(int port) {
    std::string problem;
    return client::resolve("127.0.0.1:" + std::to_string(port), problem).value().address;
}

int portOf(const UdpPeer& peer) {
    return ntohs(peer.address().addr.sin_port);
}

int portOf(const Session& session) {
    sockaddr_in address = {};
    socklen_t length = sizeof address;
    getsockname(session.descriptor(), reinterpret_cast<sockaddr*>(&address), &length);
    return ntohs(address.sin_port);
}

Session joining(const UdpPeer& room, const std::string& name, Time now) {
    std::string problem;
    return Session::join(loopback(portOf(room)), name, now, problem).value();
}

int boundSocket(int port) {
    const int bound = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    const sockaddr_in address = loopback(port);
    if (bind(bound, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
        throw std::runtime_error("the port has been taken");
    return bound;
}

void Line::hear(const std::string& datagram) {
    room.send(datagram, port);
    session.service(now);
}

void Line::pass(milliseconds time) {
    now += time;
    session.service(now);
}

std::string stateDatagram(const std::vector<Occupant>& players) {
    UpdateMessage state;
    for (const Occupant& player : players) {
        PlayerUpdate update;
        update.id = player.id;
        player.name.copy(update.name, sizeof update.name);
        state.add(update);
    }
    return bytesOf(state);
}

std::string annAlone() {
    return stateDatagram({{'1', "Ann"}});
}

std::string receiptDatagram() {
    GenericMessage receipt;
    receipt.data[0] = messageCode::join;
    return bytesOf(receipt);
}

PlayingLine::PlayingLine() {
    hear(acceptanceDatagram('1'));
    events();
    heardByRoom();
}

void PlayingLine::play(milliseconds time) {
    for (; time > milliseconds(0); time -= milliseconds(50)) {
        now += milliseconds(50);
        hear(annAlone());
    }
}

Strings allButKeepAlives(Strings datagrams) {
    std::erase_if(datagrams, [](const std::string& datagram) {
        return datagram[0] == messageCode::keepAlive;
    });
    return datagrams;
}
