#include "keeper/AgonesCalls.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

using namespace drench::keeper;
using nlohmann::json;
using Kind = AgonesCall::Kind;

namespace {

constexpr char allocated[] = R"({"status": {"state": "Allocated"}})";

/// An SDK server on a clock that only the test moves.
struct Line {
    AgonesCalls calls;
    Time now = Time() + std::chrono::hours(1);
    int status = 200;
    std::string body = R"({"status": {"state": "Ready"}})";
    std::vector<AgonesCall> made;

    /// Answers everything that becomes due in this time; the kinds in order.
    std::vector<std::string> pass(milliseconds time) {
        std::vector<std::string> kinds;
        const Time end = now + time;
        while (true) {
            while (const auto call = calls.due(now)) {
                made.push_back(*call);
                kinds.push_back(nameOf(call->kind));
                calls.answered(*call, status, body, now);
            }
            if (calls.nextAt(now) > end)
                break;
            now = calls.nextAt(now);
        }
        now = end;
        return kinds;
    }
};

using Kinds = std::vector<std::string>;

} // namespace

TEST(AgonesCalls, SilentRoomIsNeitherReadyNorHealthy) {
    Line line;
    EXPECT_EQ(line.pass(milliseconds(5000)), Kinds({"state", "state", "state"}));
}

TEST(AgonesCalls, AnsweringRoomIsReadyOnceAndHealthyEveryTwoSeconds) {
    Line line;
    line.calls.setAnswering(Time::max());
    EXPECT_EQ(line.pass(milliseconds(0)), Kinds({"health", "ready", "players", "state"}));
    EXPECT_EQ(line.pass(milliseconds(4000)), Kinds({"health", "state", "health", "state"}));
    line.calls.setAnswering(std::nullopt);
    EXPECT_EQ(line.pass(milliseconds(2000)), Kinds({"state"}));
    line.calls.setAnswering(Time::max());
    EXPECT_EQ(line.pass(milliseconds(0)), Kinds({"health"}));
}

TEST(AgonesCalls, RoomWhoseKeeperTellsNothingMoreIsHealthyNoLongerThanItsReceiptIsTrusted) {
    Line line;
    line.calls.setAnswering(line.now + milliseconds(5000));
    line.pass(milliseconds(0));
    EXPECT_EQ(line.pass(milliseconds(4900)), Kinds({"health", "state", "health", "state"}));
    EXPECT_EQ(line.pass(milliseconds(4000)), Kinds({"state", "state"}));
    EXPECT_GT(line.calls.nextAt(line.now), line.now) << "its caller waits";
    line.calls.setAnswering(line.now + milliseconds(1));
    EXPECT_EQ(line.pass(milliseconds(0)), Kinds({"health"}));
    line.calls.setAnswering(line.now);
    EXPECT_EQ(line.pass(milliseconds(2000)), Kinds({"state"}));
}

TEST(AgonesCalls, FirstJoinAllocatesTheRoomAfterItIsReady) {
    Line line;
    line.calls.setPlayers({1, 4});
    EXPECT_EQ(line.pass(milliseconds(0)), Kinds({"state"}));
    line.calls.setAnswering(Time::max());
    EXPECT_EQ(line.pass(milliseconds(0)),
              Kinds({"health", "ready", "allocate", "players", "state"}));
    line.body = allocated;
    EXPECT_EQ(line.pass(milliseconds(2000)), Kinds({"health", "state"}));
    EXPECT_EQ(line.calls.state(), "Allocated");
    line.calls.setPlayers({2, 4});
    EXPECT_EQ(line.pass(milliseconds(0)), Kinds({"players"}));
}

TEST(AgonesCalls, AllocationFromOutsideNeedsNoOther) {
    Line line;
    line.body = allocated;
    line.calls.setAnswering(Time::max());
    line.pass(milliseconds(0));
    line.calls.setPlayers({1, 4});
    EXPECT_EQ(line.pass(milliseconds(0)), Kinds({"players"}));
}

