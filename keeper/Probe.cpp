#include "keeper/Probe.h"

#include "src/Messages.h"

#include <netinet/in.h>
#include <string>
#include <sys/socket.h>

namespace drench::keeper {

Probe::Probe(std::uint16_t port) : roomPort_(port) {}

void Probe::reset(Time now) {
    socket_.close();
    sentAt_.reset();
    answeredAt_.reset();
    sendAt_ = now;
}

bool Probe::open() {
    if (socket_.isOpen()) {
        // Nothing is awaited: whatever is there must not pass for the next receipt.
        char ignored;
        std::size_t length;
        while (socket_.receive(&ignored, sizeof ignored, length) == client::Socket::Result::done) {
        }
        return true;
    }
    sockaddr_in room = {};
    room.sin_family = AF_INET;
    room.sin_port = htons(roomPort_);
    room.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    std::string ignored;
    return socket_.open(room, ignored);
}

void Probe::send(Time now) {
    constexpr KeepAliveMessage question;
    sendAt_ = now + (answeredAt_ ? period : startingPeriod);
    if (open() && socket_.send(&question, sizeof question) == client::Socket::Result::done)
        sentAt_ = now;
    else
        giveUp();
}

void Probe::giveUp() {
    // A receipt does not say what it answers: a late one must not reach the next probe.
    socket_.close();
    sentAt_.reset();
    if (answeredAt_)
        ++unanswered_;
}

std::optional<std::chrono::duration<double>> Probe::service(Time now) {
    using Result = client::Socket::Result;
    std::optional<std::chrono::duration<double>> roundTrip;
    if (sentAt_) {
        char receipt[sizeof(GenericMessage)];
        std::size_t length = 0;
        const Result result = socket_.receive(receipt, sizeof receipt, length);
        if (result == Result::done && length == sizeof receipt && receipt[0] == messageCode::join) {
            roundTrip = now - *sentAt_;
            answeredAt_ = now;
            sentAt_.reset();
        } else if ((result != Result::done && result != Result::nothing) ||
                   now - *sentAt_ >= patience) {
            giveUp();
        }
    }
    if (!sentAt_ && now >= sendAt_)
        send(now);
    return roundTrip;
}

std::uint16_t Probe::port() const {
    sockaddr_in address = {};
    socklen_t length = sizeof address;
    if (!socket_.isOpen() ||
        getsockname(socket_.descriptor(), reinterpret_cast<sockaddr*>(&address), &length) != 0)
        return 0;
    return ntohs(address.sin_port);
}

} // namespace drench::keeper
