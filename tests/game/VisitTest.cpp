#include "game/Visit.h"

#include "tests/game/Snapshots.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/UdpPeer.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <thread>

using namespace drench;
using namespace drench::game;

namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;
using Place = Screens::Place;

/// A visit to a room that the test answers for, with a clock by hand.
class VisitedRoom : public testing::Test {
  protected:
    UdpPeer room;
    std::string address = "127.0.0.1:" + std::to_string(ntohs(room.address().addr.sin_port));
    Visit visit;
    client::Time now{std::chrono::hours(1)};
    int heard = 0;

    void service() {
        visit.service(now, {[](client::Session&) {},
                            [this](const client::Event&, client::Session&) { ++heard; }});
    }

    /// Whether the visit joins, now or within a moment of the real clock: addresses are looked up
    /// in the background.
    bool joins() {
        for (int i = 0; i < 500; ++i) {
            service();
            for (const std::string& datagram : room.received()) {
                if (datagram.starts_with("jAnn"))
                    return true;
            }
            std::this_thread::sleep_for(milliseconds(5));
        }
        return false;
    }

    void answer(const std::string& datagram) {
        sockaddr_in own = {};
        socklen_t length = sizeof own;
        const int descriptor = visit.session()->descriptor();
        getsockname(descriptor, reinterpret_cast<sockaddr*>(&own), &length);
        room.send(datagram, ntohs(own.sin_port));
        char byte;
        for (int i = 0; i < 500 && recv(descriptor, &byte, 1, MSG_PEEK | MSG_DONTWAIT) < 0; ++i)
            std::this_thread::sleep_for(milliseconds(5));
        service();
    }

    void sendState() {
        const UpdateMessage state = snapshotOf({playerAt('1', {500.0f, 139.0f, 500.0f}, "Ann")});
        answer({reinterpret_cast<const char*>(&state), sizeof state});
    }

    void pass(milliseconds time) {
        now += time;
        service();
    }

    void enter() {
        visit.join(address, "Ann", now);
        ASSERT_TRUE(joins());
        answer("s1");
        sendState();
        ASSERT_EQ(visit.screens().place(), Place::match);
    }
};

} // namespace

TEST_F(VisitedRoom, IsJoinedOnceItsAddressIsKnownAndEntered) {
    visit.join(address, "Ann", now);
    EXPECT_EQ(visit.screens().place(), Place::joining);
    ASSERT_TRUE(joins());
    EXPECT_FALSE(visit.hasEntered());
    answer("s1");
    EXPECT_EQ(visit.screens().place(), Place::match);
    EXPECT_TRUE(visit.hasEntered());
    sendState();
    EXPECT_EQ(heard, 2) << "the acceptance and the snapshot";
}

TEST_F(VisitedRoom, ThatIsFullIsToldAndJoinedAgainAfterAWhile) {
    visit.join(address, "Ann", now);
    ASSERT_TRUE(joins());
    answer("f");
    for (int i = 0; i < 20 && visit.session(); ++i)
        pass(milliseconds(100));
    EXPECT_EQ(visit.screens().place(), Place::trouble);
    EXPECT_EQ(visit.screens().trouble().what, address + " is full.");
    now += seconds(2);
    EXPECT_TRUE(joins());
    EXPECT_EQ(visit.screens().place(), Place::joining);
}

TEST_F(VisitedRoom, ThatFallsSilentIsJoinedAgainAndEnteredAgain) {
    enter();
    for (int i = 0; i < 100 && visit.session(); ++i)
        pass(milliseconds(100));
    EXPECT_EQ(visit.screens().place(), Place::trouble);
    EXPECT_EQ(visit.screens().trouble().what, address + " has fallen silent.");
    now += seconds(1);
    ASSERT_TRUE(joins());
    EXPECT_FALSE(visit.screens().trouble().what.empty());
    answer("s1");
    EXPECT_EQ(visit.screens().place(), Place::match);
    EXPECT_TRUE(visit.screens().trouble().what.empty());
}

TEST_F(VisitedRoom, IsLeftInWordsToTheRoom) {
    enter();
    room.received();
    visit.leave(now);
    EXPECT_EQ(visit.screens().place(), Place::start);
    EXPECT_EQ(visit.session(), nullptr);
    const std::optional<std::string> leave = room.receive(1000);
    EXPECT_EQ(leave.value_or(""), "d1");
    pass(seconds(60));
    EXPECT_EQ(visit.screens().place(), Place::start);
}

TEST_F(VisitedRoom, IsNotJoinedOnceTheWishWasTakenBack) {
    visit.join(address, "Ann", now);
    visit.leave(now);
    for (int i = 0; i < 10; ++i) {
        pass(milliseconds(100));
        std::this_thread::sleep_for(milliseconds(5));
    }
    EXPECT_TRUE(room.received().empty());
    EXPECT_EQ(visit.screens().place(), Place::start);
}

TEST_F(VisitedRoom, AnAddressThatIsNoneIsToldWithItsReason) {
    visit.join("127.0.0.1:70000", "Ann", now);
    for (int i = 0; i < 500 && visit.screens().place() == Place::joining; ++i) {
        service();
        std::this_thread::sleep_for(milliseconds(5));
    }
    EXPECT_EQ(visit.screens().place(), Place::trouble);
    EXPECT_EQ(visit.screens().trouble().what, "127.0.0.1:70000 cannot be joined.");
    EXPECT_NE(visit.screens().trouble().advice.find("no port"), std::string::npos);
}

TEST_F(VisitedRoom, OfOnesOwnThatCannotStartIsToldAndTriedAnew) {
    const TemporaryFolder empty;
    visit.host(empty.path, 3, "Ann", now);
    service();
    EXPECT_TRUE(visit.isHosting());
    EXPECT_EQ(visit.screens().place(), Place::trouble);
    EXPECT_NE(visit.screens().trouble().advice.find("drench-server"), std::string::npos);
    visit.joinAgain(now);
    EXPECT_EQ(visit.screens().place(), Place::joining) << "another one is started";
    service();
    EXPECT_EQ(visit.screens().place(), Place::trouble);
    visit.leave(now);
    EXPECT_FALSE(visit.isHosting());
}

TEST_F(VisitedRoom, WakesWithItsSessionAndOtherwiseForWhatIsLookedUp) {
    EXPECT_EQ(visit.wakeAt(now), client::Time::max());
    visit.join(address, "Ann", now);
    EXPECT_LE(visit.wakeAt(now), now + milliseconds(50));
    std::vector<int> descriptors;
    visit.addDescriptors(descriptors);
    EXPECT_TRUE(descriptors.empty());
    ASSERT_TRUE(joins());
    visit.addDescriptors(descriptors);
    EXPECT_EQ(descriptors, std::vector<int>{visit.session()->descriptor()});
}
