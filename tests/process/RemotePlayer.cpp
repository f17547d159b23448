#include "tests/process/RemotePlayer.h"

#include <chrono>

namespace {

using Clock = std::chrono::steady_clock;

} // namespace

bool isReceipt(const std::string& datagram) {
    return datagram.size() == sizeof(GenericMessage) && datagram[0] == messageCode::join;
}

std::optional<std::string>
RemotePlayer::waitFor(const std::function<bool(const std::string&)>& wanted, int milliseconds) {
    const auto deadline = Clock::now() + std::chrono::milliseconds(milliseconds);
    while (Clock::now() < deadline) {
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
        const auto datagram = peer_.receive(static_cast<int>(left) + 1);
        if (!datagram)
            return std::nullopt;
        if (isReceipt(*datagram))
            ++receipts;
        else if (!readState(*datagram, state))
            heard.push_back(*datagram);
        if (wanted(*datagram))
            return datagram;
    }
    return std::nullopt;
}

bool RemotePlayer::waitForDatagram(const std::string& datagram, int milliseconds) {
    return waitFor([&](const std::string& heard_) { return heard_ == datagram; }, milliseconds)
        .has_value();
}

bool RemotePlayer::waitForState(const std::function<bool(const UpdateMessage&)>& wanted,
                                int milliseconds) {
    auto nextSign = Clock::now();
    return waitFor(
               [&](const std::string& datagram) {
                   if (id_ && Clock::now() >= nextSign) {
                       send(keepAliveDatagram(id_));
                       nextSign += std::chrono::seconds(1);
                   }
                   return datagram[0] == messageCode::worldState && wanted(state);
               },
               milliseconds)
        .has_value();
}

char RemotePlayer::join(const std::string& name) {
    send(joinDatagram(name));
    const auto answer = waitFor([](const std::string& datagram) {
        return (datagram.size() == sizeof(AcceptanceMessage) &&
                datagram[0] == messageCode::accepted) ||
               datagram == bytesOf(RefusalMessage());
    });
    id_ = answer && answer->size() == sizeof(AcceptanceMessage) ? (*answer)[1] : '\0';
    return id_;
}

const PlayerUpdate* RemotePlayer::seen(char id) const {
    for (const PlayerUpdate& update : state.updates) {
        if (update.id == id)
            return &update;
    }
    return nullptr;
}
