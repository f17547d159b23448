#pragma once

#include "arena/TextPlace.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace drench::arena {

/// The two ways to read the line ends of a map text.
enum class LineEnds {
    /// As the server's loader: line ends vanish, so the text on both sides is joined.
    joining,

    /// As people: line ends are blanks.
    parting
};

/// A number as `istream >> int` reads it.
struct TextNumber {
    /// In bytes; 0 if there is no number.
    std::size_t length = 0;

    /// The nearest int if the number does not fit.
    int value = 0;
    bool fits = true;
};

/// Reads the number that the text begins with.
TextNumber numberAtStartOf(std::string_view text);

/// A number, or a run of bytes between blanks that does not consist of numbers.
struct MapItem {
    /// Offset in MapItems::bytes.
    std::size_t begin = 0;

    std::size_t length = 0;

    /// Of length 0 if the item is not a number.
    TextNumber number;

    std::size_t end() const { return begin + length; }
};

/// The bytes of a map text under one rule for its line ends, cut into items. A word of numbers with
/// signs between them gives several items: "1-2" is 1 and -2.
struct MapItems {
    /// The file's bytes, without the line ends if they join.
    std::string bytes;

    /// The offset in `bytes` where each line of the file begins.
    std::vector<std::size_t> lineStarts;
    std::vector<MapItem> items;

    std::string_view textOf(const MapItem& item) const {
        return std::string_view(bytes).substr(item.begin, item.length);
    }

    /// The place in the file of the byte at this offset; an offset at the end is the place after
    /// the last byte.
    TextPlace placeOf(std::size_t offset) const;
};

MapItems itemsOf(const std::string& bytes, LineEnds lineEnds);

/// Whether `istream >> int` skips this character.
bool isBlankInMap(char c);

} // namespace drench::arena
