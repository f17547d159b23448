#include "tests/client/SessionLine.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <variant>

namespace {

/// Takes the room's address from the socket, so that the system refuses to send.
void cutOff(const Session& session) {
    const sockaddr nowhere = {AF_UNSPEC, {}};
    ASSERT_EQ(connect(session.descriptor(), &nowhere, sizeof nowhere), 0);
}

Strings bytesOfAll(const std::vector<client::InputRecord>& records) {
    Strings all;
    for (const client::InputRecord& record : records)
        all.push_back(std::visit([](const auto& known) { return bytesOf(known); }, record));
    return all;
}

} // namespace

TEST(SessionSending, CountsWhatWentOutAndWhatDidNot) {
    PlayingLine line;
    const std::uint64_t sent = line.session.statistics().sent;
    line.session.turn(1, 0);
    line.pass(milliseconds(0));
    EXPECT_EQ(line.session.statistics().sent, sent + 1);
    EXPECT_EQ(line.session.statistics().unsent, 0u);

    cutOff(line.session);
    line.session.turn(2, 0);
    line.pass(milliseconds(0));
    EXPECT_EQ(line.session.statistics().sent, sent + 1);
    EXPECT_EQ(line.session.statistics().unsent, 1u);
    EXPECT_EQ(line.session.roundTrip().datagrams(), sent + 1) << "no receipt will come";
    EXPECT_EQ(line.heardByRoom(), Strings{viewDatagram('1', 1, 0)});
}

TEST(SessionSending, TellsTheInputsOfTheLastService) {
    PlayingLine line;
    EXPECT_TRUE(line.session.sentInputs().empty());
    line.session.setKey(keyIndex::forward, true);
    line.session.turn(7, -3);
    line.session.say("Now!");
    line.pass(milliseconds(0));
    EXPECT_EQ(bytesOfAll(line.session.sentInputs()), line.heardByRoom());
    EXPECT_EQ(line.session.sentInputs().size(), 3u);
    line.play(milliseconds(200));
    EXPECT_TRUE(line.session.sentInputs().empty());
    line.play(milliseconds(50));
    EXPECT_EQ(bytesOfAll(line.session.sentInputs()), line.heardByRoom()) << "the key's next copy";
    line.pass(milliseconds(999));
    line.heardByRoom();
    line.pass(milliseconds(1));
    EXPECT_TRUE(line.session.sentInputs().empty()) << "a keep-alive is no input";
}

TEST(SessionSending, TellsNoInputThatDidNotGoOut) {
    PlayingLine line;
    cutOff(line.session);
    line.session.turn(1, 0);
    line.pass(milliseconds(0));
    EXPECT_TRUE(line.session.sentInputs().empty());
}

TEST(SessionSending, TellsTheInputsOfLeaving) {
    PlayingLine line;
    line.session.turn(7, -3);
    line.pass(milliseconds(0));
    line.session.turn(1, 1);
    line.session.leave(line.now);
    EXPECT_EQ(bytesOfAll(line.session.sentInputs()), Strings{viewDatagram('1', 1, 1)});
}
