#include "bots/Script.h"

#include "arena/MapText.h"
#include "common/Files.h"
#include "common/NumberIn.h"
#include "src/Messages.h"

#include <array>
#include <optional>
#include <string_view>

namespace drench::bots {

namespace {

using arena::quoted;

constexpr std::size_t longestSaying = sizeof TalkMessage::text;

struct KeyName {
    std::string_view name;
    int key;
};

constexpr std::array<KeyName, 5> keyNames = {{{"forward", keyIndex::forward},
                                              {"backward", keyIndex::backward},
                                              {"left", keyIndex::left},
                                              {"right", keyIndex::right},
                                              {"fire", keyIndex::shoot}}};

/// The part of a line that has not been read yet.
class Line {
  public:
    Line(std::string_view text, std::string place) : rest_(text), place_(std::move(place)) {
        skipBlanks();
    }

    [[noreturn]] void fail(const std::string& words) const {
        throw InputError(place_ + ": " + words);
    }

    bool isEmpty() const { return rest_.empty(); }

    /// The next word; empty at the end of the line.
    std::string_view word() {
        const std::size_t end = std::min(rest_.find_first_of(blanks), rest_.size());
        const std::string_view word = rest_.substr(0, end);
        rest_.remove_prefix(end);
        skipBlanks();
        return word;
    }

    template<class Number>
    Number number(const std::string& name) {
        const std::string_view text = word();
        const std::optional<Number> value = numberIn<Number>(text);
        if (!value)
            fail(quoted(text) + " stands where " + name + " belongs, a whole number");
        return *value;
    }

    std::string_view rest() {
        const std::string_view text = rest_.substr(0, rest_.find_last_not_of(blanks) + 1);
        rest_ = {};
        return text;
    }

    void expectEnd() const {
        if (!isEmpty())
            fail(quoted(rest_) + " is left over at the end of the line");
    }

  private:
    static constexpr std::string_view blanks = " \t\r";

    void skipBlanks() {
        rest_.remove_prefix(std::min(rest_.find_first_not_of(blanks), rest_.size()));
    }

    std::string_view rest_;
    std::string place_;
};

int readKey(Line& line) {
    const std::string_view word = line.word();
    for (const KeyName& known : keyNames) {
        if (word == known.name)
            return known.key;
    }
    line.fail(quoted(word) + " is no key: forward, backward, left, right or fire");
}

Action readAction(Line& line) {
    Action action;
    if (const std::string_view at = line.word(); at != "at")
        line.fail(quoted(at) + " stands where a line begins: \"at <tick> ...\"");
    action.tick = line.number<std::int64_t>("the tick");
    if (action.tick < 0)
        line.fail("a tick is not negative");
    const std::string_view verb = line.word();
    if (verb == "hold" || verb == "release") {
        action.kind = verb == "hold" ? Action::Kind::hold : Action::Kind::release;
        action.key = readKey(line);
    } else if (verb == "jump") {
        action.kind = Action::Kind::jump;
    } else if (verb == "turn") {
        action.kind = Action::Kind::turn;
        action.dx = line.number<int>("dx");
        action.dy = line.number<int>("dy");
    } else if (verb == "say") {
        action.kind = Action::Kind::say;
        action.text = line.rest();
        if (action.text.empty() || action.text.size() > longestSaying)
            line.fail("what is said has 1 to " + std::to_string(longestSaying) + " bytes, not " +
                      std::to_string(action.text.size()));
    } else if (verb == "leave") {
        action.kind = Action::Kind::leave;
    } else {
        line.fail(quoted(verb) + " is nothing to do: hold, release, jump, turn, say or leave");
    }
    line.expectEnd();
    return action;
}

} // namespace

std::vector<Action> readScript(const std::string& text, const std::string& file) {
    std::vector<Action> script;
    std::string_view unread = text;
    for (int number = 1; !unread.empty(); ++number) {
        const std::size_t end = std::min(unread.find('\n'), unread.size());
        Line line(unread.substr(0, end), file + ':' + std::to_string(number));
        const bool isComment = unread.substr(0, end).starts_with('#');
        unread.remove_prefix(std::min(end + 1, unread.size()));
        if (line.isEmpty() || isComment)
            continue;
        const Action action = readAction(line);
        if (!script.empty() && script.back().kind == Action::Kind::leave)
            line.fail("nothing can be done after leaving");
        if (!script.empty() && action.tick < script.back().tick)
            line.fail("tick " + std::to_string(action.tick) + " comes after tick " +
                      std::to_string(script.back().tick));
        script.push_back(action);
    }
    return script;
}

} // namespace drench::bots
