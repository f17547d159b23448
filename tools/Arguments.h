#pragma once

#include "client/RoomAddress.h"
#include "common/NumberIn.h"

#include <CLI/CLI.hpp>
#include <cstdint>
#include <sstream>
#include <string>
#include <type_traits>
#include <vector>

namespace drench {

// Shared by the command lines of drench-bots and drench-lag.

/// The highest UDP port.
constexpr int largestPort = 65535;

/// The longest --seconds; some months.
constexpr double longestRun = 1e7;

/// Accepts numbers of the type from `low` to `high`, and not NaN.
template<class Number>
CLI::Validator numberBetween(Number low, Number high) {
    return CLI::Validator(
        [=](const std::string& text) {
            const std::optional<Number> value = numberIn<Number>(text);
            if (value && *value >= low && *value <= high)
                return std::string();
            std::ostringstream words;
            words.precision(15);
            words << text << (std::is_integral_v<Number> ? " is no whole" : " is no")
                  << " number from " << low << " to " << high;
            return words.str();
        },
        "");
}

/// The room that an argument names, by client::resolve(). Throws InputError with the argument and
/// the reason if there is none.
client::RoomAddress roomAt(const std::string& argument);

/// The rooms at the ports "A-B" of a host, at most 250. Throws InputError if that is not a range of
/// ports, or if the host names a port as well.
std::vector<client::RoomAddress> roomsAt(const std::string& host, const std::string& ports);

/// Parses the arguments and calls `settle`, which may throw CLI::ParseError. Returns the exit
/// status if the program is to end, after --help or wrong use; otherwise nothing.
std::optional<int> parseArguments(CLI::App& app, int argc, char** argv,
                                  const std::function<void()>& settle);

/// Runs a program after its arguments are read, and reports an exception in a line on standard
/// error.
int runTool(const std::function<int()>& run);

} // namespace drench
