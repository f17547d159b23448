#include "keeper/RoomProcess.h"

#include <cerrno>
#include <climits>
#include <cstring>
#include <fcntl.h>
#include <stdexcept>
#include <string>
#include <unistd.h>
#include <utility>
#include <vector>

namespace drench::keeper {

namespace {

/// Each write takes a page of the pipe: so many may wait for us before the server waits too.
constexpr int writesThatMayWait = 64;

} // namespace

RoomProcess::ConsolePipe RoomProcess::makePipe() {
    int ends[2];
    // Packets keep the writes of the server apart, whatever ends of lines names put into them.
    if (pipe2(ends, O_CLOEXEC | O_DIRECT) != 0)
        throw std::runtime_error(std::string("no pipe that keeps writes apart: ") +
                                 std::strerror(errno));
    // If the system refuses, the pipe is as small as it was, and serves.
    fcntl(ends[0], F_SETPIPE_SZ, writesThatMayWait * PIPE_BUF);
    return {Descriptor(ends[0]), Descriptor(ends[1])};
}

RoomProcess::RoomProcess(const std::string& executable, std::uint16_t port)
    : pipe_(makePipe()),
      process_({executable, std::to_string(port)}, {.output = pipe_.writing.number}) {
    // The server's end alone is left, so that the console ends with it.
    close(std::exchange(pipe_.writing.number, -1));
    // Our end alone must not block: the server waits where its writes find no place.
    fcntl(console(), F_SETFL, O_NONBLOCK | O_DIRECT);
}

std::optional<std::string> RoomProcess::nextWrite() {
    char buffer[PIPE_BUF];
    const ssize_t length = read(console(), buffer, sizeof buffer);
    if (length > 0)
        return std::string(buffer, static_cast<std::size_t>(length));
    if (length == 0 || (errno != EAGAIN && errno != EINTR))
        ended_ = true;
    return std::nullopt;
}

} // namespace drench::keeper
