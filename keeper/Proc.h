#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <sys/types.h>
#include <vector>

namespace drench::keeper {

// What the kernel tells of a process in proc(5). The functions of a text take the file's contents.

/// What a process has used up.
struct Usage {
    /// User and system time of all its threads.
    double processorSeconds = 0.0;
    double residentBytes = 0.0;
};

/// From /proc/PID/stat; nothing if fields are missing.
std::optional<Usage> usageIn(std::string_view stat);

/// Nothing if there is no such process.
std::optional<Usage> usageOf(pid_t pid);

/// UDP datagrams received and sent by all sockets of a network namespace.
struct UdpCounters {
    std::uint64_t in = 0;
    std::uint64_t out = 0;
};

/// From /proc/PID/net/snmp, by the names in its heading.
std::optional<UdpCounters> udpCountersIn(std::string_view snmp);

/// The local ports in /proc/PID/net/udp or udp6.
std::vector<std::uint16_t> udpPortsIn(std::string_view table);

/// The counters of the process's network namespace if it holds no other UDP sockets than those of
/// these two ports.
std::optional<UdpCounters> ownUdpCounters(pid_t pid, std::uint16_t port, std::uint16_t otherPort);

} // namespace drench::keeper
