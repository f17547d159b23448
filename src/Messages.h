#pragma once

#include "NetworkInfo.h"
#include "Quaternion.h"
#include "Vector.h"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

// Every record on the wire, byte for byte as it is sent: the memory is the message. Multi-byte
// fields are little-endian, floats are IEEE 754 single precision. Bytes without a meaning are 0.

static_assert(std::endian::native == std::endian::little);

/// First byte of every datagram. '\0' stands for an empty one.
namespace messageCode {
constexpr char join = 'j';       // client: wish to play; server: receipt for any datagram
constexpr char leave = 'd';      // client
constexpr char key = 'k';        // client
constexpr char view = 'm';       // client
constexpr char chat = 't';       // both ways
constexpr char keepAlive = 'x';  // client
constexpr char accepted = 's';   // server: join answer, followed by the identifier
constexpr char full = 'f';       // server: join answer
constexpr char worldState = 'u'; // server
} // namespace messageCode

/// Third byte of a key message.
namespace keyIndex {
constexpr int right = 0;
constexpr int left = 1;
constexpr int backward = 2;
constexpr int forward = 3;
constexpr int jump = 4;
constexpr int shoot = 5;
constexpr int count = 6;
} // namespace keyIndex

/// The speaker of the server's own notices.
constexpr char serverSpeaker = 's';

/// Slots of an UpdateMessage, and so the most players a room admits.
constexpr int maxPlayers = 4;

/// An inbound datagram and its sender. The receipt is a whole record of this kind, all 532 bytes.
struct GenericMessage {
    /// The datagram, cut to 512 bytes and followed by zeros.
    char data[512] = {};
    Client client;
};

static_assert(sizeof(GenericMessage) == 532 && offsetof(GenericMessage, client) == 512);

/// Reads the first bytes of a datagram as a `Record`, without a look at its type. Missing bytes are
/// 0.
template<typename Record>
Record recordIn(const GenericMessage& message) {
    static_assert(std::is_trivially_copyable_v<Record> && sizeof(Record) <= sizeof message.data);
    Record record;
    std::memcpy(static_cast<void*>(&record), message.data, sizeof record);
    return record;
}

/// A wish to play. The name ends with a 0. Clients may send fewer or more bytes; the room keeps at
/// most 11 characters.
struct JoinMessage {
    char type = messageCode::join;
    char name[12] = {};
};

static_assert(sizeof(JoinMessage) == 13 && offsetof(JoinMessage, name) == 1);

struct LeaveMessage {
    char type = messageCode::leave;
    char id = 0;
};

static_assert(sizeof(LeaveMessage) == 2 && offsetof(LeaveMessage, id) == 1);

/// A key held or released.
struct KeyMessage {
    char type = messageCode::key;
    char id = 0;

    /// One of keyIndex; others are ignored.
    signed char key = 0;

    /// Non-zero while held.
    char down = 0;
};

static_assert(sizeof(KeyMessage) == 4 && offsetof(KeyMessage, id) == 1 &&
              offsetof(KeyMessage, key) == 2 && offsetof(KeyMessage, down) == 3);

/// Mouse counts since the last one: Player::rotateView.
struct ViewMessage {
    char type = messageCode::view;
    char id = 0;
    char padding[2] = {};
    std::int32_t dx = 0;
    std::int32_t dy = 0;
};

static_assert(sizeof(ViewMessage) == 12 && offsetof(ViewMessage, id) == 1 &&
              offsetof(ViewMessage, dx) == 4 && offsetof(ViewMessage, dy) == 8);

/// A sign of life.
struct KeepAliveMessage {
    char type = messageCode::keepAlive;
    char id = 0;
};

static_assert(sizeof(KeepAliveMessage) == 2 && offsetof(KeepAliveMessage, id) == 1);

/// The acceptance of a join, with the identifier of the new player.
struct AcceptanceMessage {
    char type = messageCode::accepted;
    char id = 0;
};

static_assert(sizeof(AcceptanceMessage) == 2 && offsetof(AcceptanceMessage, id) == 1);

/// The room is full.
struct RefusalMessage {
    char type = messageCode::full;
};

static_assert(sizeof(RefusalMessage) == 1);

/// Head of the world-state record.
struct Message {
    char type;

    Message() : type(0) {}
};

static_assert(sizeof(Message) == 1);

/// Chat and server notices.
struct TalkMessage {
    char type = messageCode::chat;

    /// The speaker: a player's identifier or serverSpeaker.
    char id = 'z';

    /// Ends with a 0 unless all 30 characters are used.
    char text[30] = {};
};

static_assert(sizeof(TalkMessage) == 32 && offsetof(TalkMessage, id) == 1 &&
              offsetof(TalkMessage, text) == 2);

/// One player's visible state.
struct PlayerUpdate {
    quat rotation;
    vec3 position;
    vec3 direction;

    /// At most 11 characters and a 0.
    char name[12] = {};
    std::int32_t points = 0;
    bool shooting = false;

    /// 0 marks an empty slot.
    char id = 0;
    char padding[2] = {};
};

static_assert(sizeof(PlayerUpdate) == 60 && offsetof(PlayerUpdate, rotation) == 0 &&
              offsetof(PlayerUpdate, position) == 16 && offsetof(PlayerUpdate, direction) == 28 &&
              offsetof(PlayerUpdate, name) == 40 && offsetof(PlayerUpdate, points) == 52 &&
              offsetof(PlayerUpdate, shooting) == 56 && offsetof(PlayerUpdate, id) == 57 &&
              offsetof(PlayerUpdate, padding) == 58);
static_assert(std::is_trivially_copyable_v<PlayerUpdate>);

/// The state of all players, sent to each of them once per tick.
struct UpdateMessage : Message {
    char padding[3] = {};
    PlayerUpdate updates[maxPlayers];

    UpdateMessage() { type = messageCode::worldState; }

    /// Copies `update`, but not its padding, into the first slot whose id is 0. If no slot is free,
    /// the update is dropped. An update whose own id is 0 leaves its slot looking empty.
    void add(PlayerUpdate update) {
        for (PlayerUpdate& slot : updates) {
            if (slot.id == 0) {
                std::memcpy(static_cast<void*>(&slot), &update, offsetof(PlayerUpdate, padding));
                return;
            }
        }
    }
};

// Compilers warn of offsetof in a record with a base class; these numbers leave no other layout.
static_assert(sizeof(UpdateMessage) == 244 && alignof(UpdateMessage) == 4 &&
              sizeof(UpdateMessage::padding) == 3 && sizeof(UpdateMessage::updates) == 240);
