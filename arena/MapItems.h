#pragma once

#include "arena/TextPlace.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace drench::arena {

/// The two ways to read the line ends of a map text.
enum class LineEnds {
    /// As the server's loader does: they vanish, so what stands on both sides becomes one word.
    joining,

    /// As people do: they are blanks.
    parting
};

/// A number as `istream >> int` reads it.
struct TextNumber {
    /// In bytes; 0 where no number stands.
    std::size_t length = 0;

    /// The nearest int if the number is none.
    int value = 0;
    bool fits = true;
};

/// The number that the text begins with.
TextNumber numberAtStartOf(std::string_view text);

/// A number, or a run of bytes between blanks that does not consist of numbers.
struct MapItem {
    /// Offset in MapItems::bytes.
    std::size_t begin = 0;

    std::size_t length = 0;

    /// Without a length for what is no number.
    TextNumber number;

    std::size_t end() const { return begin + length; }
};

/// The bytes of a map text under one rule for its line ends, cut into items. A word of numbers with
/// signs between them is as many items: "1-2" is 1 and -2.
struct MapItems {
    /// The file's; without the line ends where they join.
    std::string bytes;

    /// The offset in `bytes` where each line of the file begins.
    std::vector<std::size_t> lineStarts;
    std::vector<MapItem> items;

    std::string_view textOf(const MapItem& item) const {
        return std::string_view(bytes).substr(item.begin, item.length);
    }

    /// Where in the file the byte at this offset stands, or, at the end, would stand.
    TextPlace placeOf(std::size_t offset) const;
};

MapItems itemsOf(const std::string& bytes, LineEnds lineEnds);

/// What `istream >> int` skips.
bool isBlankInMap(char c);

} // namespace drench::arena
