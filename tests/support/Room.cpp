#include "tests/support/Room.h"

#include "tests/support/CapturedOutput.h"
#include "tests/support/Datagrams.h"
#include "tests/support/ManualClock.h"

#include <algorithm>

Room::Room(const std::string& mapText) {
    const CapturedOutput quiet;
    server.sockInfo.init(0);
    server.mapMan.init(mapText);
}

Room::~Room() {
    server.cleanup();
}

void Room::queue(const std::string& datagram, const UdpPeer& peer) {
    GenericMessage record;
    std::copy_n(datagram.data(), std::min(datagram.size(), sizeof record.data), record.data);
    record.client = peer.address();
    server.inMessages.push(record);
}

void Room::dispatch(const std::string& datagram, const UdpPeer& peer) {
    queue(datagram, peer);
    server.readMessages();
}

char Room::join(const std::string& name, UdpPeer& peer) {
    const CapturedOutput quiet;
    dispatch(joinDatagram(name), peer);
    peer.received();
    return server.players.back().getPlayerID();
}

void Room::tick(long milliseconds) {
    ManualClock::now += milliseconds;
    server.update();
}
