#include "arena/MapText.h"

#include "arena/Map.h"
#include "arena/MapItems.h"
#include "arena/MapTextProblems.h"

#include <algorithm>
#include <utility>

namespace drench::arena {

namespace {

/// The server's reading of a text with its lines joined.
struct ServerReading {
    bool hasHeader = false;

    /// The place of each number that the server reads.
    std::vector<TextPlace> numbers;

    /// Whether the server reads every cell, and at most a remark follows.
    bool isWhole = false;

    /// The text after the last number, if all were read.
    std::optional<MapRest> rest;
};

/// Whether a remark begins here: at the start of a word, or at a line that is joined to a number.
bool isRemark(const MapItems& joined, const MapItem& item, std::size_t offset) {
    const bool begins = offset == item.begin || std::binary_search(joined.lineStarts.begin(),
                                                                   joined.lineStarts.end(), offset);
    return begins && numberAtStartOf(joined.textOf(item).substr(offset - item.begin)).length == 0;
}

/// Follows MapManager::init: number by number up to the last cell, or to the first item that stops
/// it.
ServerReading readAsServer(const MapItems& joined) {
    ServerReading server;
    Dimensions size{};
    std::size_t needed = headerNumbers;
    for (const MapItem& item : joined.items) {
        // Of an item that is not a number, the server reads the numbers at its start.
        for (std::size_t offset = item.begin; offset < item.end();) {
            if (server.numbers.size() == needed) {
                server.rest = MapRest{offset, isRemark(joined, item, offset)};
                server.isWhole = server.hasHeader && server.rest->isRemark;
                return server;
            }
            const TextNumber number =
                numberAtStartOf(joined.textOf(item).substr(offset - item.begin));
            if (number.length == 0)
                return server;
            if (server.numbers.size() < headerNumbers)
                size[server.numbers.size()] = number.value;
            server.numbers.push_back(joined.placeOf(offset));
            if (server.numbers.size() == headerNumbers && isArenaSize(size)) {
                server.hasHeader = true;
                needed += cellNumbers(size);
            }
            if (!number.fits)
                return server;
            offset += number.length;
        }
    }
    server.isWhole = server.hasHeader && server.numbers.size() == needed;
    return server;
}

/// The offset in the joined text that corresponds to an offset in the text with lines apart.
std::size_t offsetInJoined(const MapItems& parted, std::size_t offset) {
    return offset - static_cast<std::size_t>(parted.placeOf(offset).line - 1);
}

TextProblem remarkProblem(const MapItems& joined, std::size_t begin) {
    const auto next = std::upper_bound(joined.lineStarts.begin(), joined.lineStarts.end(), begin);
    std::size_t end = next == joined.lineStarts.end() ? joined.bytes.size() : *next;
    while (isBlankInMap(joined.bytes[end - 1]))
        --end;
    return {joined.placeOf(begin),
            quoted(std::string_view(joined.bytes).substr(begin, end - begin)) +
                " after the last cell: the server ignores it",
            true};
}

} // namespace

TextPlace MapText::placeOf(const CellIndex& cell) const {
    const auto size = [](int number) { return static_cast<std::size_t>(number); };
    const std::size_t index =
        (size(cell.column) * size(map.rows) + size(cell.row)) * size(map.depth) + size(cell.depth);
    const std::size_t number = headerNumbers + 2 * index;
    return number < numbers.size() ? numbers[number] : TextPlace{};
}

MapText readMapText(const std::string& bytes) {
    const MapItems joined = itemsOf(bytes, LineEnds::joining);
    ServerReading server = readAsServer(joined);
    MapText text;
    text.hasHeader = server.hasHeader;
    text.numbers = std::move(server.numbers);
    if (text.hasHeader)
        text.map.init(joined.bytes);

    if (server.isWhole) {
        text.problems = joinsIn(joined, server.rest, true);
    } else {
        const MapItems parted = itemsOf(bytes, LineEnds::parting);
        MapJudgement judgement = judge(parted);
        server.rest = judgement.rest;
        if (server.rest)
            server.rest->begin = offsetInJoined(parted, server.rest->begin);
        if (server.hasHeader || judgement.hasHeader)
            text.problems = joinsIn(joined, server.rest, false);
        text.problems.insert(text.problems.end(), judgement.problems.begin(),
                             judgement.problems.end());
    }
    if (server.rest && server.rest->isRemark)
        text.problems.push_back(remarkProblem(joined, server.rest->begin));
    std::stable_sort(text.problems.begin(), text.problems.end(),
                     [](const TextProblem& a, const TextProblem& b) { return a.place < b.place; });
    return text;
}

std::string writeMapText(const MapManager& map) {
    std::string text = std::to_string(map.columns) + " " + std::to_string(map.rows) + " " +
                       std::to_string(map.depth) + "\n";
    for (const auto& column : map.cubes) {
        for (const auto& row : column) {
            for (const Box& cube : row) {
                text += " ";
                text += std::to_string(cube.solid);
                text += " ";
                text += std::to_string(cube.cellValue);
            }
            text += "\n";
        }
    }
    return text;
}

} // namespace drench::arena
