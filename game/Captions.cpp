#include "game/Captions.h"

#include "arena/Materials.h"

#include <algorithm>
#include <chrono>
#include <cmath>

namespace drench::game {

namespace {

constexpr std::chrono::milliseconds shownFor{1500};

/// World units, times the cue's loudness: steps are told from nine cubes away.
constexpr float audibleFrom = 1000.0f;

/// World units: what is nearer has no side.
constexpr float near = 75.0f;

std::string wordsFor(const Cue& cue) {
    switch (cue.sound) {
    case Sound::jet:
        return "water jet";
    case Sound::splash:
        return "splash";
    case Sound::step:
        return "steps on " + arena::materialName(cue.material);
    case Sound::jump:
        return "jump";
    case Sound::landing:
        return "thud";
    case Sound::soaking:
        return "cheer";
    case Sound::soaked:
        return "gurgle";
    case Sound::spawn:
        return "chime";
    case Sound::chat:
        break;
    }
    return "tick";
}

bool isOwnMovement(const Cue& cue) {
    return cue.isOwn && cue.sound != Sound::soaking && cue.sound != Sound::soaked &&
           cue.sound != Sound::spawn;
}

const char* sideOf(const Bearing& bearing) {
    if (std::fabs(bearing.right) > std::fabs(bearing.ahead))
        return bearing.right > 0.0f ? ", right" : ", left";
    return bearing.ahead >= 0.0f ? ", ahead" : ", behind";
}

} // namespace

std::string captionOf(const Cue& cue, const Listener& listener) {
    if (isOwnMovement(cue))
        return {};
    if (!cue.place)
        return wordsFor(cue);
    const Bearing bearing = bearingOf(listener, *cue.place);
    return wordsFor(cue) + (bearing.distance < near ? "" : sideOf(bearing));
}

void Captions::hear(std::span<const Cue> cues, const Listener& listener, client::Time now) {
    for (const Cue& cue : cues) {
        if (cue.place && bearingOf(listener, *cue.place).distance > audibleFrom * cue.loudness)
            continue;
        const std::string words = captionOf(cue, listener);
        if (words.empty())
            continue;
        const auto shown = std::find_if(lines_.begin(), lines_.end(),
                                        [&](const Line& line) { return line.words == words; });
        if (shown != lines_.end())
            shown->moment = now;
        else
            lines_.push_back({words, now});
    }
    while (lines_.size() > mostLines)
        lines_.erase(
            std::min_element(lines_.begin(), lines_.end(),
                             [](const Line& a, const Line& b) { return a.moment < b.moment; }));
}

const std::vector<Captions::Line>& Captions::linesAt(client::Time now) {
    std::erase_if(lines_, [&](const Line& line) { return now - line.moment > shownFor; });
    return lines_;
}

} // namespace drench::game
