#include "game/WatchKeys.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace drench::game {

namespace {

constexpr std::pair<std::string_view, WatchCommand> commands[] = {
    {"Space", WatchCommand::pause},        {"ArrowLeft", WatchCommand::back},
    {"ArrowRight", WatchCommand::ahead},   {"Home", WatchCommand::toBegin},
    {"End", WatchCommand::toEnd},          {"KeyB", WatchCommand::lastSoaking},
    {"KeyN", WatchCommand::nextSoaking},   {"ArrowDown", WatchCommand::slower},
    {"ArrowUp", WatchCommand::faster},     {"KeyV", WatchCommand::nextView},
    {"Digit1", WatchCommand::firstPlayer}, {"Digit2", WatchCommand::secondPlayer},
    {"Digit3", WatchCommand::thirdPlayer}, {"Digit4", WatchCommand::fourthPlayer},
};

/// A key of a flight and where it leads, as in Spectator::fly().
struct FlightKey {
    std::string_view name;
    glm::vec3 way;
};

constexpr FlightKey flightKeys[] = {
    {"KeyW", {0.0f, 0.0f, 1.0f}}, {"KeyS", {0.0f, 0.0f, -1.0f}}, {"KeyA", {-1.0f, 0.0f, 0.0f}},
    {"KeyD", {1.0f, 0.0f, 0.0f}}, {"KeyE", {0.0f, 1.0f, 0.0f}},  {"KeyQ", {0.0f, -1.0f, 0.0f}},
};

constexpr std::string_view hurry = "ShiftLeft";
constexpr float hurried = 3.0f;

} // namespace

std::optional<WatchCommand> watchCommandOf(Input input) {
    const auto* const found =
        std::find_if(std::begin(commands), std::end(commands),
                     [&](const auto& each) { return inputNamed(each.first) == input; });
    return found == std::end(commands) ? std::nullopt : std::optional(found->second);
}

void FlightKeys::press(Input input, bool down) {
    std::erase(held_, input);
    if (down)
        held_.push_back(input);
}

glm::vec3 FlightKeys::way() const {
    const auto holds = [&](std::string_view name) {
        return std::any_of(held_.begin(), held_.end(),
                           [&](const Input& input) { return inputName(input) == name; });
    };
    glm::vec3 way(0.0f);
    for (const FlightKey& key : flightKeys) {
        if (holds(key.name))
            way += key.way;
    }
    return holds(hurry) ? hurried * way : way;
}

} // namespace drench::game
