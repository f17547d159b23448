#include "src/Messages.h"

#include "tests/support/Datagrams.h"

#include <bit>
#include <gtest/gtest.h>
#include <string>

namespace {

std::string littleEndian(std::uint32_t value) {
    std::string bytes;
    for (int shift = 0; shift < 32; shift += 8)
        bytes += static_cast<char>(value >> shift & 0xff);
    return bytes;
}

std::string littleEndian(std::initializer_list<float> values) {
    std::string bytes;
    for (float value : values)
        bytes += littleEndian(std::bit_cast<std::uint32_t>(value));
    return bytes;
}

std::string zeros(size_t count) {
    return std::string(count, '\0');
}

/// What a PlayerUpdate is before anything is set.
std::string emptySlot() {
    return littleEndian({0, 0, 0, 1}) + zeros(44);
}

/// A record with no zero byte in its name and flags, not even in its padding.
PlayerUpdate filled(char id) {
    PlayerUpdate update;
    update.rotation = {1, 2, 3, 4};
    update.position = {5, 6, 7};
    update.direction = {8, 9, 10};
    std::memcpy(update.name, "Bartholomew", 12);
    update.points = -2;
    update.shooting = true;
    update.id = id;
    update.padding[0] = '?';
    update.padding[1] = '?';
    return update;
}

/// The part of filled(id) that travels.
std::string filledBytes(char id) {
    return littleEndian({1, 2, 3, 4, 5, 6, 7, 8, 9, 10}) + "Bartholomew" + zeros(1) +
           littleEndian(0xfffffffe) + '\1' + id;
}

} // namespace

TEST(MessageCodes, AreTheLettersOfTheProtocol) {
    EXPECT_EQ(messageCode::join, 0x6A);
    EXPECT_EQ(messageCode::leave, 0x64);
    EXPECT_EQ(messageCode::key, 0x6B);
    EXPECT_EQ(messageCode::view, 0x6D);
    EXPECT_EQ(messageCode::chat, 0x74);
    EXPECT_EQ(messageCode::keepAlive, 0x78);
    EXPECT_EQ(messageCode::accepted, 0x73);
    EXPECT_EQ(messageCode::full, 0x66);
    EXPECT_EQ(messageCode::worldState, 0x75);
    EXPECT_EQ(serverSpeaker, 's') << "the same letter as an accepted join";
}

TEST(GenericMessage, IsFiveHundredTwelveBytesOfDatagramThenTheSendersAddress) {
    GenericMessage message;
    message.data[0] = 'k';
    message.data[511] = '!';
    message.client.addr.sin_family = AF_INET;
    message.client.addr.sin_port = 0x3412;
    const std::string bytes = bytesOf(message);
    ASSERT_EQ(bytes.size(), 532u);
    EXPECT_EQ(bytes[0], 'k');
    EXPECT_EQ(bytes[511], '!');
    EXPECT_EQ(bytes.substr(512, 4), std::string("\x02\0\x12\x34", 4));
    EXPECT_EQ(bytes.substr(528), littleEndian(16u));
}

TEST(GenericMessage, IsZeroButForTheAddressLengthSoThatAReceiptCarriesNoStaleMemory) {
    EXPECT_EQ(bytesOf(GenericMessage()), zeros(528) + littleEndian(16u));
}

TEST(JoinMessage, IsTheNameBehindItsType) {
    EXPECT_EQ(bytesOf(JoinMessage()), "j" + zeros(12));
    EXPECT_EQ(bytesOf(JoinMessage{.name = "Bartholomew"}), "jBartholomew" + zeros(1));
}

TEST(LeaveMessage, IsItsTypeAndThePlayer) {
    EXPECT_EQ(bytesOf(LeaveMessage{.id = '2'}), "d2");
}

TEST(KeyMessage, IsTypePlayerKeyAndState) {
    EXPECT_EQ(bytesOf(KeyMessage{.id = '2', .key = keyIndex::shoot, .down = 1}), "k2\5\1");
    EXPECT_EQ(bytesOf(KeyMessage{.id = '2', .key = -1}), "k2\xff" + zeros(1));
}

TEST(ViewMessage, HasItsCountsAtFourAndEight) {
    EXPECT_EQ(bytesOf(ViewMessage{.id = '2', .dx = -2, .dy = 258}),
              "m2" + zeros(2) + littleEndian(0xfffffffe) + std::string("\2\1\0\0", 4));
}

TEST(KeepAliveMessage, IsItsTypeAndThePlayer) {
    EXPECT_EQ(bytesOf(KeepAliveMessage{.id = '2'}), "x2");
}

TEST(AcceptanceMessage, IsItsTypeAndTheNewPlayer) {
    EXPECT_EQ(bytesOf(AcceptanceMessage{.id = '2'}), "s2");
}

TEST(RefusalMessage, IsOneByte) {
    EXPECT_EQ(bytesOf(RefusalMessage()), "f");
}

TEST(RecordIn, ReadsAsManyBytesOfADatagramAsTheRecordHas) {
    GenericMessage message;
    const std::string datagram = "m2??" + littleEndian(0xfffffffe) + littleEndian(258) + "more";
    datagram.copy(message.data, datagram.size());
    const auto view = recordIn<ViewMessage>(message);
    EXPECT_EQ(view.type, messageCode::view);
    EXPECT_EQ(view.id, '2');
    EXPECT_EQ(view.dx, -2);
    EXPECT_EQ(view.dy, 258);
}

