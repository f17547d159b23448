#include "game/Settings.h"

#include "client/Records.h"
#include "game/Text.h"

#include <algorithm>

namespace drench::game {

namespace {

struct Clamp {
    void operator()(const char*, const char*, bool&) const {}
    void operator()(const char*, const char*, Picture&, const auto&) const {}

    template<class Number>
    void operator()(const char*, const char*, Number& value, Limits<Number> limits) const {
        value = value >= limits.least ? std::min(value, limits.most) : limits.least;
    }
};

bool isAddress(std::string_view text) {
    return !text.empty() && text.size() <= longestAddress &&
           std::all_of(text.begin(), text.end(),
                       [](char sign) { return sign > ' ' && sign <= '~'; });
}

} // namespace

void clamp(Settings& settings) {
    visitValues(settings, Clamp());
    if (settings.frameLimit > 0)
        settings.frameLimit = std::max(settings.frameLimit, leastFrameLimit);
    settings.name = wholeCharacters(drawable(settings.name), client::longestName);
    std::erase_if(settings.rooms, [](const std::string& room) { return !isAddress(room); });
    if (settings.rooms.size() > mostRooms)
        settings.rooms.resize(mostRooms);
}

void rememberRoom(Settings& settings, std::string_view address) {
    if (!isAddress(address))
        return;
    std::erase(settings.rooms, address);
    settings.rooms.emplace(settings.rooms.begin(), address);
    if (settings.rooms.size() > mostRooms)
        settings.rooms.pop_back();
}

} // namespace drench::game
