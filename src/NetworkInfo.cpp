#include "NetworkInfo.h"

#include <cstdlib>
#include <iostream>

namespace {

[[noreturn]] void fail(const char* line) {
    std::cout << line;
    exit(0);
}

} // namespace

void SocketInfo::init(int port) {
    sockfd = socket(AF_INET, SOCK_DGRAM, 0);
    if (sockfd < 0)
        fail("Error opening socket\n");

    addrLen = sizeof(sockaddr_in);
    serverAddr = {};
    serverAddr.sin_family = AF_INET;
    serverAddr.sin_addr.s_addr = INADDR_ANY;
    serverAddr.sin_port = _OSSwapInt16(static_cast<unsigned short>(port));
    std::cout << "htons(port) = " << serverAddr.sin_port << std::endl;

    if (bind(sockfd, reinterpret_cast<const sockaddr*>(&serverAddr),
             static_cast<socklen_t>(addrLen)) < 0)
        fail("Error binding socket\n");
}

void SocketInfo::sendBytesTo(const Client* client, const void* data, int length) const {
    if (sendto(sockfd, data, static_cast<size_t>(length), 0,
               reinterpret_cast<const sockaddr*>(&client->addr), client->addrLen) < 0)
        fail("Error sending bytes to client\n");
}

void SocketInfo::receiveBytesFrom(Client* client, char* buffer, int length) const {
    if (recvfrom(sockfd, buffer, static_cast<size_t>(length), 0,
                 reinterpret_cast<sockaddr*>(&client->addr), &client->addrLen) < 0)
        fail("Error receiving bytes from client\n");
}
