#include "arena/Plan.h"

#include "arena/Map.h"
#include "arena/MapText.h"
#include "arena/Materials.h"
#include "common/Files.h"
#include "common/NumberIn.h"

#include <algorithm>
#include <array>
#include <compare>
#include <map>
#include <optional>
#include <string_view>
#include <vector>

namespace drench::arena {

namespace {

/// What a character of a plan stands for.
struct Kind {
    int solid = 0;
    int cellValue = 0;

    auto operator<=>(const Kind&) const = default;
};

constexpr Kind air;

/// The kind that a plan writes as the cellValue alone.
Kind usualKind(int cellValue) {
    return {cellValue == 0 ? 0 : 1, cellValue};
}

/// Visible ASCII, in the order in which kinds of cells without a character of their own get them.
/// '#' starts a comment.
constexpr std::string_view legendCharacters =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789"
    "!\"$%&'()*+,-./:;<=>?@[\\]^_`{|}~";

constexpr const char* sizeRule =
    " where \"size <columns> <rows> <depth>\" is allowed, each 1 or more";
constexpr const char* valueRule = " where <cellValue> or <solid>:<cellValue> is allowed";

bool isBlank(char c) {
    return c == ' ' || c == '\t';
}

bool isControl(char c) {
    return (c >= 0 && c < ' ') || c == '\x7f';
}

std::string sizeOf(long columns, long rows, long depth) {
    return std::to_string(columns) + " x " + std::to_string(rows) + " x " + std::to_string(depth);
}

/// An int as it is always written: without leading zeros, '+' or "-0".
std::optional<int> wholeNumber(std::string_view word) {
    const std::optional<int> number = numberIn<int>(word);
    return number && std::to_string(*number) == word ? number : std::nullopt;
}

/// The lines of a plan, one after the other.
struct PlanReader {
    struct Word {
        std::string_view text;
        std::size_t column;
    };

    const std::string& file;
    std::string_view rest;
    int number = 0;
    std::string_view line;
    std::vector<Word> words;

    PlanReader(const std::string& text, const std::string& file_) : file(file_), rest(text) {
        constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
        if (rest.starts_with(byteOrderMark))
            rest.remove_prefix(byteOrderMark.size());
    }

    /// Goes to the next line of whatever kind. At the end it stays at the last one.
    bool nextLine() {
        if (rest.empty())
            return false;
        ++number;
        line = rest.substr(0, rest.find('\n'));
        rest.remove_prefix(std::min(line.size() + 1, rest.size()));
        if (line.ends_with('\r'))
            line.remove_suffix(1);
        words.clear();
        for (std::size_t i = 0; i < line.size(); ++i) {
            if (isBlank(line[i]))
                continue;
            const std::size_t begin = i;
            while (i < line.size() && !isBlank(line[i]))
                ++i;
            words.push_back({line.substr(begin, i - begin), begin + 1});
        }
        return true;
    }

    /// Goes to the next line that is neither empty nor a comment.
    bool next() {
        while (nextLine()) {
            if (!words.empty() && line[0] != '#')
                return true;
        }
        return false;
    }

    /// The same where a line must follow; `allowed` says which.
    void expect(const std::string& allowed) {
        if (!next())
            failAtEnd(" where " + allowed + " is allowed");
    }

    bool hasWord(std::size_t index) const { return index < words.size(); }

    [[noreturn]] void fail(std::size_t column, const std::string& what) const {
        throw InputError(file + ":" + std::to_string(std::max(number, 1)) + ":" +
                         std::to_string(column) + ": " + what);
    }

    [[noreturn]] void failAtEnd(const std::string& what) const {
        fail(line.size() + 1, "the end" + what);
    }

