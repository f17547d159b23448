#pragma once

#include <cstddef>
#include <netinet/in.h>
#include <sys/socket.h>

/// The IPv4 address of one peer, 20 bytes.
struct Client {
    sockaddr_in addr = {};
    socklen_t addrLen = sizeof(sockaddr_in);
};

static_assert(sizeof(Client) == 20 && offsetof(Client, addr) == 0 &&
              offsetof(Client, addrLen) == 16);

/// One bound UDP socket, 24 bytes; means something only after init(). Every failing system call
/// writes one line to standard output and ends the process with status 0.
struct SocketInfo {
    int sockfd;
    int addrLen;
    sockaddr_in serverAddr;

    /// Opens a socket and binds it on all IPv4 interfaces at the low 16 bits of `port`; 0 lets the
    /// system choose. Prints the port in network byte order, read as a number.
    void init(int port);

    /// Sends one datagram of `length` bytes.
    void sendBytesTo(const Client* client, const void* data, int length) const;

    /// Waits for one datagram, cut to `length` bytes, and stores its sender.
    void receiveBytesFrom(Client* client, char* buffer, int length) const;
};

static_assert(sizeof(SocketInfo) == 24 && offsetof(SocketInfo, sockfd) == 0 &&
              offsetof(SocketInfo, addrLen) == 4 && offsetof(SocketInfo, serverAddr) == 8);

/// Host to network byte order on a little-endian host.
constexpr unsigned short _OSSwapInt16(unsigned short v) {
    return static_cast<unsigned short>((v << 8) | (v >> 8));
}
