#include "keeper/Probe.h"

#include "src/Messages.h"
#include "tests/support/Datagrams.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>
#include <vector>

using namespace drench::keeper;

namespace {

/// A socket where a room would be, which answers when the test says so. The probe's clock is the
/// test's.
class ProbedRoom {
  public:
    ProbedRoom() : socket_(socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        EXPECT_EQ(bind(socket_, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    }
    ~ProbedRoom() { close(); }
    ProbedRoom(const ProbedRoom&) = delete;
    ProbedRoom& operator=(const ProbedRoom&) = delete;

    void close() {
        if (socket_ >= 0)
            ::close(std::exchange(socket_, -1));
    }

    std::uint16_t port() const {
        sockaddr_in address = {};
        socklen_t length = sizeof address;
        getsockname(socket_, reinterpret_cast<sockaddr*>(&address), &length);
        return ntohs(address.sin_port);
    }

    /// The next datagram, or an empty text if there is none. Its sender is answered by answer().
    std::string heard() {
        char datagram[600];
        socklen_t length = sizeof sender_;
        const ssize_t size = recvfrom(socket_, datagram, sizeof datagram, MSG_DONTWAIT,
                                      reinterpret_cast<sockaddr*>(&sender_), &length);
        return size < 0 ? "" : std::string(datagram, static_cast<std::size_t>(size));
    }

    void answer(const std::string& datagram) const {
        sendto(socket_, datagram.data(), datagram.size(), 0,
               reinterpret_cast<const sockaddr*>(&sender_), sizeof sender_);
    }

  private:
    int socket_;
    sockaddr_in sender_ = {};
};

std::string receipt() {
    GenericMessage record;
    record.data[0] = messageCode::join;
    return bytesOf(record);
}

void awaitDatagram(const Probe& probe) {
    pollfd polled = {probe.descriptor(), POLLIN, 0};
    ASSERT_EQ(poll(&polled, 1, 20'000), 1);
}

} // namespace

TEST(Probe, IsARecordOfNobodyWhoseReceiptIsTimed) {
    ProbedRoom room;
    Probe probe(room.port());
    Time now = Time() + std::chrono::hours(1);
    probe.reset(now);
    EXPECT_FALSE(probe.answers(now));
    EXPECT_FALSE(probe.answersUntil());
    EXPECT_FALSE(probe.service(now));
    EXPECT_EQ(room.heard(), bytesOf(KeepAliveMessage()));
    EXPECT_EQ(probe.wakeAt(), now + Probe::patience);
    room.answer(receipt());
    awaitDatagram(probe);
    now += milliseconds(3);
    EXPECT_EQ(probe.service(now), std::chrono::duration<double>(0.003));
    EXPECT_TRUE(probe.answers(now));
    EXPECT_TRUE(probe.answers(now + Probe::trust - milliseconds(1)));
    EXPECT_FALSE(probe.answers(now + Probe::trust));
    EXPECT_EQ(probe.answersUntil(), now + Probe::trust);
}

TEST(Probe, GoesOutEveryTwoSecondsOnceTheRoomAnswers) {
    ProbedRoom room;
    Probe probe(room.port());
    Time now = Time() + std::chrono::hours(1);
    probe.reset(now);
    int sent = 0;
    for (int step = 0; step < 1100; ++step, now += milliseconds(10)) {
        probe.service(now);
        if (!room.heard().empty()) {
            ++sent;
            room.answer(receipt());
            awaitDatagram(probe);
        }
    }
    EXPECT_EQ(sent, 7) << "one at the start, one 50 ms later, five in ten seconds";
    EXPECT_EQ(probe.unanswered(), 0u);
}

TEST(Probe, RoomThatFallsSilentAnswersNoMore) {
    ProbedRoom room;
    Probe probe(room.port());
    Time now = Time() + std::chrono::hours(1);
    probe.reset(now);
    probe.service(now);
    room.heard();
    room.answer(receipt());
    awaitDatagram(probe);
    probe.service(now);
    const Time answered = now;
    while (now < answered + Probe::trust) {
        EXPECT_TRUE(probe.answers(now));
        now += milliseconds(100);
        probe.service(now);
    }
    EXPECT_FALSE(probe.answers(now));
    EXPECT_GE(probe.unanswered(), 2u);
}

TEST(Probe, LateReceiptDoesNotAnswerTheNextProbe) {
    ProbedRoom room;
    Probe probe(room.port());
    Time now = Time() + std::chrono::hours(1);
    probe.reset(now);
    probe.service(now);
    EXPECT_FALSE(room.heard().empty());
    now += Probe::patience;
    EXPECT_FALSE(probe.service(now));
    room.answer(receipt());
    EXPECT_FALSE(room.heard().empty()) << "the next probe";
    now += milliseconds(1);
    EXPECT_FALSE(probe.service(now));
    EXPECT_FALSE(probe.answers(now));
}

TEST(Probe, OtherRecordsAreNoReceipts) {
    ProbedRoom room;
    Probe probe(room.port());
    Time now = Time() + std::chrono::hours(1);
    probe.reset(now);
    probe.service(now);
    room.heard();
    std::string state = receipt();
    state[0] = messageCode::worldState;
    for (const std::string& odd : {std::string("j"), std::string(), state}) {
        room.answer(odd);
        awaitDatagram(probe);
        EXPECT_FALSE(probe.service(now));
    }
    EXPECT_FALSE(probe.answers(now));
    room.answer(receipt());
    awaitDatagram(probe);
    EXPECT_TRUE(probe.service(now));
}

TEST(Probe, ClosedPortIsNoAnswerAndStartingServersAreNotCounted) {
    ProbedRoom room;
    Probe probe(room.port());
    Time now = Time() + std::chrono::hours(1);
    probe.reset(now);
    room.close();
    for (int step = 0; step < 100; ++step, now += milliseconds(10))
        EXPECT_FALSE(probe.service(now));
    EXPECT_FALSE(probe.answers(now));
    EXPECT_EQ(probe.unanswered(), 0u);
    EXPECT_LE(probe.wakeAt(), now + Probe::startingPeriod) << "it is asked again soon";
}

TEST(Probe, NewServerHasToAnswerAnew) {
    ProbedRoom room;
    Probe probe(room.port());
    const Time now = Time() + std::chrono::hours(1);
    probe.reset(now);
    probe.service(now);
    room.heard();
    room.answer(receipt());
    awaitDatagram(probe);
    probe.service(now);
    EXPECT_TRUE(probe.answers(now));
    probe.reset(now);
    EXPECT_FALSE(probe.answers(now));
    EXPECT_EQ(probe.descriptor(), -1);
}
