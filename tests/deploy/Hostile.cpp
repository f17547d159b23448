#include <arpa/inet.h>
#include <cerrno>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <iostream>
#include <netinet/in.h>
#include <netinet/ip.h>
#include <netinet/udp.h>
#include <stdexcept>
#include <string>
#include <string_view>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>
#include <vector>

// Sends datagrams that no client would: from any address and port, at any size and rate. Only to
// the addresses that RFC 2544 sets aside for tests of networks, and for a minute at most.

namespace {

constexpr std::uint32_t testNetwork = 198u << 24 | 18u << 16;
constexpr std::uint32_t testNetworkMask = 0xfffe0000;
constexpr double longestFlood = 60.0;

/// Datagrams between two looks at the clock.
constexpr int sendsAtOnce = 32;

constexpr std::string_view usage =
    "usage: hostile TO PORT FROM ADDRESSES SOURCE_PORT CODE BYTES RATE SECONDS\n"
    "Sends RATE datagrams a second to PORT of TO, in turn from ADDRESSES addresses that begin "
    "with\n"
    "FROM. Each has BYTES bytes, all of them CODE. Prints how many.\n";

std::uint32_t addressOf(const char* text) {
    in_addr address;
    if (inet_pton(AF_INET, text, &address) != 1)
        throw std::invalid_argument(std::string(text) + " is no IPv4 address");
    return ntohl(address.s_addr);
}

double numberOf(const char* text, double least, double most) {
    char* end = nullptr;
    const double number = std::strtod(text, &end);
    if (end == text || *end != '\0' || !(number >= least && number <= most))
        throw std::invalid_argument(std::string(text) + " is not between " + std::to_string(least) +
                                    " and " + std::to_string(most));
    return number;
}

struct Flood {
    std::uint32_t to;
    std::uint16_t port;
    std::uint32_t from;
    std::uint32_t addresses;
    std::uint16_t sourcePort;
    char code;
    std::size_t bytes;
    double rate;
    double seconds;
};

Flood floodOf(char** words) {
    Flood flood;
    flood.to = addressOf(words[0]);
    if ((flood.to & testNetworkMask) != testNetwork)
        throw std::invalid_argument(std::string(words[0]) + " is not in 198.18.0.0/15");
    flood.port = static_cast<std::uint16_t>(numberOf(words[1], 1, 65535));
    flood.from = addressOf(words[2]);
    flood.addresses = static_cast<std::uint32_t>(numberOf(words[3], 1, 65536));
    flood.sourcePort = static_cast<std::uint16_t>(numberOf(words[4], 0, 65535));
    if (std::strlen(words[5]) != 1)
        throw std::invalid_argument(std::string(words[5]) + " is not one character");
    flood.code = words[5][0];
    flood.bytes = static_cast<std::size_t>(numberOf(words[6], 0, 1472));
    flood.rate = numberOf(words[7], 1, 1e6);
    flood.seconds = numberOf(words[8], 0, longestFlood);
    return flood;
}

/// One IPv4 packet; the system fills in the checksum of its header.
std::vector<char> packetOf(const Flood& flood) {
    iphdr ip = {};
    ip.version = 4;
    ip.ihl = sizeof ip / 4;
    ip.ttl = 64;
    ip.protocol = IPPROTO_UDP;
    ip.daddr = htonl(flood.to);
    udphdr udp = {};
    udp.source = htons(flood.sourcePort);
    udp.dest = htons(flood.port);
    udp.len = htons(static_cast<std::uint16_t>(sizeof udp + flood.bytes));
    std::vector<char> packet(sizeof ip + sizeof udp + flood.bytes, flood.code);
    std::memcpy(packet.data(), &ip, sizeof ip);
    std::memcpy(packet.data() + sizeof ip, &udp, sizeof udp);
    return packet;
}

/// Returns how many datagrams the system took.
long send(const Flood& flood) {
    const int descriptor = socket(AF_INET, SOCK_RAW | SOCK_CLOEXEC, IPPROTO_RAW);
    if (descriptor < 0)
        throw std::runtime_error(std::string("no raw socket: ") + std::strerror(errno));
    sockaddr_in to = {};
    to.sin_family = AF_INET;
    to.sin_addr.s_addr = htonl(flood.to);

    std::vector<char> packet = packetOf(flood);
    const auto start = std::chrono::steady_clock::now();
    long tried = 0;
    long sent = 0;
    for (;;) {
        const double passed =
            std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        if (passed >= flood.seconds)
            break;
        const long due = static_cast<long>(passed * flood.rate) + 1;
        if (tried >= due) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
            continue;
        }
        for (int i = 0; i < sendsAtOnce && tried < due; ++i, ++tried) {
            const std::uint32_t from =
                htonl(flood.from + static_cast<std::uint32_t>(tried) % flood.addresses);
            std::memcpy(packet.data() + offsetof(iphdr, saddr), &from, sizeof from);
            if (sendto(descriptor, packet.data(), packet.size(), 0,
                       reinterpret_cast<const sockaddr*>(&to), sizeof to) >= 0)
                ++sent;
        }
    }
    close(descriptor);
    return sent;
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 10) {
        std::cerr << usage;
        return 2;
    }
    try {
        std::cout << send(floodOf(argv + 1)) << '\n';
    } catch (const std::exception& error) {
        std::cerr << "hostile: " << error.what() << '\n';
        return 2;
    }
}
