#include "arena/PlanLines.h"

#include "arena/PlanKind.h"
#include "arena/TextPlace.h"
#include "common/Files.h"

#include <algorithm>

namespace drench::arena {

PlanLines::PlanLines(const std::string& text, const std::string& fileName)
    : file(fileName), rest(text) {
    constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
    if (rest.starts_with(byteOrderMark))
        rest.remove_prefix(byteOrderMark.size());
}

bool PlanLines::nextLine() {
    if (rest.empty())
        return false;
    ++number;
    line = rest.substr(0, rest.find('\n'));
    rest.remove_prefix(std::min(line.size() + 1, rest.size()));
    if (line.ends_with('\r'))
        line.remove_suffix(1);
    words.clear();
    for (std::size_t i = 0; i < line.size(); ++i) {
        if (isBlankInPlan(line[i]))
            continue;
        const std::size_t begin = i;
        while (i < line.size() && !isBlankInPlan(line[i]))
            ++i;
        words.push_back({line.substr(begin, i - begin), begin + 1});
    }
    return true;
}

bool PlanLines::next() {
    while (nextLine()) {
        if (!words.empty() && line[0] != '#')
            return true;
    }
    return false;
}

void PlanLines::expect(const std::string& allowed) {
    if (!next())
        failAtEnd(" where " + allowed + " is allowed");
}

void PlanLines::fail(std::size_t column, const std::string& what) const {
    throw InputError(file + ":" + std::to_string(std::max(number, 1)) + ":" +
                     std::to_string(column) + ": " + what);
}

void PlanLines::failAtEnd(const std::string& what) const {
    fail(line.size() + 1, "the end" + what);
}

void PlanLines::failAtWord(std::size_t index, const std::string& what) const {
    if (!hasWord(index))
        fail(line.size() + 1, "the end of the line" + what);
    fail(words[index].column, quoted(words[index].text) + what);
}

} // namespace drench::arena