    /// Fails at the word of this index, or behind the line if it has no more.
    [[noreturn]] void failAtWord(std::size_t index, const std::string& what) const {
        if (!hasWord(index))
            fail(line.size() + 1, "the end of the line" + what);
        fail(words[index].column, quoted(words[index].text) + what);
    }
};

std::string readName(PlanReader& plan) {
    const std::string rule = " where \"arena <name>\" is allowed";
    plan.expect("\"arena\"");
    if (plan.words[0].text != "arena")
        plan.failAtWord(0, rule);
    if (!plan.hasWord(1))
        plan.failAtWord(1, rule);
    const std::size_t begin = plan.words[1].column - 1;
    const std::size_t end = plan.words.back().column - 1 + plan.words.back().text.size();
    const std::string_view name = plan.line.substr(begin, end - begin);
    const auto control = std::find_if(name.begin(), name.end(), isControl);
    if (control != name.end())
        plan.fail(begin + static_cast<std::size_t>(control - name.begin()) + 1,
                  "a control character" + rule);
    return std::string(name);
}

MapManager readSize(PlanReader& plan) {
    plan.expect("\"size\"");
    if (plan.words[0].text != "size")
        plan.failAtWord(0, sizeRule);
    std::array<int, 3> size{};
    for (std::size_t i = 0; i < size.size(); ++i) {
        size[i] = plan.hasWord(i + 1) ? wholeNumber(plan.words[i + 1].text).value_or(0) : 0;
        if (size[i] < 1)
            plan.failAtWord(i + 1, sizeRule);
    }
    if (plan.hasWord(4))
        plan.failAtWord(4, sizeRule);
    if (!isArenaSize(size[0], size[1], size[2]))
        plan.fail(plan.words[1].column, sizeOf(size[0], size[1], size[2]) + " cells; at most " +
                                            std::to_string(mostCells) + " are allowed");
    return emptyMap(size[0], size[1], size[2]);
}

struct Legend {
    /// In the order of the plan.
    std::string characters;
    std::array<std::optional<Kind>, 256> kinds;
    std::map<Kind, std::string> names;

