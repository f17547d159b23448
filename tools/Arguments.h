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

// What the command lines of drench-bots and drench-lag have in common.

/// No UDP port is higher.
constexpr int largestPort = 65535;

/// The longest --seconds; some months.
constexpr double longestRun = 1e7;

/// Accepts numbers of the type from `low` to `high`; not-a-number is none of them.
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

/// The room that an argument names, as client::resolve() finds it. Throws InputError with the
/// argument and the reason where there is none.
client::RoomAddress roomAt(const std::string& argument);

/// The rooms at the ports "A-B" of a host, at most 250. Throws InputError where it is no such
/// range, or where the host names a port as well.
std::vector<client::RoomAddress> roomsAt(const std::string& host, const std::string& ports);

/// Parses the arguments, and lets `settle` look at them and throw CLI::ParseError. Where that ends
/// the program, after --help or wrong use, returns the exit status.
std::optional<int> parseArguments(CLI::App& app, int argc, char** argv,
                                  const std::function<void()>& settle);

/// Runs a program whose arguments are read, and tells what it throws in a line on standard error.
int runTool(const std::function<int()>& run);

} // namespace drench
