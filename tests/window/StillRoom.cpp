#include "tests/window/StillRoom.h"

#include "src/Timing.h"
#include "tests/support/Datagrams.h"

#include <chrono>

StillRoom::StillRoom(const UpdateMessage& state)
    : state_(state), thread_([this](const std::stop_token& ends) { run(ends); }) {}

int StillRoom::port() const {
    return ntohs(socket_.address().sin_port);
}

void StillRoom::run(const std::stop_token& ends) {
    while (!ends.stop_requested()) {
        answer();
        if (hasPlayer_)
            socket_.send(bytesOf(state_));
        std::this_thread::sleep_for(std::chrono::duration<float, std::milli>(tickMilliseconds));
    }
}

void StillRoom::answer() {
    while (const std::optional<std::string> datagram = socket_.receive()) {
        GenericMessage receipt;
        receipt.data[0] = messageCode::join;
        socket_.send(bytesOf(receipt));
        if (datagram->starts_with(messageCode::join))
            socket_.send(acceptanceDatagram('1'));
        else
            ++heard_;
        hasPlayer_ = true;
    }
}
