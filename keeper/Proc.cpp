#include "keeper/Proc.h"

#include "common/Descriptor.h"
#include "common/NumberIn.h"

#include <algorithm>
#include <charconv>
#include <fcntl.h>
#include <string>
#include <unistd.h>

namespace drench::keeper {

namespace {

/// Fields of /proc/PID/stat behind the name in parentheses, counted from 0.
constexpr std::size_t userTicks = 11;
constexpr std::size_t systemTicks = 12;
constexpr std::size_t residentPages = 21;

std::optional<std::string> contentsOf(pid_t pid, const char* file) {
    const std::string path = "/proc/" + std::to_string(pid) + "/" + file;
    const Descriptor opened(open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (opened.number < 0)
        return std::nullopt;
    std::string text;
    char buffer[4096];
    ssize_t length;
    while ((length = read(opened.number, buffer, sizeof buffer)) > 0)
        text.append(buffer, static_cast<std::size_t>(length));
    return length < 0 ? std::nullopt : std::optional(text);
}

/// Takes everything up to the separator, and the separator, from the front of the text.
std::string_view takeUpTo(char separator, std::string_view& text) {
    const std::string_view front = text.substr(0, text.find(separator));
    text.remove_prefix(std::min(front.size() + 1, text.size()));
    return front;
}

std::vector<std::string_view> words(std::string_view line) {
    std::vector<std::string_view> found;
    while (!line.empty()) {
        if (const std::string_view word = takeUpTo(' ', line); !word.empty())
            found.push_back(word);
    }
    return found;
}

template<class Number>
std::optional<Number> numberAt(const std::vector<std::string_view>& fields, std::size_t place) {
    return place < fields.size() ? numberIn<Number>(fields[place]) : std::nullopt;
}

} // namespace

std::optional<Usage> usageIn(std::string_view stat) {
    // The name of a program may hold anything, but what follows it holds no parenthesis.
    const std::size_t nameEnd = stat.rfind(')');
    if (nameEnd == std::string_view::npos)
        return std::nullopt;
    const std::vector<std::string_view> fields = words(stat.substr(nameEnd + 1));
    const auto user = numberAt<std::uint64_t>(fields, userTicks);
    const auto system = numberAt<std::uint64_t>(fields, systemTicks);
    const auto pages = numberAt<std::uint64_t>(fields, residentPages);
    if (!user || !system || !pages)
        return std::nullopt;
    return Usage{static_cast<double>(*user + *system) / static_cast<double>(sysconf(_SC_CLK_TCK)),
                 static_cast<double>(*pages) * static_cast<double>(sysconf(_SC_PAGESIZE))};
}

std::optional<Usage> usageOf(pid_t pid) {
    const std::optional<std::string> stat = contentsOf(pid, "stat");
    return stat ? usageIn(*stat) : std::nullopt;
}

std::optional<UdpCounters> udpCountersIn(std::string_view snmp) {
    std::vector<std::string_view> names;
    while (!snmp.empty()) {
        const std::vector<std::string_view> fields = words(takeUpTo('\n', snmp));
        if (fields.empty() || fields.front() != "Udp:")
            continue;
        if (names.empty()) {
            names = fields;
            continue;
        }
        const auto valueOf = [&](std::string_view name) {
            const auto place = std::find(names.begin(), names.end(), name) - names.begin();
            return numberAt<std::uint64_t>(fields, static_cast<std::size_t>(place));
        };
        const auto in = valueOf("InDatagrams");
        const auto out = valueOf("OutDatagrams");
        return in && out ? std::optional(UdpCounters{*in, *out}) : std::nullopt;
    }
    return std::nullopt;
}

std::vector<std::uint16_t> udpPortsIn(std::string_view table) {
    std::vector<std::uint16_t> ports;
    takeUpTo('\n', table);
    while (!table.empty()) {
        const std::vector<std::string_view> fields = words(takeUpTo('\n', table));
        if (fields.size() < 2)
            continue;
        // ADDRESS:PORT in hexadecimal digits.
        const std::string_view port = fields[1].substr(fields[1].find(':') + 1);
        std::uint16_t number = 0;
        std::from_chars(port.data(), port.data() + port.size(), number, 16);
        ports.push_back(number);
    }
    return ports;
}

std::optional<UdpCounters> ownUdpCounters(pid_t pid, std::uint16_t port, std::uint16_t otherPort) {
    for (const char* file : {"net/udp", "net/udp6"}) {
        const std::optional<std::string> table = contentsOf(pid, file);
        // A kernel without IPv6 has no such table, and no such sockets.
        const std::vector<std::uint16_t> ports =
            table ? udpPortsIn(*table) : std::vector<std::uint16_t>();
        if (!std::all_of(ports.begin(), ports.end(),
                         [&](std::uint16_t each) { return each == port || each == otherPort; }))
            return std::nullopt;
    }
    const std::optional<std::string> snmp = contentsOf(pid, "net/snmp");
    return snmp ? udpCountersIn(*snmp) : std::nullopt;
}

} // namespace drench::keeper
