#include "arena/MapTextProblems.h"

#include "arena/Map.h"
#include "common/Counting.h"

#include <algorithm>
#include <limits>
#include <span>
#include <string>

namespace drench::arena {

namespace {

using Limits = std::numeric_limits<int>;

constexpr const char* headerNames[headerNumbers] = {"the number of columns", "the number of rows",
                                                    "the depth"};
constexpr const char* headerRule = "a map text begins with \"<columns> <rows> <depth>\"";

/// "2 x 1 x 2 cells take 8 numbers after the header"
std::string cellsTake(const Dimensions& size) {
    return sizeWords(size[0], size[1], size[2]) + " cells take " +
           std::to_string(cellNumbers(size)) + " numbers after the header";
}

/// Problems of one kind: the first three, then the count of the others.
struct RepeatedProblem {
    /// The word for the unlisted ones: "5 more <kind>".
    std::string kind;
    std::size_t count = 0;
    std::vector<TextProblem> problems = {};

    void add(TextPlace place, const std::string& words) {
        constexpr std::size_t told = 3;
        if (count++ < told) {
            problems.push_back({place, words});
            return;
        }
        if (problems.size() == told)
            problems.push_back({place, ""});
        problems.back().words =
            std::to_string(count - told) + " more " + kind + ", the first of them here";
    }
};

/// Behind the last item, or the beginning of a text without any.
TextPlace endOf(const MapItems& text) {
    if (text.items.empty())
        return {1, 1};
    const TextPlace last = text.placeOf(text.items.back().end() - 1);
    return {last.line, last.column + 1};
}

/// Editors show neither a byte order mark nor the zeros of UTF-16.
std::string firstThingIn(const MapItems& text) {
    const std::string_view bytes = text.bytes;
    if (bytes.starts_with("\xEF\xBB\xBF"))
        return "a byte order mark";
    if (beginsAsUtf16(bytes))
        return utf16Words;
    return quoted(text.textOf(text.items.front()));
}

/// The problem of the header from this number on, if any; fills in its part of the size.
std::optional<TextProblem> problemOfHeader(const MapItems& text, std::size_t index,
                                           Dimensions& size) {
    const std::string name = headerNames[index];
    if (index >= text.items.size()) {
        std::string what = "the end where " + name + " is expected";
        if (index == 0)
            what = text.bytes.empty() ? "the file is empty" : "nothing but white space";
        return TextProblem{endOf(text), what + "; " + headerRule};
    }
    const MapItem& item = text.items[index];
    const TextPlace place = text.placeOf(item.begin);
    const std::string shown = quoted(text.textOf(item));
    if (item.number.length == 0)
        return TextProblem{place, (index == 0 ? firstThingIn(text) : shown) + " where " + name +
                                      " is expected; " + headerRule};
    if (item.number.value < 1)
        return TextProblem{place, shown + " where " + name + " is expected, which is 1 or more"};
    size[index] = item.number.value;
    if (!isArenaSize(size))
        return TextProblem{place, shown + " as " + name + " makes more than " +
                                      std::to_string(mostCells) +
                                      " cells, the most that an arena may have"};
    return std::nullopt;
}

/// Problems of the items for cells that are not numbers, or numbers that no int holds.
std::vector<TextProblem> problemsOfCells(const MapItems& text, std::span<const MapItem> items) {
    RepeatedProblem strangers{.kind = "where a number is expected"};
    RepeatedProblem misfits{.kind = "beyond these limits"};
    for (const MapItem& item : items) {
        if (item.number.length > 0 && item.number.fits)
            continue;
        // Only the first item that stops the server has a consequence.
        const auto consequence = [&](const std::string& what) {
            return strangers.count + misfits.count > 0
                       ? ""
                       : ": the server " + what + ", so all later cells are empty";
        };
        const TextPlace place = text.placeOf(item.begin);
        const std::string shown = quoted(text.textOf(item));
        if (item.number.length == 0)
            strangers.add(place, shown + " where a number is expected" +
                                     consequence("reads nothing from here on"));
        else
            misfits.add(place, shown + " where a number from " + std::to_string(Limits::min()) +
                                   " to " + std::to_string(Limits::max()) + " is expected" +
                                   consequence("takes " + std::to_string(item.number.value) +
                                               " and reads nothing after it"));
    }
    std::vector<TextProblem> problems = std::move(strangers.problems);
    problems.insert(problems.end(), misfits.problems.begin(), misfits.problems.end());
    return problems;
}

std::string missingWords(const Dimensions& size, std::size_t given) {
    const std::size_t missing = cellNumbers(size) - given;
    const auto cell = static_cast<long>(given / 2);
    return counted(missing, "number") + " missing for " + counted((missing + 1) / 2, "cell") +
           ", from cell (" + std::to_string(cell / size[2] / size[1]) + ", " +
           std::to_string(cell / size[2] % size[1]) + ", " + std::to_string(cell % size[2]) +
           ") on: " + cellsTake(size);
}

std::string leftOverWords(const MapItems& text, std::size_t needed, const Dimensions& size) {
    return std::to_string(text.items.size() - needed) + " left over, from " +
           quoted(text.textOf(text.items[needed])) + " on: " + cellsTake(size) +
           ". The server ignores the rest, but probably header and cells disagree";
}

/// The word unchanged if it consists of numbers, otherwise in quotes.
std::string shownWord(const std::string& word) {
    const MapItems items = itemsOf(word, LineEnds::joining);
    return items.items.front().number.length > 0 && word.size() <= 40 ? word : quoted(word);
}

/// Whether the line that begins here, once joined to the text before it, changes the numbers read.
/// A sign after a digit begins a number of its own.
bool runsTogether(std::string_view joined, std::size_t lineStart) {
    if (lineStart == 0 || lineStart >= joined.size())
        return false;
    const char before = joined[lineStart - 1];
    const char after = joined[lineStart];
    const bool isSigned = (after == '+' || after == '-') && before >= '0' && before <= '9';
    return !isBlankInMap(before) && !isBlankInMap(after) && !isSigned;
}

/// A word that joined lines have formed, and the offsets in it at which the lines begin.
struct JoinedWord {
    std::size_t begin = 0;
    std::size_t end = 0;
    std::vector<std::size_t> breaks;
};

/// The word around the line start number `index`, which runs together with the text before it.
JoinedWord wordAround(std::string_view joined, std::span<const std::size_t> lineStarts,
                      std::size_t index) {
    JoinedWord word{lineStarts[index], lineStarts[index], {}};
    const auto isLineStart = [&](std::size_t offset) {
        return std::binary_search(lineStarts.begin(), lineStarts.end(), offset);
    };
    // A line start that does not run together begins a word.
    const auto begins = [&](std::size_t offset) {
        return isLineStart(offset) && !runsTogether(joined, offset);
    };
    while (word.begin > 0 && !isBlankInMap(joined[word.begin - 1]) && !begins(word.begin))
        --word.begin;
    while (word.end < joined.size() && !isBlankInMap(joined[word.end]) && !begins(word.end)) {
        if (isLineStart(word.end))
            word.breaks.push_back(word.end);
        ++word.end;
    }
    return word;
}

std::string joinWords(const MapItems& joined, const JoinedWord& word) {
    const auto part = [&](std::size_t begin, std::size_t end) {
        return shownWord(joined.bytes.substr(begin, end - begin));
    };
    const std::size_t first = word.breaks.front();
    const int line = joined.placeOf(word.begin).line;
    const int nextLine = joined.placeOf(first).line;
    std::string partner = "line " + std::to_string(nextLine) + "'s " + part(first, word.end);
    if (word.breaks.size() > 1)
        partner = "the next " + std::to_string(word.breaks.size()) + " lines";
    else if (nextLine == line + 1)
        partner = "the next line's " + part(first, word.end);
    return "line " + std::to_string(line) + " ends in " + part(word.begin, first) +
           " without a blank: it will be read together with " + partner + " as " +
           part(word.begin, word.end);
}

} // namespace

std::size_t cellNumbers(const Dimensions& size) {
    return 2 * static_cast<std::size_t>(size[0] * size[1] * size[2]);
}

bool isArenaSize(const Dimensions& size) {
    return isArenaSize(size[0], size[1], size[2]);
}

MapJudgement judge(const MapItems& text) {
    MapJudgement result;
    Dimensions size{1, 1, 1};
    for (std::size_t index = 0; index < headerNumbers; ++index) {
        if (const auto problem = problemOfHeader(text, index, size)) {
            result.problems.push_back(*problem);
            return result;
        }
    }
    result.hasHeader = true;

    const std::size_t needed = headerNumbers + cellNumbers(size);
    const std::size_t given = std::min(text.items.size(), needed);
    const std::span<const MapItem> items = text.items;
    result.problems = problemsOfCells(text, items.subspan(headerNumbers, given - headerNumbers));
    if (given < needed)
        result.problems.push_back({endOf(text), missingWords(size, given - headerNumbers)});
    if (text.items.size() > needed) {
        const MapItem& first = text.items[needed];
        result.rest = MapRest{first.begin, numberAtStartOf(text.textOf(first)).length == 0};
        if (!result.rest->isRemark)
            result.problems.push_back(
                {text.placeOf(first.begin), leftOverWords(text, needed, size)});
    }
    return result;
}

std::vector<TextProblem> joinsIn(const MapItems& joined, const std::optional<MapRest>& rest,
                                 bool harmless) {
    // The server stops before a remark, even at the end of a number that runs into it.
    const std::string_view bytes =
        std::string_view(joined.bytes)
            .substr(0, rest && rest->isRemark ? rest->begin : joined.bytes.size());
    RepeatedProblem found{.kind = "without a blank at the end of a line"};
    std::size_t told = 0;
    for (std::size_t index = 0; index < joined.lineStarts.size(); ++index) {
        const std::size_t start = joined.lineStarts[index];
        if (start < told || !runsTogether(bytes, start))
            continue;
        const JoinedWord word = wordAround(bytes, joined.lineStarts, index);
        if (rest && word.begin >= rest->begin)
            break;
        found.add(joined.placeOf(word.begin), joinWords(joined, word));
        told = word.end;
    }
    for (TextProblem& problem : found.problems)
        problem.harmless = harmless;
    return found.problems;
}

} // namespace drench::arena
