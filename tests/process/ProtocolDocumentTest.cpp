#include "tests/process/ProtocolDocument.h"

#include "tests/process/ServerProcess.h"
#include "tests/support/Arenas.h"
#include "tests/support/UdpPeer.h"

#include <chrono>
#include <cmath>
#include <functional>
#include <gtest/gtest.h>
#include <set>

// Nothing here knows a layout: what goes out and comes in is built and read by the page's tables.

namespace {

const std::string fromClient = "client to server";
const std::string fromServer = "server to client";

/// A room, and a peer that speaks to it as the page says.
struct Conversation {
    ProtocolDocument document{DRENCH_PROTOCOL_DOCUMENT};
    ServerProcess server = ServerProcess::listening(emptyCourt());
    UdpPeer peer;

    void send(const std::string& name, const ProtocolDocument::Values& values) {
        peer.send(document.encode(document.record(fromClient, name), values), server.port());
    }

    /// The values of the next record of this name, skipping others, once `wanted` holds.
    ProtocolDocument::Values
    expect(const std::string& name,
           const std::function<bool(const ProtocolDocument::Values&)>& wanted = {}) {
        const auto deadline =
            std::chrono::steady_clock::now() + std::chrono::milliseconds(patience);
        while (std::chrono::steady_clock::now() < deadline) {
            const auto datagram = peer.receive(patience);
            if (!datagram)
                break;
            const Record& record = document.recordOf(*datagram);
            const ProtocolDocument::Values values = document.decode(record, *datagram);
            if (record.name == name && (!wanted || wanted(values)))
                return values;
        }
        throw std::runtime_error("no " + name + " in time");
    }
};

double length(const ProtocolDocument::Values& values, const std::string& vector,
              const std::string& components) {
    double squares = 0.0;
    for (const char component : components)
        squares += std::pow(values.numbers.at(vector + " " + component), 2);
    return std::sqrt(squares);
}

/// A state's values that do not depend on where the player happened to spawn.
ProtocolDocument::Values withoutPose(ProtocolDocument::Values values) {
    std::erase_if(values.numbers, [](const auto& entry) {
        return entry.first.starts_with("player 1") &&
               (entry.first.find("rotation") != std::string::npos ||
                entry.first.find("position") != std::string::npos ||
                entry.first.find("direction") != std::string::npos);
    });
    return values;
}

} // namespace

TEST(ProtocolDocument, TablesCoverEveryByteOfEveryRecordOnce) {
    const ProtocolDocument document(DRENCH_PROTOCOL_DOCUMENT);
    EXPECT_EQ(document.records.size(), 12u);
    for (const Record& record : document.records) {
        size_t end = 0;
        for (const Field& field : record.fields) {
            EXPECT_EQ(field.offset, end) << record.name << " " << field.name;
            end = field.size ? field.offset + field.size : record.bytes;
        }
        EXPECT_EQ(end, record.bytes) << record.name;
    }
}

TEST(ProtocolDocument, ExplainsEveryDatagramThatTheServerSends) {
    Conversation talk;
    talk.send("join", {{}, {{"name", "Ann"}}});
    EXPECT_EQ(talk.expect("receipt").numbers.at("address length"), 16);
    EXPECT_EQ(talk.expect("accepted").texts.at("id"), "1");
    const auto notice = talk.expect("talk");
    EXPECT_EQ(notice.texts.at("id"), "s");
    EXPECT_EQ(notice.texts.at("text"), "Ann joined");

    const auto state = talk.expect("state");
    EXPECT_EQ(state.texts.at("player 1 id"), "1");
    EXPECT_EQ(state.texts.at("player 1 name"), "Ann");
    EXPECT_EQ(state.numbers.at("player 1 points"), 0);
    EXPECT_EQ(state.numbers.at("player 1 shooting"), 0);
    EXPECT_NEAR(length(state, "player 1 rotation", "xyzw"), 1.0, 1e-3);
    EXPECT_NEAR(length(state, "player 1 direction", "xyz"), 1.0, 1e-3);
    for (const std::string axis : {"x", "y", "z"}) {
        EXPECT_GT(state.numbers.at("player 1 position " + axis), 0.0);
        EXPECT_LT(state.numbers.at("player 1 position " + axis), 2048.0);
    }
    EXPECT_EQ(state.texts.at("player 2 id"), std::string(1, '\0'));
    EXPECT_EQ(state.numbers.at("player 2 rotation w"), 1.0);

    for (int i = 0; i < 4; ++i)
        talk.send("join", {{}, {{"name", "Another"}}});
    talk.expect("refused");
}

TEST(ProtocolDocument, RecordsBuiltFromItsTablesHaveTheirEffect) {
    Conversation talk;
    talk.send("join", {{}, {{"name", "Ann"}}});
    const std::string id = talk.expect("accepted").texts.at("id");

    talk.send("key", {{{"key", 5}, {"down", 1}}, {{"id", id}}});
    talk.expect("state",
                [](const auto& state) { return state.numbers.at("player 1 shooting") == 1; });
    talk.send("key", {{{"key", 5}, {"down", 0}}, {{"id", id}}});
    const auto before = talk.expect(
        "state", [](const auto& state) { return state.numbers.at("player 1 shooting") == 0; });

    const double yaw = std::atan2(before.numbers.at("player 1 direction x"),
                                  before.numbers.at("player 1 direction z"));
    talk.send("view", {{{"dx", 90}, {"dy", 0}}, {{"id", id}}});
    talk.expect("state", [yaw](const auto& state) {
        const double turned = std::atan2(state.numbers.at("player 1 direction x"),
                                         state.numbers.at("player 1 direction z"));
        // Seen from above, with x to the left of z, right is the smaller angle.
        return std::fabs(std::remainder(yaw - turned, 2.0 * std::acos(-1.0)) - 0.25) < 1e-3;
    });

    talk.send("chat", {{}, {{"id", id}, {"text", "hello"}}});
    talk.expect("talk", [&](const auto& talked) {
        return talked.texts.at("id") == id && talked.texts.at("text") == "hello";
    });
    talk.send("keep-alive", {{}, {{"id", id}}});
    talk.send("leave", {{}, {{"id", id}}});
    EXPECT_TRUE(talk.server.waitForLine("Ann disconnected"));
}

TEST(ProtocolDocument, DumpIsWhatTheServerAnswers) {
    Conversation talk;
    ASSERT_GE(talk.document.dump.size(), 9u);
    std::set<std::string> shown;
    for (const DumpedDatagram& dumped : talk.document.dump) {
        if (dumped.sender == "client") {
            talk.peer.send(dumped.bytes, talk.server.port());
            continue;
        }
        const Record& record = talk.document.recordOf(dumped.bytes);
        shown.insert(record.name);
        if (record.name == "state") {
            const auto expected = withoutPose(talk.document.decode(record, dumped.bytes));
            talk.expect("state", [&](const auto& state) {
                const auto actual = withoutPose(state);
                return actual.numbers == expected.numbers && actual.texts == expected.texts;
            });
        } else {
            std::optional<std::string> datagram;
            do {
                datagram = talk.peer.receive(patience);
                ASSERT_TRUE(datagram.has_value()) << "no " << dumped.title;
            } while (*datagram != dumped.bytes);
        }
    }
    EXPECT_EQ(shown, (std::set<std::string>{"receipt", "accepted", "talk", "state"}));
    EXPECT_TRUE(talk.server.waitForLine("Ann disconnected"));
}
