#include "game/RoomProbe.h"

#include "tests/support/UdpPeer.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <thread>

using namespace drench;
using namespace drench::game;

namespace {

using std::chrono::milliseconds;
using Finding = RoomProbe::Finding;

constexpr client::Time start{std::chrono::hours(1)};

std::string receipt() {
    std::string datagram(532, '\0');
    datagram[0] = 'j';
    datagram[528] = 16;
    return datagram;
}

/// A room that the test answers for, and a probe of it with a clock of its own.
class ProbedRoom : public testing::Test {
  protected:
    UdpPeer room;
    RoomProbe probe{"127.0.0.1:" + std::to_string(ntohs(room.address().addr.sin_port))};
    client::Time now = start;

    /// The next question; the look-up of the address may take a moment.
    std::string question() {
        for (int i = 0; i < 500; ++i) {
            probe.service(now);
            if (const std::optional<std::string> asked = room.receive(10)) {
                prober_ = portOf(probe);
                return *asked;
            }
        }
        return "";
    }

    void answer(const std::string& datagram) {
        room.send(datagram, prober_);
        for (int i = 0; i < 500 && !isReadable(); ++i)
            std::this_thread::sleep_for(milliseconds(10));
        probe.service(now);
    }

  private:
    static int portOf(const RoomProbe& probe) {
        sockaddr_in own = {};
        socklen_t length = sizeof own;
        getsockname(probe.descriptor(), reinterpret_cast<sockaddr*>(&own), &length);
        return ntohs(own.sin_port);
    }

    bool isReadable() const {
        char byte;
        return recv(probe.descriptor(), &byte, 1, MSG_PEEK | MSG_DONTWAIT) >= 0;
    }

    int prober_ = 0;
};

} // namespace

TEST_F(ProbedRoom, IsAskedWithoutMakingAPlayerAndItsAnswerIsTimed) {
    EXPECT_EQ(probe.finding(), Finding::asking);
    EXPECT_EQ(question(), std::string("x\0", 2)) << "a keep-alive of nobody";
    now += milliseconds(25);
    answer(receipt());
    EXPECT_EQ(probe.finding(), Finding::answers);
    EXPECT_DOUBLE_EQ(probe.roundTrip().value_or(0.0), 25.0);
    EXPECT_EQ(findingWords(probe), "25 ms");
}

TEST_F(ProbedRoom, IsAskedAgainEveryTwoSecondsAndTheShortestWayCounts) {
    question();
    now += milliseconds(25);
    answer(receipt());
    probe.service(now + milliseconds(1900));
    EXPECT_FALSE(room.receive(30).has_value());
    now += milliseconds(2000);
    EXPECT_FALSE(question().empty());
    now += milliseconds(4);
    answer(receipt());
    EXPECT_EQ(findingWords(probe), "4.0 ms");
    now += milliseconds(2000);
    question();
    now += milliseconds(300);
    answer(receipt());
    EXPECT_EQ(findingWords(probe), "4.0 ms");
}

TEST_F(ProbedRoom, WhatIsNoReceiptIsNoAnswer) {
    question();
    answer("f");
    EXPECT_EQ(probe.finding(), Finding::asking);
    answer(std::string(532, 'u'));
    EXPECT_EQ(probe.finding(), Finding::asking);
}

TEST_F(ProbedRoom, IsSilentAfterThreeQuestionsAndHeardAgainLater) {
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(probe.finding(), Finding::asking);
        EXPECT_FALSE(question().empty());
        now += milliseconds(2001);
        probe.service(now);
    }
    EXPECT_EQ(probe.finding(), Finding::silent);
    EXPECT_EQ(findingWords(probe), "does not answer");
    now += milliseconds(2001);
    ASSERT_FALSE(room.received().empty()) << "it goes on being asked";
    answer(receipt());
    EXPECT_EQ(probe.finding(), Finding::answers);
}

TEST(RoomProbe, KnowsAClosedPortAndAHostThatIsNone) {
    int port = 0;
    {
        UdpPeer closedSoon;
        port = ntohs(closedSoon.address().addr.sin_port);
    }
    RoomProbe closed("127.0.0.1:" + std::to_string(port));
    RoomProbe nowhere("127.0.0.1:70000");
    for (int i = 0;
         i < 500 && (closed.finding() == Finding::asking || nowhere.finding() == Finding::asking);
         ++i) {
        closed.service(start);
        nowhere.service(start);
        std::this_thread::sleep_for(milliseconds(10));
    }
    EXPECT_EQ(findingWords(closed), "nobody listens");
    EXPECT_EQ(findingWords(nowhere), "no such host");
    EXPECT_EQ(nowhere.descriptor(), -1);
}
