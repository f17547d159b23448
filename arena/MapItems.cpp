#include "arena/MapItems.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <utility>

namespace drench::arena {

namespace {

bool consistsOfNumbers(std::string_view word) {
    while (!word.empty()) {
        const std::size_t length = numberAtStartOf(word).length;
        if (length == 0)
            return false;
        word.remove_prefix(length);
    }
    return true;
}

void addWord(MapItems& text, std::size_t begin, std::size_t end) {
    const std::string_view word = std::string_view(text.bytes).substr(begin, end - begin);
    if (!consistsOfNumbers(word)) {
        text.items.push_back({begin, word.size(), {}});
        return;
    }
    for (std::size_t offset = 0; offset < word.size();) {
        const TextNumber number = numberAtStartOf(word.substr(offset));
        text.items.push_back({begin + offset, number.length, number});
        offset += number.length;
    }
}

} // namespace

bool isBlankInMap(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

TextNumber numberAtStartOf(std::string_view text) {
    using Limits = std::numeric_limits<int>;
    const char* const begin = text.data();
    const char* const end = begin + text.size();
    const bool hasPlus = text.starts_with('+');
    if (hasPlus && text.substr(1).starts_with('-'))
        return {};
    TextNumber number;
    const auto [behind, error] = std::from_chars(begin + hasPlus, end, number.value);
    if (error == std::errc::invalid_argument)
        return {};
    number.length = static_cast<std::size_t>(behind - begin);
    number.fits = error == std::errc();
    if (!number.fits)
        number.value = text.starts_with('-') ? Limits::min() : Limits::max();
    return number;
}

TextPlace MapItems::placeOf(std::size_t offset) const {
    // Of several lines that begin at one offset only the last one has bytes.
    const auto next = std::upper_bound(lineStarts.begin(), lineStarts.end(), offset);
    const auto line = std::prev(next);
    return {static_cast<int>(next - lineStarts.begin()), 1 + static_cast<int>(offset - *line)};
}

MapItems itemsOf(const std::string& bytes, LineEnds lineEnds) {
    MapItems text;
    text.bytes.reserve(bytes.size());
    text.lineStarts.push_back(0);
    for (const char c : bytes) {
        if (c != '\n' || lineEnds == LineEnds::parting)
            text.bytes += c;
        if (c == '\n')
            text.lineStarts.push_back(text.bytes.size());
    }
    for (std::size_t at = 0; at < text.bytes.size(); ++at) {
        const std::size_t begin = at;
        while (at < text.bytes.size() && !isBlankInMap(text.bytes[at]))
            ++at;
        if (at > begin)
            addWord(text, begin, at);
    }
    return text;
}

} // namespace drench::arena
