#include "arena/Plan.h"

#include "arena/Map.h"
#include "arena/PlanKind.h"
#include "arena/PlanLines.h"
#include "common/Files.h"
#include "common/NumberIn.h"

#include <algorithm>
#include <array>
#include <map>
#include <optional>
#include <string_view>

namespace drench::arena {

namespace {

constexpr const char* sizeRule =
    " where \"size <columns> <rows> <depth>\" is allowed, each 1 or more";
constexpr const char* valueRule = " where <cellValue> or <solid>:<cellValue> is allowed";

/// Parses an int in its only accepted form: without leading zeros, '+' or "-0".
std::optional<int> wholeNumber(std::string_view word) {
    const std::optional<int> number = numberIn<int>(word);
    return number && std::to_string(*number) == word ? number : std::nullopt;
}

std::string readName(PlanLines& plan) {
    const std::string rule = " where \"arena <name>\" is allowed";
    if (beginsAsUtf16(plan.rest))
        plan.fail(1, utf16Words + rule);
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

MapManager readSize(PlanLines& plan) {
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
        plan.fail(plan.words[1].column, sizeWords(size[0], size[1], size[2]) + " cells; at most " +
                                            std::to_string(mostCells) + " are allowed");
    return emptyMap(size[0], size[1], size[2]);
}

struct Legend {
    /// In the order of the plan.
    std::string characters;
    std::array<std::optional<PlanKind>, 256> kinds;
    std::map<PlanKind, std::string> names;

    std::optional<PlanKind>& kindOf(char c) { return kinds[static_cast<unsigned char>(c)]; }
    const std::optional<PlanKind>& kindOf(char c) const {
        return kinds[static_cast<unsigned char>(c)];
    }
};

std::optional<PlanKind> kindOfValue(std::string_view value) {
    const std::size_t colon = value.find(':');
    if (colon == std::string_view::npos) {
        const std::optional<int> cellValue = wholeNumber(value);
        return cellValue ? std::optional(usualKind(*cellValue)) : std::nullopt;
    }
    const std::optional<int> solid = wholeNumber(value.substr(0, colon));
    const std::optional<int> cellValue = wholeNumber(value.substr(colon + 1));
    if (!solid || !cellValue)
        return std::nullopt;
    return PlanKind{*solid, *cellValue};
}

void readMaterial(const PlanLines& plan, const std::string& rule, Legend& legend) {
    const std::string_view character = plan.words[0].text;
    if (character.size() != 1 || legendCharacters.find(character) == std::string_view::npos)
        plan.failAtWord(0, rule);
    if (legend.kindOf(character[0]))
        plan.failAtWord(0, " a second time; each character is allowed once");
    if (!plan.hasWord(1))
        plan.failAtWord(1, rule);
    const std::string value(plan.words[1].text);
    const std::optional<PlanKind> kind = kindOfValue(value);
    if (!kind)
        plan.failAtWord(1, valueRule);
    const bool isMark = plan.hasWord(2) && plan.words[2].text.starts_with(markPrefix);
    if (legend.names.contains(*kind) && !isMark)
        plan.failAtWord(1, ", which is " + legend.names[*kind] +
                               " already; each value is allowed once");
    if (plan.words.size() != 3)
        plan.failAtWord(plan.hasWord(2) ? 3 : 2, rule);
    const std::string name(plan.words[2].text);
    if (isMark && *kind != planAir)
        plan.failAtWord(2, " with value " + value + "; a mark of where players appear has 0");
    if ((*kind == planAir) != (name == "air" || isMark))
        plan.failAtWord(2, " with value " + value + "; air has 0, and nothing else has");
    legend.characters += character;
    legend.kindOf(character[0]) = kind;
    if (!isMark)
        legend.names[*kind] = name;
}

/// Goes on to the first line behind the legend.
Legend readLegend(PlanLines& plan, int rows) {
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

/// Reads the heading of a grid and returns the last of its rows. The heading must begin with
/// `first`.
int readRange(const PlanLines& plan, int first, int rows) {
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
[[noreturn]] void failAtCharacter(const PlanLines& plan, std::size_t index, const Legend& legend,
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
void readGrid(PlanLines& plan, const Legend& legend, int first, int last, MapManager& map) {
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
            const std::optional<PlanKind>& kind = legend.kindOf(line[i]);
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

} // namespace

TextPlace Plan::placeOf(const CellIndex& cell) const {
    return {gridLines[static_cast<std::size_t>(cell.row)] + cell.depth, cell.column + 1};
}

bool isPlan(const std::string& text) {
    const std::string noFile;
    PlanLines reader(text, noFile);
    return reader.next() && reader.words[0].text == "arena";
}

Plan readPlan(const std::string& text, const std::string& file) {
    PlanLines reader(text, file);
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

} // namespace drench::arena
