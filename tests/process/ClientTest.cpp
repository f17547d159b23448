#include "client/RoomAddress.h"
#include "client/Session.h"
#include "tests/process/ServerProcess.h"
#include "tests/support/Arenas.h"
#include "tests/support/Datagrams.h"
#include "tests/support/UdpPeer.h"

#include <cmath>
#include <functional>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <vector>

using namespace drench;

namespace {

using client::Clock;
using client::Event;
using client::Session;
using std::chrono::milliseconds;

sockaddr_in roomAt(int port) {
    std::string problem;
    return client::resolve("localhost:" + std::to_string(port), problem).value().address;
}

/// A session, and all that it was told.
struct Player {
    Session session;
    std::vector<Event> events;
    UpdateMessage state;

    Player(int port, const std::string& name) : session(joining(port, name)) {}

    static Session joining(int port, const std::string& name) {
        std::string problem;
        return Session::join(roomAt(port), name, Clock::now(), problem).value();
    }

    /// Plays until the condition holds; false if it does not in time.
    bool playUntil(const std::function<bool()>& condition, int timeLimit = patience) {
        const client::Time end = Clock::now() + milliseconds(timeLimit);
        while (!condition()) {
            if (Clock::now() > end)
                return false;
            if (session.isOpen())
                client::wait(session, Clock::now());
            session.service(Clock::now());
            while (std::optional<Event> event = session.nextEvent()) {
                if (const auto* snapshot = std::get_if<client::Snapshot>(&*event))
                    state = snapshot->state;
                events.push_back(std::move(*event));
            }
        }
        return true;
    }

    void play(int time) {
        const client::Time end = Clock::now() + milliseconds(time);
        playUntil([&] { return Clock::now() >= end; }, time + patience);
    }

    bool plays() {
        return playUntil([&] { return session.self(state) != nullptr; });
    }

    template<class Kind>
    const Kind* heard() const {
        for (const Event& event : events) {
            if (const auto* kind = std::get_if<Kind>(&event))
                return kind;
        }
        return nullptr;
    }

    vec3 position() const { return session.self(state)->position; }
    vec3 direction() const { return session.self(state)->direction; }
};

} // namespace

TEST(Client, WalksTurnsAndSeesItself) {
    const ServerProcess server = ServerProcess::listening(emptyCourt());
    Player ann(server.port(), "Ann");
    ASSERT_TRUE(ann.plays());
    EXPECT_EQ(ann.session.id(), '1');
    ASSERT_TRUE(ann.playUntil([&] { return ann.position().y < 140.0f; })) << "landed";

    const vec3 start = ann.position();
    const vec3 direction = ann.direction();
    ann.session.setKey(keyIndex::forward, true);
    ASSERT_TRUE(ann.playUntil([&] {
        const vec3 walked = ann.position() - start;
        return walked.dot(direction) > 200.0f;
    }));
    ann.session.setKey(keyIndex::forward, false);
    ann.session.setKey(keyIndex::jump, true);
    EXPECT_TRUE(ann.playUntil([&] { return ann.position().y > 200.0f; }));
    ann.session.turn(360, 0);
    EXPECT_TRUE(ann.playUntil(
        [&] { return std::abs(ann.direction().dot(direction) - std::cos(1.0f)) < 0.05f; }));
    ann.session.setKey(keyIndex::shoot, true);
    EXPECT_TRUE(ann.playUntil([&] { return ann.session.self(ann.state)->shooting; }));
    ann.session.setKey(keyIndex::shoot, false);
    EXPECT_TRUE(ann.playUntil([&] { return !ann.session.self(ann.state)->shooting; }));
}

TEST(Client, StaysWhileItIsServedAndMeasuresTheLineAndTheTicks) {
    const ServerProcess server = ServerProcess::listening(emptyCourt());
    Player ann(server.port(), "Ann");
    ASSERT_TRUE(ann.plays());
    ann.play(6000);
    ASSERT_TRUE(ann.session.isPlaying());
    ASSERT_TRUE(ann.session.roundTrip().smoothed());
    EXPECT_LT(*ann.session.roundTrip().smoothed(), 100.0);
    EXPECT_EQ(ann.session.roundTrip().datagrams(), ann.session.statistics().sent);
    EXPECT_GT(ann.session.statistics().snapshots, 120u);
    EXPECT_GT(ann.session.tickClock().period(), 15.0);
    EXPECT_LT(ann.session.tickClock().period(), 40.0);
    EXPECT_EQ(ann.session.statistics().unknown, 0u);
    EXPECT_EQ(ann.session.statistics().unsent, 0u);
}

