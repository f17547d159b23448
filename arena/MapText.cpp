#include "arena/MapText.h"

#include "arena/Map.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>
#include <optional>

namespace drench::arena {

namespace {

using Limits = std::numeric_limits<int>;

constexpr std::size_t headerNumbers = 3;
constexpr const char* headerNames[headerNumbers] = {"the number of columns", "the number of rows",
                                                    "the depth"};
constexpr const char* headerRule = "a map text begins with \"<columns> <rows> <depth>\"";

/// Columns, rows, depth.
using Dimensions = std::array<long, headerNumbers>;

bool isArenaSize(const Dimensions& size) {
    return arena::isArenaSize(size[0], size[1], size[2]);
}

std::size_t cellNumbers(const Dimensions& size) {
    return 2 * static_cast<std::size_t>(size[0] * size[1] * size[2]);
}

/// "2 x 1 x 2 cells take 8 numbers after the header"
std::string cellsTake(const Dimensions& size) {
    return std::to_string(size[0]) + " x " + std::to_string(size[1]) + " x " +
           std::to_string(size[2]) + " cells take " + std::to_string(cellNumbers(size)) +
           " numbers after the header";
}

std::string counted(std::size_t count, const std::string& thing) {
    return std::to_string(count) + " " + thing + (count == 1 ? "" : "s");
}

/// What `istream >> int` skips.
bool isBlank(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

bool isSign(char c) {
    return c == '+' || c == '-';
}

/// A run of bytes that are not blank.
struct Word {
    /// Where a further line's part of the word begins.
    struct Break {
        std::size_t offset;
        int line;
    };

    std::string text;
    TextPlace place;
    std::vector<Break> breaks;

    TextPlace placeAt(std::size_t offset) const {
        const auto next = std::upper_bound(
            breaks.begin(), breaks.end(), offset,
            [](std::size_t value, const Break& part) { return value < part.offset; });
        if (next == breaks.begin())
            return {place.line, place.column + static_cast<int>(offset)};
        const Break& part = *std::prev(next);
        return {part.line, 1 + static_cast<int>(offset - part.offset)};
    }
};

enum class LineEnds {
    /// As the server's loader has it: what stands on both sides is one word.
    join,

    /// As people read.
    part
};

struct WordReader {
    const std::string& bytes;
    LineEnds lineEnds;
    std::size_t at = 0;
    TextPlace here{1, 1};

    /// Just behind the last word.
    TextPlace end{1, 1};

    bool next(Word& word) {
        word.text.clear();
        word.breaks.clear();
        while (at < bytes.size() && isBlank(bytes[at]))
            step();
        word.place = here;
        int line = here.line;
        for (; at < bytes.size(); step()) {
            const char c = bytes[at];
            if (c == '\n' && lineEnds == LineEnds::join)
                continue;
            if (isBlank(c))
                break;
            if (here.line != line) {
                // A sign after a digit begins a number of its own.
                if (isDigit(word.text.back()) && isSign(c))
                    break;
                word.breaks.push_back({word.text.size(), here.line});
            }
            line = here.line;
            word.text += c;
            end = {here.line, here.column + 1};
        }
        return !word.text.empty();
    }

    void step() {
        if (bytes[at++] == '\n')
            here = {here.line + 1, 1};
        else
            ++here.column;
    }
};

struct Number {
    /// 0 if there is none.
    std::size_t length = 0;

    /// The limit if it does not fit an int.
    int value = 0;
    bool fits = true;
};

/// What `istream >> int` reads from this offset of a word.
Number numberAt(const std::string& word, std::size_t offset) {
    const char* begin = word.data() + offset;
    const char* digits = *begin == '+' ? begin + 1 : begin;
    if (digits != begin && *digits == '-')
        return {};
    Number number;
    const auto [end, error] = std::from_chars(digits, word.data() + word.size(), number.value);
    if (error == std::errc::invalid_argument)
        return {};
    number.length = static_cast<std::size_t>(end - begin);
    number.fits = error == std::errc();
    if (!number.fits)
        number.value = *begin == '-' ? Limits::min() : Limits::max();
    return number;
}

/// Whether the word is one number, or some with signs between them: "1-2" is read as 1 and -2.
bool consistsOfNumbers(const std::string& word) {
    for (std::size_t offset = 0; offset < word.size();) {
        const std::size_t length = numberAt(word, offset).length;
        if (length == 0)
            return false;
        offset += length;
    }
    return true;
}

/// Problems of one kind: the first three, then how many more.
struct RepeatedProblem {
    /// How those that are not told are called: "5 more <kind>".
    std::string kind;
    std::size_t count = 0;
    std::vector<TextProblem> problems;

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

/// Judges a whole text by one way of reading its line ends, beyond where the server stops to read.
struct Judge {
    bool hasHeader = false;
    std::vector<TextProblem> problems;

    /// Where what no cell has use for begins.
    std::optional<TextPlace> leftOver;

    Judge(const std::string& bytes, LineEnds lineEnds) {
        WordReader words{bytes, lineEnds};
        Word word;
        while (words.next(word)) {
            if (!takeWord(word))
                return;
        }
        finish(bytes.empty(), words.end);
    }

  private:
    /// A word that is no number counts as one, for it may be a misspelt one.
    std::size_t count = 0;
    std::size_t needed = headerNumbers;
    Dimensions size{1, 1, 1};
    std::string firstLeftOver;
    RepeatedProblem strangers{"where a number is expected", 0, {}};
    RepeatedProblem misfits{"beyond these limits", 0, {}};

    /// These return whether the words that follow can be judged: not without a header.
    bool takeWord(const Word& word) {
        if (!consistsOfNumbers(word.text))
            return take(word.place, word.text, Number());
        Number number;
        for (std::size_t offset = 0; offset < word.text.size(); offset += number.length) {
            number = numberAt(word.text, offset);
            if (!take(word.placeAt(offset), word.text.substr(offset, number.length), number))
                return false;
        }
        return true;
    }

    bool take(TextPlace place, const std::string& text, const Number& number) {
        const std::size_t index = count++;
        if (index < headerNumbers)
            return takeForHeader(index, place, text, number);
        if (index >= needed) {
            if (!leftOver)
                firstLeftOver = text;
            leftOver = leftOver.value_or(place);
        } else if (number.length == 0) {
            strangers.add(place, quoted(text) + " where a number is expected" +
                                     consequence("reads nothing from here on"));
        } else if (!number.fits) {
            misfits.add(place, quoted(text) + " where a number from " +
                                   std::to_string(Limits::min()) + " to " +
                                   std::to_string(Limits::max()) + " is expected" +
                                   consequence("takes " + std::to_string(number.value) +
                                               " and reads nothing after it"));
        }
        return true;
    }

    /// The first thing that stops the server has one.
    std::string consequence(const std::string& what) const {
        return strangers.count + misfits.count > 0
                   ? ""
                   : ": the server " + what + ", so all later cells are empty";
    }

    bool takeForHeader(std::size_t index, TextPlace place, const std::string& text,
                       const Number& number) {
        const std::string name = headerNames[index];
        if (number.length == 0) {
            // Editors that put it there do not show it.
            const bool byteOrderMark = text.starts_with("\xEF\xBB\xBF");
            problems.push_back({place, (byteOrderMark ? "a byte order mark" : quoted(text)) +
                                           " where " + name + " is expected; " + headerRule});
            return false;
        }
        if (number.value < 1) {
            problems.push_back(
                {place, quoted(text) + " where " + name + " is expected, which is 1 or more"});
            return false;
        }
        size[index] = number.value;
        if (!isArenaSize(size)) {
            problems.push_back({place, quoted(text) + " as " + name + " makes more than " +
                                           std::to_string(mostCells) +
                                           " cells, the most that an arena may have"});
            return false;
        }
        hasHeader = index + 1 == headerNumbers;
        if (hasHeader)
            needed += cellNumbers(size);
        return true;
    }

    void finish(bool isEmpty, TextPlace end) {
        if (!hasHeader) {
            std::string what = std::string("the end where ") + headerNames[count] + " is expected";
            if (count == 0)
                what = isEmpty ? "the file is empty" : "nothing but white space";
            problems.push_back({end, what + "; " + headerRule});
            return;
        }
        for (const RepeatedProblem* repeated : {&strangers, &misfits})
            problems.insert(problems.end(), repeated->problems.begin(), repeated->problems.end());
        if (count < needed) {
            const std::size_t missing = needed - count;
            const auto cell = static_cast<long>((count - headerNumbers) / 2);
            problems.push_back({end, counted(missing, "number") + " missing for " +
                                         counted((missing + 1) / 2, "cell") + ", from cell (" +
                                         std::to_string(cell / size[2] / size[1]) + ", " +
                                         std::to_string(cell / size[2] % size[1]) + ", " +
                                         std::to_string(cell % size[2]) +
                                         ") on: " + cellsTake(size)});
        }
        if (leftOver)
            problems.push_back({*leftOver, std::to_string(count - needed) + " left over, from " +
                                               quoted(firstLeftOver) + " on: " + cellsTake(size) +
                                               ". The server ignores the rest, but probably header "
                                               "and cells disagree"});
    }
};

/// The word as it stands if it is a number, else in quotes.
std::string shown(const std::string& word) {
    return consistsOfNumbers(word) && word.size() <= 40 ? word : quoted(word);
}

/// Words that exist only because the loader joins lines, before the place `end`.
std::vector<TextProblem> joins(const std::string& bytes, const std::optional<TextPlace>& end) {
    RepeatedProblem found{"without a blank at the end of a line", 0, {}};
    WordReader words{bytes, LineEnds::join};
    Word word;
    while (words.next(word)) {
        if (word.breaks.empty() || (end && word.place >= *end))
            continue;
        const std::size_t first = word.breaks[0].offset;
        const std::string left = word.text.substr(0, first);
        std::string partner;
        if (word.breaks.size() > 1)
            partner = "the next " + std::to_string(word.breaks.size()) + " lines";
        else if (word.breaks[0].line == word.place.line + 1)
            partner = "the next line's " + shown(word.text.substr(first));
        else
            partner = "line " + std::to_string(word.breaks[0].line) + "'s " +
                      shown(word.text.substr(first));
        found.add(word.place, "line " + std::to_string(word.place.line) + " ends in " +
                                  shown(left) + " without a blank: it will be read together with " +
                                  partner + " as " + shown(word.text));
    }
    return found.problems;
}

/// Notes where each number stands that the server reads, and returns the header as far as it does.
Dimensions followServer(const std::string& bytes, std::vector<TextPlace>& numbers) {
    Dimensions size{};
    std::size_t needed = headerNumbers;
    WordReader words{bytes, LineEnds::join};
    Word word;
    while (words.next(word)) {
        for (std::size_t offset = 0; offset < word.text.size();) {
            const Number number = numberAt(word.text, offset);
            if (numbers.size() == needed || number.length == 0)
                return size;
            if (numbers.size() < headerNumbers)
                size[numbers.size()] = number.value;
            numbers.push_back(word.placeAt(offset));
            if (!number.fits)
                return size;
            if (numbers.size() == headerNumbers && isArenaSize(size))
                needed += cellNumbers(size);
            offset += number.length;
        }
    }
    return size;
}

} // namespace

std::string quoted(std::string_view text) {
    constexpr std::size_t most = 40;
    std::string shown(text.substr(0, text.size() > most ? most - 3 : most));
    std::replace_if(
        shown.begin(), shown.end(), [](char c) { return c < ' ' || c > '~'; }, '?');
    return "\"" + shown + (text.size() > most ? "...\"" : "\"");
}

TextPlace MapText::placeOf(const CellIndex& cell) const {
    const auto size = [](int number) { return static_cast<std::size_t>(number); };
    const std::size_t index =
        (size(cell.column) * size(map.rows) + size(cell.row)) * size(map.depth) + size(cell.depth);
    const std::size_t number = headerNumbers + 2 * index;
    return number < numbers.size() ? numbers[number] : TextPlace{};
}

MapText readMapText(const std::string& bytes) {
    MapText text;
    text.hasHeader = isArenaSize(followServer(bytes, text.numbers));
    if (text.hasHeader) {
        std::string joined = bytes;
        std::erase(joined, '\n');
        text.map.init(std::move(joined));
    }

    const Judge joined(bytes, LineEnds::join);
    const Judge parted(bytes, LineEnds::part);
    const bool asMeant = joined.problems.empty();
    if (asMeant || text.hasHeader || parted.hasHeader)
        text.problems = joins(bytes, asMeant ? std::nullopt : parted.leftOver);
    for (TextProblem& join : text.problems)
        join.harmless = asMeant;
    if (!asMeant)
        text.problems.insert(text.problems.end(), parted.problems.begin(), parted.problems.end());
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
