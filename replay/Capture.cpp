#include "replay/Capture.h"

#include "client/recording/RecordingBytes.h"
#include "common/Files.h"

#include <algorithm>
#include <arpa/inet.h>
#include <map>
#include <memory>
#include <optional>
#include <pcap/pcap.h>
#include <pcap/sll.h>
#include <string_view>
#include <utility>

namespace drench::replay {

namespace {

/// The most clients; a capture of an attack has one for each port.
constexpr std::size_t mostLines = client::recordingLimits::lines;

constexpr std::uint16_t etherTypeIp = 0x0800;
constexpr std::uint16_t etherTypeVlan = 0x8100;

/// ARPHRD_LOOPBACK of Linux, on which -i any catches each packet twice.
constexpr std::uint16_t loopbackHardware = 772;

struct Address {
    std::uint32_t host = 0;
    std::uint16_t port = 0;

    auto operator<=>(const Address&) const = default;
};

std::string named(const Address& address) {
    in_addr host{};
    host.s_addr = htonl(address.host);
    char text[INET_ADDRSTRLEN] = {};
    inet_ntop(AF_INET, &host, text, sizeof text);
    return std::string(text) + ':' + std::to_string(address.port);
}

std::uint16_t wordAt(std::string_view bytes, std::size_t at) {
    return static_cast<std::uint16_t>(static_cast<unsigned char>(bytes[at]) << 8 |
                                      static_cast<unsigned char>(bytes[at + 1]));
}

std::uint32_t longAt(std::string_view bytes, std::size_t at) {
    return static_cast<std::uint32_t>(wordAt(bytes, at)) << 16 | wordAt(bytes, at + 2);
}

/// What a packet is.
enum class Kind { datagram, other, fragment, broken };

struct Packet {
    Kind kind = Kind::other;
    Address from = {};
    Address to = {};
    std::string_view bytes = {};
};

/// The IP packet behind the header of the link layer; nothing if it is of another protocol, and an
/// empty one if it is cut off.
std::optional<std::string_view> networkPacket(int link, std::string_view packet) {
    const auto behind = [&](std::size_t typeAt,
                            std::size_t length) -> std::optional<std::string_view> {
        if (packet.size() < length)
            return std::string_view();
        if (wordAt(packet, typeAt) != etherTypeIp)
            return std::nullopt;
        return packet.substr(length);
    };
    switch (link) {
    case DLT_EN10MB: {
        constexpr std::size_t length = 14;
        constexpr std::size_t tag = 4;
        if (packet.size() >= length + tag && wordAt(packet, length - 2) == etherTypeVlan)
            return behind(length + tag - 2, length + tag);
        return behind(length - 2, length);
    }
    case DLT_LINUX_SLL:
        if (packet.size() >= SLL_HDR_LEN && wordAt(packet, 2) == loopbackHardware &&
            wordAt(packet, 0) == LINUX_SLL_OUTGOING)
            return std::nullopt;
        return behind(SLL_HDR_LEN - 2, SLL_HDR_LEN);
    case DLT_LINUX_SLL2:
        if (packet.size() >= SLL2_HDR_LEN && wordAt(packet, 8) == loopbackHardware &&
            packet[10] == LINUX_SLL_OUTGOING)
            return std::nullopt;
        return behind(0, SLL2_HDR_LEN);
    case DLT_NULL:
    case DLT_LOOP:
        // The family is in either byte order; the IP header itself says which version it is.
        return packet.substr(std::min<std::size_t>(4, packet.size()));
    default:
        return packet;
    }
}

bool isKnownLink(int link) {
    const int known[] = {DLT_EN10MB, DLT_LINUX_SLL, DLT_LINUX_SLL2, DLT_NULL, DLT_LOOP, DLT_RAW};
    return std::find(std::begin(known), std::end(known), link) != std::end(known);
}

Packet readPacket(int link, std::string_view bytes) {
    constexpr std::size_t shortestIp = 20;
    constexpr std::size_t udpHead = 8;
    constexpr unsigned udp = 17;
    const std::optional<std::string_view> network = networkPacket(link, bytes);
    if (!network)
        return {};
    std::string_view ip = *network;
    if (ip.size() < shortestIp)
        return {.kind = Kind::broken};
    const auto first = static_cast<unsigned char>(ip[0]);
    if (first >> 4 != 4 || static_cast<unsigned char>(ip[9]) != udp)
        return {};
    const std::size_t head = (first & 0xfu) * 4u;
    const std::size_t length = wordAt(ip, 2);
    // More fragments, or an offset.
    if ((wordAt(ip, 6) & 0x3fff) != 0)
        return {.kind = Kind::fragment};
    if (head < shortestIp || length < head + udpHead || ip.size() < length)
        return {.kind = Kind::broken};
    const std::string_view datagram = ip.substr(head, length - head);
    const std::size_t size = wordAt(datagram, 4);
    if (size < udpHead || size > datagram.size())
        return {.kind = Kind::broken};
    return {.kind = Kind::datagram,
            .from = {longAt(ip, 12), wordAt(datagram, 0)},
            .to = {longAt(ip, 16), wordAt(datagram, 2)},
            .bytes = datagram.substr(udpHead, size - udpHead)};
}

/// When a packet was caught, in microseconds since 1970; nothing if that is impossible.
std::optional<std::int64_t> timeOf(const pcap_pkthdr& head) {
    constexpr std::int64_t microseconds = 1'000'000;
    constexpr std::int64_t most = client::recordingLimits::startedAt / microseconds - 1;
    if (head.ts.tv_sec < -most || head.ts.tv_sec > most || head.ts.tv_usec < 0 ||
        head.ts.tv_usec >= microseconds)
        return std::nullopt;
    return std::int64_t{head.ts.tv_sec} * microseconds + head.ts.tv_usec;
}

using Capture = std::unique_ptr<pcap_t, decltype(&pcap_close)>;

Capture openCapture(const std::string& path) {
    char problem[PCAP_ERRBUF_SIZE] = {};
    Capture capture(pcap_open_offline(path.c_str(), problem), pcap_close);
    if (!capture) {
        // Some of its problems name the file themselves.
        const std::string words = problem;
        throw InputError(words.starts_with(path) ? words : path + ": " + words);
    }
    if (!isKnownLink(pcap_datalink(capture.get())))
        throw InputError(path + ": has the link layer " +
                         std::to_string(pcap_datalink(capture.get())) +
                         ", which is not known; catch on Ethernet, lo or any");
    return capture;
}

} // namespace

Imported importCapture(const std::string& path, std::uint16_t port, const std::string& arena,
                       const std::string& program) {
    const Capture capture = openCapture(path);
    const int link = pcap_datalink(capture.get());
    Imported imported;
    std::map<Address, std::uint32_t> lines;
    client::RecordingHeader header{.arena = arena, .room = "", .program = program, .startedAt = 0};
    std::optional<client::RecordingBytes> recording;
    std::string bytes;

    pcap_pkthdr* head = nullptr;
    const u_char* data = nullptr;
    int status = 0;
    while ((status = pcap_next_ex(capture.get(), &head, &data)) == 1) {
        Packet packet = readPacket(link, {reinterpret_cast<const char*>(data), head->caplen});
        if (packet.kind == Kind::datagram && !timeOf(*head))
            packet.kind = Kind::broken;
        const bool isToRoom = packet.to.port == port;
        switch (packet.kind) {
        case Kind::broken:
            ++imported.broken;
            continue;
        case Kind::fragment:
            ++imported.fragments;
            continue;
        case Kind::other:
            ++imported.others;
            continue;
        case Kind::datagram:
            break;
        }
        const Address& player = isToRoom ? packet.from : packet.to;
        const auto [line, isNew] =
            lines.try_emplace(player, static_cast<std::uint32_t>(lines.size()));
        if ((!isToRoom && packet.from.port != port) || lines.size() > mostLines) {
            if (isNew)
                lines.erase(line);
            ++imported.others;
            continue;
        }
        const std::int64_t now = *timeOf(*head);
        if (!recording) {
            header.startedAt = now;
            header.room = named(isToRoom ? packet.to : packet.from);
            recording.emplace(header);
        }
        recording->add({client::RecordedTime(now - header.startedAt),
                        isToRoom ? client::Way::toRoom : client::Way::fromRoom, line->second,
                        std::string(packet.bytes)});
        bytes += recording->takeReady();
        ++imported.datagrams;
    }
    // A capture that was cut off is used up to there.
    if (status == PCAP_ERROR && imported.datagrams == 0)
        throw InputError(path + ": " + pcap_geterr(capture.get()));
    if (!recording)
        throw InputError(path + ": has no datagram of port " + std::to_string(port));
    if (status == PCAP_ERROR)
        ++imported.broken;
    recording->end();
    imported.recording = bytes + recording->takeReady();
    imported.lines = static_cast<std::uint32_t>(lines.size());
    return imported;
}

} // namespace drench::replay
