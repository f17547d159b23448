#include "tests/client/SessionLine.h"

#include <gtest/gtest.h>

namespace {

struct Tapped {
    client::Way way;
    std::string datagram;
    Time now;
};

} // namespace

TEST(SessionTap, SeesAllThatIsSentAndReceivedWithItsMoment) {
    UdpPeer room;
    std::vector<Tapped> seen;
    const Time start{};
    std::string problem;
    {
        std::optional<Session> session =
            Session::join(loopback(portOf(room)), "Ann", start, problem,
                          [&seen](client::Way way, std::string_view datagram, Time now) {
                              seen.push_back({way, std::string(datagram), now});
                          });
        ASSERT_TRUE(session) << problem;
        const int port = portOf(*session);
        room.send(acceptanceDatagram('1'), port);
        room.send(annAlone(), port);
        room.send("noise", port);
        Session moved = std::move(*session);
        moved.service(start + milliseconds(10));
        moved.setKey(keyIndex::forward, true);
        moved.service(start + milliseconds(20));
        moved.leave(start + milliseconds(30));
    }
    const Tapped expected[] = {
        {client::Way::toRoom, joinDatagram("Ann"), start},
        {client::Way::fromRoom, acceptanceDatagram('1'), start + milliseconds(10)},
        {client::Way::fromRoom, annAlone(), start + milliseconds(10)},
        {client::Way::fromRoom, "noise", start + milliseconds(10)},
        {client::Way::toRoom, keyDatagram('1', keyIndex::forward, true), start + milliseconds(20)},
        {client::Way::toRoom, leaveDatagram('1'), start + milliseconds(30)}};
    ASSERT_EQ(seen.size(), std::size(expected));
    for (std::size_t i = 0; i < seen.size(); ++i) {
        EXPECT_EQ(seen[i].way, expected[i].way) << i;
        EXPECT_EQ(seen[i].datagram, expected[i].datagram) << i;
        EXPECT_EQ(seen[i].now, expected[i].now) << i;
    }
}