TEST(Client, HearsWhoComesSpeaksAndGoes) {
    const ServerProcess server = ServerProcess::listening(emptyCourt());
    Player ann(server.port(), "Ann");
    ASSERT_TRUE(ann.plays());
    {
        Player bo(server.port(), "Bo");
        ASSERT_TRUE(bo.plays());
        EXPECT_EQ(bo.session.id(), '2');
        bo.session.say("Watch out!");
        bo.session.service(Clock::now());
        ASSERT_TRUE(ann.playUntil([&] { return ann.heard<client::Chat>() != nullptr; }));
    }
    EXPECT_EQ(ann.heard<client::Chat>()->text, "Watch out!");
    EXPECT_EQ(ann.heard<client::Chat>()->speaker, '2');
    EXPECT_TRUE(ann.playUntil([&] { return ann.heard<client::PlayerLeft>() != nullptr; }))
        << "a session that ends leaves";
    EXPECT_EQ(ann.heard<client::PlayerJoined>()->name, "Ann");
}

TEST(Client, IsRefusedByAFullRoom) {
    const ServerProcess server = ServerProcess::listening(emptyCourt());
    std::vector<Player> players;
    for (const char* name : {"Ann", "Bo", "Cy", "Di"}) {
        players.emplace_back(server.port(), name);
        ASSERT_TRUE(players.back().plays());
    }
    Player late(server.port(), "Eve");
    EXPECT_TRUE(late.playUntil([&] { return late.heard<client::Refused>() != nullptr; }));
    EXPECT_FALSE(late.session.isOpen());

    players.pop_back();
    Player next(server.port(), "Eve");
    EXPECT_TRUE(next.plays());
    EXPECT_EQ(next.session.id(), '4');
}

TEST(Client, SendsItsSecondCopyAway) {
    ServerProcess server = ServerProcess::listening(emptyCourt());
    Player ann(server.port(), "Ann");
    ASSERT_TRUE(ann.plays());
    EXPECT_EQ(server.line(), "Ann joined");
    const std::string copy = joinDatagram("Ann");
    ASSERT_EQ(send(ann.session.descriptor(), copy.data(), copy.size(), 0), 5);
    EXPECT_TRUE(ann.playUntil([&] { return ann.heard<client::PlayerLeft>() != nullptr; }));
    EXPECT_EQ(server.line(), "Ann joined");
    EXPECT_EQ(server.line(), "Ann disconnected");
    ann.play(200);
    EXPECT_TRUE(ann.session.isPlaying());
    EXPECT_EQ(ann.state.updates[1].id, '\0');
}

TEST(Client, NoticesThatSomebodySentItAway) {
    const ServerProcess server = ServerProcess::listening(emptyCourt());
    Player ann(server.port(), "Ann");
    ASSERT_TRUE(ann.plays());
    UdpPeer stranger;
    stranger.send(leaveDatagram('1'), server.port());
    ASSERT_TRUE(ann.playUntil([&] { return !ann.session.isOpen(); }));
    ASSERT_TRUE(ann.heard<client::Dropped>());
    EXPECT_EQ(ann.heard<client::Dropped>()->reason, client::Dropped::Reason::silence);
}

TEST(Client, NoticesThatTheServerHasEnded) {
    std::optional<ServerProcess> server(ServerProcess::listening(emptyCourt()));
    const int port = server->port();
    Player ann(port, "Ann");
    ASSERT_TRUE(ann.plays());
    server.reset();
    ASSERT_TRUE(ann.playUntil([&] { return !ann.session.isOpen(); }));
    EXPECT_TRUE(ann.heard<client::Dropped>());

    Player bo(port, "Bo");
    ASSERT_TRUE(bo.playUntil([&] { return !bo.session.isOpen(); }));
    ASSERT_TRUE(bo.heard<client::Unanswered>());
    EXPECT_TRUE(bo.heard<client::Unanswered>()->nobodyListens);
}
