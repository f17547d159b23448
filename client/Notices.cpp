#include "client/Notices.h"

#include "client/Records.h"

#include <cstddef>
#include <optional>
#include <string>
#include <utility>

namespace drench::client {

namespace {

constexpr std::size_t longestText = sizeof(TalkMessage::text);

std::optional<std::string> nameBefore(std::string_view text, std::string_view ending) {
    if (!text.ends_with(ending) || text.size() - ending.size() > longestName)
        return std::nullopt;
    return std::string(text.substr(0, text.size() - ending.size()));
}

std::optional<Soaking> parseSoaking(std::string_view text) {
    constexpr std::string_view verb = " soaked ";
    // Names may hold the verb too: try each place that leaves a name before it.
    for (std::size_t at = text.find(verb); at <= longestName; at = text.find(verb, at + 1)) {
        std::string_view victim = text.substr(at + verb.size());
        if (victim.ends_with('!'))
            victim.remove_suffix(1);
        else if (text.size() < longestText)
            continue;
        if (victim.size() <= longestName)
            return Soaking{std::string(text.substr(0, at)), std::string(victim)};
    }
    return std::nullopt;
}

} // namespace

Event parseNotice(std::string_view text) {
    if (std::optional<std::string> name = nameBefore(text, " joined"))
        return PlayerJoined{std::move(*name)};
    if (std::optional<std::string> name = nameBefore(text, " disconnected"))
        return PlayerLeft{std::move(*name)};
    if (std::optional<Soaking> soaking = parseSoaking(text))
        return std::move(*soaking);
    return Notice{std::string(text)};
}

Event wordsOf(const TalkMessage& talk) {
    const std::string_view text = untilZero({talk.text, sizeof talk.text});
    if (talk.id == serverSpeaker)
        return parseNotice(text);
    return Chat{talk.id, std::string(text)};
}

} // namespace drench::client
