// Any bytes as a bot's script.

#include "bots/Script.h"
#include "src/Messages.h"
#include "tests/fuzz/InputErrors.h"
#include "tests/fuzz/Require.h"

#include <cstdint>
#include <string>
#include <vector>

using namespace drench;

namespace {

void requirePlace(const std::string& text, std::string_view words) {
    requireOneLine(words);
    const auto line = takeNumber(words, "script:");
    require(line && words.starts_with(": "), "an error begins with file and line");
    const auto there = lineOf(text, *line);
    require(there && !there->empty(), "an error names a line of the file");
}

std::string keyName(int key) {
    switch (key) {
    case keyIndex::forward:
        return "forward";
    case keyIndex::backward:
        return "backward";
    case keyIndex::left:
        return "left";
    case keyIndex::right:
        return "right";
    case keyIndex::shoot:
        return "fire";
    default:
        require(false, "a script holds and releases what keys it may");
        return "";
    }
}

std::string written(const bots::Action& action) {
    const std::string at = "at " + std::to_string(action.tick) + " ";
    switch (action.kind) {
    case bots::Action::Kind::hold:
        return at + "hold " + keyName(action.key);
    case bots::Action::Kind::release:
        return at + "release " + keyName(action.key);
    case bots::Action::Kind::jump:
        return at + "jump";
    case bots::Action::Kind::turn:
        return at + "turn " + std::to_string(action.dx) + " " + std::to_string(action.dy);
    case bots::Action::Kind::say:
        return at + "say " + action.text;
    case bots::Action::Kind::leave:
        return at + "leave";
    }
    require(false, "an action is one of those in the list");
    return "";
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    std::vector<bots::Action> script;
    try {
        script = bots::readScript(text, "script");
    } catch (const InputError& error) {
        requirePlace(text, error.what());
        return 0;
    }
    std::string again;
    for (std::size_t i = 0; i < script.size(); ++i) {
        const bots::Action& action = script[i];
        require(action.tick >= 0 && (i == 0 || script[i - 1].tick <= action.tick),
                "ticks do not decrease");
        require((action.kind == bots::Action::Kind::leave) <= (i + 1 == script.size()),
                "nothing follows leaving");
        require((action.kind == bots::Action::Kind::say) == !action.text.empty() &&
                    action.text.size() <= sizeof TalkMessage::text,
                "what is said has 1 to 30 bytes");
        again += written(action) + "\n";
    }
    require(bots::readScript(again, "again") == script, "actions survive being written and read");
    return 0;
}
