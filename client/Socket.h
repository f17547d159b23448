#pragma once

#include <cstddef>
#include <netinet/in.h>
#include <string>

namespace drench::client {

/// A UDP socket towards one room, which never blocks. Closed unless opened.
class Socket {
  public:
    /// The outcome of a call.
    enum class Result {
        done,

        /// Nothing waits to be read.
        nothing,

        /// The host answered an earlier datagram: no socket is bound to the port.
        nobodyListens,

        /// The system reported another error.
        failed
    };

    Socket() = default;
    ~Socket() { close(); }
    Socket(Socket&& other) noexcept;
    Socket& operator=(Socket&& other) noexcept;

    /// Opens the socket; false when the system refuses, with the reason in `problem`. Datagrams
    /// from elsewhere than `room` do not arrive.
    bool open(const sockaddr_in& room, std::string& problem);
    void close();
    bool isOpen() const { return descriptor_ >= 0; }

    /// -1 while closed.
    int descriptor() const { return descriptor_; }

    Result send(const void* datagram, std::size_t length);

    /// Reads one datagram, cut to `size` bytes.
    Result receive(char* buffer, std::size_t size, std::size_t& length);

  private:
    int descriptor_ = -1;
};

} // namespace drench::client
