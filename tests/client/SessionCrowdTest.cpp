#include "tests/client/SessionLine.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <vector>

TEST(SessionCrowd, OfTwoThousandPlaysInOneProcess) {
    rlimit limit;
    getrlimit(RLIMIT_NOFILE, &limit);
    const rlimit more = {std::min<rlim_t>(std::max<rlim_t>(limit.rlim_cur, 2100), limit.rlim_max),
                         limit.rlim_max};
    setrlimit(RLIMIT_NOFILE, &more);
    const size_t count = std::min<size_t>(2000, more.rlim_cur - 100);
    ASSERT_GE(count, 500u);
    {
        UdpPeer room;
        Time now;
        std::vector<Session> sessions;
        for (size_t i = 0; i < count; ++i) {
            sessions.push_back(joining(room, "Ann", now));
            EXPECT_EQ(room.received().size(), 1u);
            room.send(acceptanceDatagram('1'), portOf(sessions[i]));
        }
        for (int tick = 0; tick < 3; ++tick) {
            now += milliseconds(16);
            for (Session& session : sessions) {
                room.send(annAlone(), portOf(session));
                session.turn(1, tick);
                session.service(now);
                ASSERT_TRUE(session.isPlaying());
                EXPECT_EQ(room.received().size(), tick == 0 ? 0u : 1u);
            }
        }
        for (Session& session : sessions) {
            EXPECT_EQ(described(session), (Strings{"joined 1", "tick 0", "tick 1", "tick 2"}));
            session.leave(now);
            EXPECT_EQ(room.received(), Strings{leaveDatagram('1')});
        }
    }
    setrlimit(RLIMIT_NOFILE, &limit);
}
