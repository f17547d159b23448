#pragma once

#include <charconv>
#include <optional>
#include <string_view>

namespace drench {

/// Parses the whole text as a number with std::from_chars; nothing if it is not one or does not
/// fit.
template<class Number>
std::optional<Number> numberIn(std::string_view text) {
    Number number{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size())
        return std::nullopt;
    return number;
}

} // namespace drench
