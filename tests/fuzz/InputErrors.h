#pragma once

#include "common/Files.h"
#include "tests/fuzz/Require.h"

#include <charconv>
#include <optional>
#include <string>
#include <string_view>

using namespace drench;

/// Takes `prefix` and a number from the front of `words`; nothing when they do not stand there.
inline std::optional<long> takeNumber(std::string_view& words, std::string_view prefix) {
    if (!words.starts_with(prefix))
        return std::nullopt;
    words.remove_prefix(prefix.size());
    long number = 0;
    const auto [end, error] = std::from_chars(words.data(), words.data() + words.size(), number);
    if (error != std::errc())
        return std::nullopt;
    words.remove_prefix(static_cast<std::size_t>(end - words.data()));
    return number;
}

/// A line of a text, counted from 1, without its end; nothing when there is no such line. Nothing
/// is a line too behind the last end of a line, and in an empty text.
inline std::optional<std::string_view> lineOf(std::string_view text, long number) {
    if (number < 1)
        return std::nullopt;
    for (; number > 1; --number) {
        const std::size_t end = text.find('\n');
        if (end == std::string_view::npos)
            return std::nullopt;
        text.remove_prefix(end + 1);
    }
    return text.substr(0, text.find('\n'));
}

/// Errors are one printable line for the user.
inline void requireOneLine(std::string_view words) {
    for (const char c : words)
        require(c != '\n' && c != '\0', "an error is one line");
}
