#include "client/Records.h"

#include "src/Player.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace drench::client {

namespace {

/// The record in a datagram, byte for byte, if code and length are the record's own.
template<class Record>
bool copyRecord(std::string_view datagram, Record& record) {
    if (datagram.size() != sizeof record || datagram[0] != record.type)
        return false;
    std::memcpy(static_cast<void*>(&record), datagram.data(), sizeof record);
    return true;
}

bool isReceipt(std::string_view datagram) {
    return datagram.size() == sizeof(GenericMessage) && datagram[0] == messageCode::join;
}

bool isFinite(const vec3& vector) {
    return std::isfinite(vector.x) && std::isfinite(vector.y) && std::isfinite(vector.z);
}

bool isFinite(const quat& rotation) {
    return std::isfinite(rotation.x) && std::isfinite(rotation.y) && std::isfinite(rotation.z) &&
           std::isfinite(rotation.w);
}

/// One slot of a state.
PlayerUpdate readSlot(std::string_view bytes) {
    // Before the copy, since not every byte is a bool.
    const char shooting = bytes[offsetof(PlayerUpdate, shooting)];
    PlayerUpdate player;
    std::memcpy(static_cast<void*>(&player), bytes.data(), offsetof(PlayerUpdate, shooting));
    player.shooting = shooting != 0;
    player.id = bytes[offsetof(PlayerUpdate, id)];
    player.name[sizeof player.name - 1] = '\0';
    const bool isSomebody = isPlayerId(player.id) && isFinite(player.position) &&
                            isFinite(player.direction) && isFinite(player.rotation);
    return isSomebody ? player : PlayerUpdate();
}

UpdateMessage readState(std::string_view datagram) {
    UpdateMessage state;
    datagram.remove_prefix(sizeof state - sizeof state.updates);
    for (PlayerUpdate& slot : state.updates) {
        slot = readSlot(datagram.substr(0, sizeof slot));
        datagram.remove_prefix(sizeof slot);
    }
    return state;
}

} // namespace

RoomRecord readRecord(std::string_view datagram) {
    if (isReceipt(datagram))
        return Receipt();
    if (datagram.size() == sizeof(UpdateMessage) && datagram[0] == messageCode::worldState)
        return readState(datagram);
    if (RefusalMessage refusal; copyRecord(datagram, refusal))
        return refusal;
    if (AcceptanceMessage acceptance; copyRecord(datagram, acceptance) && isPlayerId(acceptance.id))
        return acceptance;
    if (TalkMessage talk;
        copyRecord(datagram, talk) && (talk.id == serverSpeaker || isPlayerId(talk.id)))
        return talk;
    return UnknownRecord();
}

std::string_view untilZero(std::string_view bytes) {
    return bytes.substr(0, bytes.find('\0'));
}

bool isPlayerId(char id) {
    return id >= '1' && id < '1' + maxPlayers;
}

const PlayerUpdate* playerWith(const UpdateMessage& state, char id) {
    const auto* const slot =
        std::find_if(std::begin(state.updates), std::end(state.updates),
                     [id](const PlayerUpdate& player) { return id != 0 && player.id == id; });
    return slot == std::end(state.updates) ? nullptr : slot;
}

bool isSoaked(const PlayerUpdate& player) {
    constexpr vec3 there = Player::soakedPlace;
    return player.position.x == there.x && player.position.y == there.y &&
           player.position.z == there.z;
}

} // namespace drench::client