    std::optional<Kind>& kindOf(char c) { return kinds[static_cast<unsigned char>(c)]; }
    const std::optional<Kind>& kindOf(char c) const { return kinds[static_cast<unsigned char>(c)]; }
};

std::optional<Kind> kindOfValue(std::string_view value) {
    const std::size_t colon = value.find(':');
    if (colon == std::string_view::npos) {
        const std::optional<int> cellValue = wholeNumber(value);
        return cellValue ? std::optional(usualKind(*cellValue)) : std::nullopt;
    }
    const std::optional<int> solid = wholeNumber(value.substr(0, colon));
    const std::optional<int> cellValue = wholeNumber(value.substr(colon + 1));
    if (!solid || !cellValue)
        return std::nullopt;
    return Kind{*solid, *cellValue};
}

void readMaterial(const PlanReader& plan, const std::string& rule, Legend& legend) {
    const std::string_view character = plan.words[0].text;
    if (character.size() != 1 || legendCharacters.find(character) == std::string_view::npos)
        plan.failAtWord(0, rule);
    if (legend.kindOf(character[0]))
        plan.failAtWord(0, " a second time; each character is allowed once");
    if (!plan.hasWord(1))
        plan.failAtWord(1, rule);
    const std::string value(plan.words[1].text);
    const std::optional<Kind> kind = kindOfValue(value);
    if (!kind)
        plan.failAtWord(1, valueRule);
    if (legend.names.contains(*kind))
        plan.failAtWord(1, ", which is " + legend.names[*kind] +
                               " already; each value is allowed once");
    if (plan.words.size() != 3)
        plan.failAtWord(plan.hasWord(2) ? 3 : 2, rule);
    const std::string name(plan.words[2].text);
    if ((*kind == air) != (name == "air"))
        plan.failAtWord(2, " with value " + value + "; air has 0, and nothing else has");
    legend.characters += character;
    legend.kindOf(character[0]) = kind;
    legend.names[*kind] = name;
}

/// Goes on to the first line behind the legend.
Legend readLegend(PlanReader& plan, int rows) {
    plan.expect("\"legend\"");
    if (plan.words[0].text != "legend")
        plan.failAtWord(0, " where \"legend\" is allowed");
    if (plan.hasWord(1))
        plan.failAtWord(1, " behind \"legend\"; nothing is allowed there");
    Legend legend;
    std::string allowed = "\"<character> <value> <name>\"";
    while (true) {
        if (!plan.next())
            plan.failAtEnd(" where " + allowed + " is allowed; rows 0 to " +
                           std::to_string(rows - 1) + " must stand");
        if (plan.words[0].text == "row" && !legend.characters.empty())
            return legend;
        readMaterial(plan, " where " + allowed + " is allowed", legend);
        allowed = "\"<character> <value> <name>\" or \"row 0\"";
    }
}

/// Reads the heading of a grid and returns the last of its rows; `first` is the only one that it
/// may begin with.
int readRange(const PlanReader& plan, int first, int rows) {
    const std::string next = std::to_string(first);
    if (plan.words[0].text != "row")
        plan.failAtWord(0, " where \"row " + next + "\" is allowed");
    const std::string rule = " where \"row <j>\" or \"row <first>-<last>\" is allowed";
    if (plan.words.size() != 2)
        plan.failAtWord(plan.hasWord(1) ? 2 : 1, rule);
    const std::string_view range = plan.words[1].text;
    const std::size_t hyphen = range.find('-');
    const std::optional<int> begin = wholeNumber(range.substr(0, hyphen));
    const std::optional<int> end =
        hyphen == std::string_view::npos ? begin : wholeNumber(range.substr(hyphen + 1));
    if (!begin || !end)
        plan.failAtWord(1, rule);
    if (*begin != first)
        plan.failAtWord(1, " where row " + next + " is the next allowed");
    if (*end < first || *end >= rows)
        plan.failAtWord(1, " where rows from " + next + " to " + std::to_string(rows - 1) +
                               " are allowed");
    return *end;
}

/// Fails at a character that the legend does not have.
[[noreturn]] void failAtCharacter(const PlanReader& plan, std::size_t index, const Legend& legend,
                                  const std::string& heading) {
    const char c = plan.line[index];
    std::string what = "no visible ASCII character";
    if (c == ' ')
        what = "a blank";
    else if (c > ' ' && c <= '~')
        what = quoted(plan.line.substr(index, 1));
    what += " in column " + std::to_string(index) + " of " + heading + "; the legend allows";
    for (const char allowed : legend.characters)
        what += std::string(" ") + allowed;
    plan.fail(index + 1, what);
}

/// Reads the grid below a heading into the rows `first` to `last`.
void readGrid(PlanReader& plan, const Legend& legend, int first, int last, MapManager& map) {
    const std::string heading = "row " + std::string(plan.words[1].text);
    const auto columns = static_cast<std::size_t>(map.columns);
    for (int k = 0; k < map.depth; ++k) {
        const auto inside = [&] {
            return " inside " + heading + "; its " + std::to_string(map.depth) +
                   " lines are allowed there, and " + std::to_string(k) + " stand so far";
        };
        if (!plan.nextLine())
            plan.failAtEnd(inside());
        const std::string_view line = plan.line;
        if (line.empty())
            plan.fail(1, "an empty line" + inside());
        if (line.starts_with("row ") || line.starts_with('#'))
            plan.fail(1, quoted(line) + inside());
        for (std::size_t i = 0; i < line.size(); ++i) {
            const std::optional<Kind>& kind = legend.kindOf(line[i]);
            if (!kind)
                failAtCharacter(plan, i, legend, heading);
            for (int j = first; j <= last && i < columns; ++j) {
                Box& cube = cell(map, static_cast<int>(i), j, k);
                cube.solid = kind->solid;
                cube.cellValue = kind->cellValue;
            }
        }
        if (line.size() != columns)
            plan.fail(std::min(line.size(), columns) + 1,
                      std::to_string(line.size()) + " characters in depth index " +
                          std::to_string(k) + " of " + heading + "; " + std::to_string(columns) +
                          " are allowed");
    }
}

Kind kindOf(const Box& cube) {
    return {cube.solid, cube.cellValue};
}

/// The kinds of a map's cells and air, each with its character: a material's own one, and for what
/// is no material one that no material needs here.
std::map<Kind, char> charactersOf(const MapManager& map) {
    std::map<Kind, char> characters{{air, '\0'}};
    for (const auto& column : map.cubes) {
        for (const auto& row : column) {
            for (const Box& cube : row)
                characters.try_emplace(kindOf(cube), '\0');
        }
    }
    if (characters.size() > legendCharacters.size())
        throw InputError("cells of " + std::to_string(characters.size()) +
                         " kinds, air included; a plan has characters for " +
                         std::to_string(legendCharacters.size()));

    std::string free(legendCharacters);
    std::string unused;
    for (const Material& material : materials()) {
        const auto found = characters.find(usualKind(material.cellValue));
        if (found != characters.end())
            found->second = material.character;
        else
            unused += material.character;
        std::erase(free, material.character);
    }
    free += unused;
    std::size_t next = 0;
    for (auto& [kind, character] : characters) {
        if (character == '\0')
            character = free[next++];
    }
    return characters;
}

std::string legendLine(const Kind& kind, char character) {
    std::string name = materialName(kind.cellValue);
    std::replace(name.begin(), name.end(), ' ', '-');
    std::string value = std::to_string(kind.cellValue);
    if (kind != usualKind(kind.cellValue)) {
        value = std::to_string(kind.solid) + ":" + value;
        name = (kind.solid == 0 ? "passable-" : "solid-") + name;
    }
    return character + (" " + value + " " + name + "\n");
}

std::string gridOf(const MapManager& map, int row, const std::map<Kind, char>& characters) {
    std::string grid;
    for (int k = 0; k < map.depth; ++k) {
        for (int i = 0; i < map.columns; ++i)
            grid += characters.at(kindOf(cell(map, i, row, k)));
        grid += "\n";
    }
    return grid;
}

void requireName(const std::string& name) {
    const bool isOneLine = !name.empty() && !isBlank(name.front()) && !isBlank(name.back()) &&
                           std::none_of(name.begin(), name.end(), isControl);
    if (!isOneLine)
        throw InputError(quoted(name) + " as the arena's name; a name is not empty and has neither "
                                        "blanks at its ends nor control characters");
}

} // namespace

TextPlace Plan::placeOf(const CellIndex& cell) const {
    return {gridLines[static_cast<std::size_t>(cell.row)] + cell.depth, cell.column + 1};
}

bool isPlan(const std::string& text) {
    const std::string noFile;
    PlanReader reader(text, noFile);
    return reader.next() && reader.words[0].text == "arena";
}

Plan readPlan(const std::string& text, const std::string& file) {
    PlanReader reader(text, file);
    Plan plan;
    plan.name = readName(reader);
    plan.map = readSize(reader);
    const int rows = plan.map.rows;
    const std::string all = "; rows 0 to " + std::to_string(rows - 1);
    const Legend legend = readLegend(reader, rows);
    for (int row = 0; row < rows;) {
        const int last = readRange(reader, row, rows);
        plan.gridLines.resize(static_cast<std::size_t>(last) + 1, reader.number + 1);
        readGrid(reader, legend, row, last, plan.map);
        row = last + 1;
        const bool more = reader.next();
        if (more && row == rows)
            reader.failAtWord(0, " where nothing but comments is allowed" + all + " stand already");
        if (!more && row < rows)
            reader.failAtEnd(" where \"row " + std::to_string(row) + "\" is allowed" + all +
                             " must stand");
    }
    return plan;
}

std::string writePlan(const Plan& plan) {
    const MapManager& map = plan.map;
    const std::string size = sizeOf(map.columns, map.rows, map.depth);
    requireName(plan.name);
    if (!isArenaSize(map.columns, map.rows, map.depth))
        throw InputError("a map of " + size + " cells; 1 to " + std::to_string(mostCells) +
                         " are allowed");
    const std::map<Kind, char> characters = charactersOf(map);

    std::string text = "arena " + plan.name + "\nsize " + std::to_string(map.columns) + " " +
                       std::to_string(map.rows) + " " + std::to_string(map.depth) + "\nlegend\n" +
                       legendLine(air, characters.at(air));
    for (const auto& [kind, character] : characters) {
        if (kind != air)
            text += legendLine(kind, character);
    }
    for (int row = 0; row < map.rows;) {
        const std::string grid = gridOf(map, row, characters);
        const int first = row++;
        while (row < map.rows && gridOf(map, row, characters) == grid)
            ++row;
        std::string range = std::to_string(first);
        if (row - first > 1)
            range += "-" + std::to_string(row - 1);
        text.append("\nrow ").append(range).append("\n").append(grid);
    }
    return text;
}

} // namespace drench::arena
