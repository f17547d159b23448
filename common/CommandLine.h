#pragma once

#include "common/NumberIn.h"

#include <CLI/CLI.hpp>
#include <functional>
#include <optional>
#include <sstream>
#include <string>
#include <type_traits>

namespace drench {

// Shared by command lines.

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

/// Parses the arguments and calls `settle`, which may throw CLI::ParseError. Returns the exit
/// status if the program is to end, after --help or wrong use; otherwise nothing.
std::optional<int> parseArguments(CLI::App& app, int argc, char** argv,
                                  const std::function<void()>& settle);

/// Runs a program after its arguments are read, and reports an exception in a line on standard
/// error.
int runTool(const std::function<int()>& run);

} // namespace drench