TEST(AgonesCalls, EndsThatOthersHaveAskedForAreNotTakenBack) {
    for (const std::string state : {"Shutdown", "Unhealthy"}) {
        Line line;
        line.calls.setAnswering(Time::max());
        line.body = allocated;
        line.calls.setPlayers({1, 4});
        line.pass(milliseconds(20'000));
        line.body = R"({"status": {"state": ")" + state + R"("}})";
        line.pass(milliseconds(2000));
        EXPECT_EQ(line.calls.state(), state);
        for (const std::string& kind : line.pass(milliseconds(30'000)))
            EXPECT_NE(kind, "allocate") << state;
    }
}

TEST(AgonesCalls, AllocationThatDoesNotShowIsRepeated) {
    Line line;
    line.calls.setAnswering(Time::max());
    line.calls.setPlayers({1, 4});
    line.pass(milliseconds(9000));
    int allocations = 0;
    for (const std::string& kind : line.pass(milliseconds(12'000)))
        allocations += kind == "allocate";
    EXPECT_EQ(allocations, 2);
}

TEST(AgonesCalls, ReadyIsTriedAgainAfterLongerAndLongerPauses) {
    Line line;
    line.status = 0;
    line.calls.setAnswering(Time::max());
    std::vector<milliseconds> moments;
    const Time start = line.now;
    for (int step = 0; step < 3000; ++step) {
        for (const std::string& kind : line.pass(milliseconds(10))) {
            if (kind == "ready")
                moments.push_back(std::chrono::duration_cast<milliseconds>(line.now - start));
        }
    }
    ASSERT_EQ(moments.size(), 7u);
    const std::vector<int> expected = {0, 500, 1500, 3500, 7500, 15'500, 23'500};
    for (std::size_t i = 0; i < expected.size(); ++i)
        EXPECT_NEAR(static_cast<double>(moments[i].count()), expected[i], 20.0);
    line.status = 200;
    EXPECT_EQ(line.pass(milliseconds(8000)).size(), 4u + 4u + 2u)
        << "health, state, ready, players";
}

TEST(AgonesCalls, PlayersAreACounterWhereThereIsOne) {
    Line line;
    line.calls.setAnswering(Time::max());
    line.calls.setPlayers({3, 4});
    line.pass(milliseconds(0));
    const AgonesCall& call = line.made.at(3);
    EXPECT_EQ(call.method, "PATCH");
    EXPECT_EQ(call.path, "/v1beta1/counters/players");
    EXPECT_EQ(json::parse(call.body), json::parse(R"({"count": "3", "capacity": "4"})"));
}

TEST(AgonesCalls, RoomThatIsToEndHasNoFreePlaces) {
    Line line;
    line.calls.setAnswering(Time::max());
    line.calls.setPlayers({3, 4});
    line.pass(milliseconds(0));
    line.calls.setPlayers({3, 3});
    EXPECT_EQ(line.pass(milliseconds(0)), Kinds({"players"}));
    EXPECT_EQ(json::parse(line.made.back().body),
              json::parse(R"({"count": "3", "capacity": "3"})"));
}

TEST(AgonesCalls, PlayersAreAListOrALabelWhereThereIsNoCounter) {
    AgonesCalls calls;
    const Time now = Time() + std::chrono::hours(1);
    calls.setAnswering(Time::max());
    calls.setPlayers({2, 4});
    calls.answered({Kind::ready, "", "", ""}, 200, "", now);
    calls.answered({Kind::health, "", "", ""}, 200, "", now);
    calls.answered({Kind::state, "", "", ""}, 200, allocated, now);

    const AgonesCall counter = calls.due(now).value();
    calls.answered(counter, 404, "", now);
    const AgonesCall list = calls.due(now).value();
    EXPECT_EQ(list.method + list.path, "PATCH/v1beta1/lists/players");
    EXPECT_EQ(json::parse(list.body), json::parse(R"({"values": ["1", "2"], "capacity": "4"})"));
    calls.answered(list, 500, "CountsAndLists not enabled", now);
    const AgonesCall label = calls.due(now).value();
    EXPECT_EQ(label.method + label.path, "PUT/metadata/label");
    EXPECT_EQ(json::parse(label.body), json::parse(R"({"key": "players", "value": "2"})"));
    calls.answered(label, 404, "", now);
    EXPECT_FALSE(calls.due(now)) << "there is no other way: it waits";
    calls.answered(calls.due(now + milliseconds(500)).value(), 200, "", now);
    EXPECT_FALSE(calls.due(now));
}

TEST(AgonesCalls, PlayersWhoComeWhileTheNumberIsToldAreToldNext) {
    AgonesCalls calls;
    const Time now = Time() + std::chrono::hours(1);
    calls.answered({Kind::ready, "", "", ""}, 200, "", now);
    calls.answered({Kind::state, "", "", ""}, 200, allocated, now);
    calls.setPlayers({1, 4});
    const AgonesCall call = calls.due(now).value();
    calls.setPlayers({2, 4});
    calls.answered(call, 200, "", now);
    const AgonesCall next = calls.due(now).value();
    EXPECT_EQ(next.places.players, 2);
}

TEST(AgonesCalls, OverloadedServerIsAskedTheSameAgain) {
    AgonesCalls calls;
    const Time now = Time() + std::chrono::hours(1);
    calls.answered({Kind::ready, "", "", ""}, 200, "", now);
    calls.answered({Kind::state, "", "", ""}, 200, allocated, now);
    calls.setPlayers({1, 4});
    for (const int status : {0, 500, 503, 400}) {
        const Time later = calls.nextAt(now) > now ? now + std::chrono::minutes(1) : now;
        while (calls.due(later).value().kind != Kind::players)
            calls.answered(calls.due(later).value(), 200, allocated, later);
        const AgonesCall call = calls.due(later).value();
        EXPECT_EQ(call.path, "/v1beta1/counters/players") << status;
        calls.answered(call, status, "", now);
    }
}

TEST(AgonesCalls, AfterTheEndNothingElseIsSaid) {
    Line line;
    line.calls.setAnswering(Time::max());
    line.pass(milliseconds(0));
    line.calls.shutDown();
    line.status = 503;
    EXPECT_EQ(line.pass(milliseconds(600)), Kinds({"shutdown", "shutdown"}));
    EXPECT_FALSE(line.calls.isShutDown());
    line.status = 200;
    EXPECT_EQ(line.pass(milliseconds(60'000)), Kinds({"shutdown"}));
    EXPECT_TRUE(line.calls.isShutDown());
}

TEST(AgonesCalls, OddAnswersLeaveTheStateAsItWas) {
    Line line;
    line.body = allocated;
    line.pass(milliseconds(0));
    for (const char* odd : {"", "{", "[]", "{}", "1", R"({"status": 1})", R"({"status": {}})",
                            R"({"status": {"state": 7}})"}) {
        line.body = odd;
        line.pass(milliseconds(2000));
        EXPECT_EQ(line.calls.state(), "Allocated") << odd;
    }
    line.body = R"({"status": {"state": "Shutdown"}})";
    line.status = 500;
    line.pass(milliseconds(2000));
    EXPECT_EQ(line.calls.state(), "Allocated");
    line.status = 200;
    line.pass(milliseconds(2000));
    EXPECT_EQ(line.calls.state(), "Shutdown");
}
