#include "client/Records.h"

#include "tests/support/Datagrams.h"

#include <climits>
#include <cstddef>
#include <gtest/gtest.h>
#include <limits>
#include <string>
#include <variant>

using namespace drench;

namespace {

using client::readRecord;
using client::RoomRecord;

constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();
constexpr float infinity = std::numeric_limits<float>::infinity();

/// A player with a value of its own in every field.
PlayerUpdate ann() {
    PlayerUpdate player;
    player.rotation = {0.1f, 0.2f, 0.3f, 0.4f};
    player.position = {1.0f, -2.0f, 3e38f};
    player.direction = {0.5f, 0.6f, 0.7f};
    std::strcpy(player.name, "Ann");
    player.points = INT_MIN;
    player.shooting = true;
    player.id = '1';
    return player;
}

/// The slots of a state with this player in its third slot, as they are read.
UpdateMessage readWith(const PlayerUpdate& player) {
    UpdateMessage state;
    state.updates[2] = player;
    return std::get<UpdateMessage>(readRecord(bytesOf(state)));
}

/// The third slot of a state as it is read, when one byte of it is changed.
PlayerUpdate readSlotWith(std::size_t offset, char byte) {
    UpdateMessage state;
    state.updates[2] = ann();
    std::string datagram = bytesOf(state);
    datagram[datagram.size() - 2 * sizeof(PlayerUpdate) + offset] = byte;
    return std::get<UpdateMessage>(readRecord(datagram)).updates[2];
}

bool isUnknown(const std::string& datagram) {
    return std::holds_alternative<client::UnknownRecord>(readRecord(datagram));
}

bool isEmptySlot(const PlayerUpdate& player) {
    return bytesOf(player) == bytesOf(PlayerUpdate());
}

} // namespace

TEST(Records, AreReadByCodeAndLength) {
    GenericMessage receipt;
    receipt.data[0] = messageCode::join;
    EXPECT_TRUE(std::holds_alternative<client::Receipt>(readRecord(bytesOf(receipt))));
    EXPECT_TRUE(std::holds_alternative<RefusalMessage>(readRecord(refusalDatagram())));
    EXPECT_TRUE(std::holds_alternative<UpdateMessage>(readRecord(bytesOf(UpdateMessage()))));
    EXPECT_EQ(std::get<AcceptanceMessage>(readRecord(acceptanceDatagram('4'))).id, '4');
    const auto talk = std::get<TalkMessage>(readRecord(chatDatagram('3', "Hello!")));
    EXPECT_EQ(bytesOf(talk), chatDatagram('3', "Hello!"));
    EXPECT_EQ(std::get<TalkMessage>(readRecord(noticeDatagram("Ann joined"))).id, serverSpeaker);

    for (const std::string& record : {bytesOf(receipt), refusalDatagram(), bytesOf(UpdateMessage()),
                                      acceptanceDatagram('4'), chatDatagram('3', "Hello!")}) {
        EXPECT_TRUE(isUnknown(record.substr(0, record.size() - 1))) << record[0];
        EXPECT_TRUE(isUnknown(record + '\0')) << record[0];
        EXPECT_TRUE(isUnknown('z' + record.substr(1))) << record[0];
    }
    EXPECT_TRUE(isUnknown(""));
    EXPECT_TRUE(isUnknown(keyDatagram('1', keyIndex::jump, true))) << "which no room sends";
}

TEST(Records, OfIdentifiersThatNoRoomGivesAreUnknown) {
    for (const char id : {'\0', '0', '5', 's', '\xff'})
        EXPECT_TRUE(isUnknown(acceptanceDatagram(id))) << id;
    for (const char id : {'\0', '0', '5', 'z', '\xff'})
        EXPECT_TRUE(isUnknown(chatDatagram(id, "Hello!"))) << id;
    for (const char id : {'1', '2', '3', '4'}) {
        EXPECT_FALSE(isUnknown(acceptanceDatagram(id))) << id;
        EXPECT_FALSE(isUnknown(chatDatagram(id, "Hello!"))) << id;
    }
}

TEST(States, KeepEveryValueInItsSlot) {
    const UpdateMessage state = readWith(ann());
    EXPECT_EQ(bytesOf(state.updates[2]), bytesOf(ann()));
    for (const int empty : {0, 1, 3})
        EXPECT_TRUE(isEmptySlot(state.updates[empty])) << empty;
    EXPECT_EQ(state.type, messageCode::worldState);
}

TEST(States, HaveBooleansOnly) {
    for (const char byte : {'\1', '\2', '\7', '\x80', '\xff'}) {
        const PlayerUpdate player = readSlotWith(offsetof(PlayerUpdate, shooting), byte);
        EXPECT_EQ(bytesOf(player.shooting), std::string(1, '\1')) << int{byte};
    }
    EXPECT_FALSE(readSlotWith(offsetof(PlayerUpdate, shooting), '\0').shooting);
}

TEST(States, EndEveryName) {
    PlayerUpdate player = ann();
    std::string("Bartholomew!").copy(player.name, sizeof player.name);
    EXPECT_STREQ(readWith(player).updates[2].name, "Bartholomew");
}

TEST(States, HaveZerosForPaddings) {
    EXPECT_EQ(bytesOf(readSlotWith(offsetof(PlayerUpdate, padding), 'x')), bytesOf(ann()));
    UpdateMessage state;
    state.padding[0] = 'x';
    const auto read = std::get<UpdateMessage>(readRecord(bytesOf(state)));
    EXPECT_EQ(bytesOf(read), bytesOf(UpdateMessage()));
}

TEST(States, EmptySlotsOfOtherIdentifiers) {
    for (const char id : {'\0', '0', '5', 's', '\xff'})
        EXPECT_TRUE(isEmptySlot(readSlotWith(offsetof(PlayerUpdate, id), id))) << int{id};
    for (const char id : {'1', '2', '3', '4'})
        EXPECT_EQ(readSlotWith(offsetof(PlayerUpdate, id), id).id, id);
}

TEST(States, EmptySlotsOfPlayersWhoAreNowhere) {
    for (std::size_t field = 0; field < 10; ++field) {
        for (const float value : {notANumber, infinity, -infinity}) {
            std::string bytes = bytesOf(ann());
            bytes.replace(field * sizeof value, sizeof value, bytesOf(value));
            PlayerUpdate player;
            std::memcpy(static_cast<void*>(&player), bytes.data(), bytes.size());
            EXPECT_TRUE(isEmptySlot(readWith(player).updates[2])) << field << ' ' << value;
        }
    }
}

TEST(States, AreSearchedForAnIdentifier) {
    const UpdateMessage state = readWith(ann());
    EXPECT_EQ(client::playerWith(state, '1'), &state.updates[2]);
    EXPECT_EQ(client::playerWith(state, '2'), nullptr);
    EXPECT_EQ(client::playerWith(state, '\0'), nullptr) << "the empty slots have it";
}

TEST(Records, SoakedPlayerIsOneAtThePlaceOfTheSoaked) {
    PlayerUpdate player;
    player.position = {-1375.2f, 797.701f, -1280.61f};
    EXPECT_TRUE(client::isSoaked(player));
    for (float vec3::*axis : {&vec3::x, &vec3::y, &vec3::z}) {
        PlayerUpdate beside = player;
        beside.position.*axis += 0.01f;
        EXPECT_FALSE(client::isSoaked(beside));
    }
}