TEST(RecordIn, ReadsZerosWhereTheDatagramEnds) {
    GenericMessage message;
    std::strcpy(message.data, "k2\5");
    EXPECT_EQ(recordIn<KeyMessage>(message).key, keyIndex::shoot);
    EXPECT_EQ(recordIn<KeyMessage>(message).down, 0);
}

TEST(Message, StartsWithoutAType) {
    EXPECT_EQ(bytesOf(Message()), zeros(1));
}

TEST(TalkMessage, StartsAsChatOfSpeakerZWithoutText) {
    EXPECT_EQ(bytesOf(TalkMessage()), "tz" + zeros(30));
}

TEST(TalkMessage, CarriesThirtyCharactersBehindTypeAndSpeaker) {
    TalkMessage message;
    message.id = '1';
    std::memset(message.text, '!', sizeof message.text);
    EXPECT_EQ(bytesOf(message), "t1" + std::string(30, '!'));
}

TEST(PlayerUpdate, StartsAsAnEmptySlotFacingNowhere) {
    EXPECT_EQ(bytesOf(PlayerUpdate()), emptySlot());
}

TEST(PlayerUpdate, FieldsLieAtTheirOffsetsLittleEndianScalarPartLast) {
    const std::string bytes = bytesOf(filled('2'));
    ASSERT_EQ(bytes.size(), 60u);
    EXPECT_EQ(bytes.substr(0, 16), littleEndian({1, 2, 3, 4})) << "rotation";
    EXPECT_EQ(bytes.substr(16, 12), littleEndian({5, 6, 7})) << "position";
    EXPECT_EQ(bytes.substr(28, 12), littleEndian({8, 9, 10})) << "direction";
    EXPECT_EQ(bytes.substr(40, 12), "Bartholomew" + zeros(1)) << "name";
    EXPECT_EQ(bytes.substr(52, 4), std::string("\xfe\xff\xff\xff")) << "points";
    EXPECT_EQ(bytes[56], 1) << "shooting";
    EXPECT_EQ(bytes[57], '2') << "id";
}

TEST(UpdateMessage, WithoutPlayersIsTypeUAndFourEmptySlots) {
    const std::string bytes = bytesOf(UpdateMessage());
    ASSERT_EQ(bytes.size(), 244u);
    EXPECT_EQ(bytes, "u" + zeros(3) + emptySlot() + emptySlot() + emptySlot() + emptySlot());
    for (size_t idByte : {61u, 121u, 181u, 241u})
        EXPECT_EQ(bytes[idByte], 0);
}

TEST(UpdateMessage, SlotsLieAtFour64124And184) {
    UpdateMessage message;
    for (char id : {'1', '2', '3', '4'})
        message.add(filled(id));
    const std::string bytes = bytesOf(message);
    EXPECT_EQ(bytes.substr(0, 4), "u" + zeros(3));
    EXPECT_EQ(bytes.substr(4, 58), filledBytes('1'));
    EXPECT_EQ(bytes.substr(64, 58), filledBytes('2'));
    EXPECT_EQ(bytes.substr(124, 58), filledBytes('3'));
    EXPECT_EQ(bytes.substr(184, 58), filledBytes('4'));
}

TEST(UpdateMessage, PaddingOfAnAddedRecordIsNotCopied) {
    UpdateMessage message;
    for (char id : {'1', '2', '3', '4'})
        message.add(filled(id));
    const std::string bytes = bytesOf(message);
    for (size_t slot : {4u, 64u, 124u, 184u})
        EXPECT_EQ(bytes.substr(slot + 58, 2), zeros(2));
}

TEST(UpdateMessage, PlayersFillTheSlotsInOrderWhateverTheirIdentifiers) {
    UpdateMessage message;
    message.add(filled('1'));
    message.add(filled('3'));
    EXPECT_EQ(message.updates[0].id, '1');
    EXPECT_EQ(message.updates[1].id, '3');
    EXPECT_EQ(message.updates[2].id, 0);
    EXPECT_EQ(message.updates[3].id, 0);
}

TEST(UpdateMessage, FifthPlayerIsDropped) {
    UpdateMessage message;
    for (char id : {'1', '2', '3', '4'})
        message.add(filled(id));
    const std::string before = bytesOf(message);
    message.add(filled('5'));
    EXPECT_EQ(bytesOf(message), before);
}

TEST(UpdateMessage, RecordWithoutIdentifierLeavesItsSlotToTheNext) {
    UpdateMessage message;
    message.add(filled('\0'));
    EXPECT_EQ(message.updates[0].points, -2) << "copied all the same";
    PlayerUpdate next = filled('2');
    next.points = 7;
    message.add(next);
    EXPECT_EQ(message.updates[0].points, 7);
    EXPECT_EQ(message.updates[0].id, '2');
    EXPECT_EQ(message.updates[1].id, 0);
}

TEST(UpdateMessage, FirstEmptySlotIsFilledEvenBeforeTakenOnes) {
    UpdateMessage message;
    for (char id : {'1', '2', '3'})
        message.add(filled(id));
    message.updates[1].id = 0;
    message.add(filled('4'));
    EXPECT_EQ(message.updates[1].id, '4');
    EXPECT_EQ(message.updates[3].id, 0);
}
