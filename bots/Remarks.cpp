#include "bots/Remarks.h"

#include <utility>

namespace drench::bots {

namespace {

const char* const triumphs[] = {"Splash!", "Got you", "Bullseye", "Mind the puddle", "One for me"};
const char* const complaints[] = {"Twice in a row!", "I am dripping", "Well aimed",
                                  "Towel, please"};
const char* const musings[] = {"Nice weather", "Anybody there?", "Who built this place?",
                               "It is quiet here", "My boots squelch"};

/// The least ticks between two remarks, and ticks of silence after which a player says something
/// anyway.
constexpr double shortestSilence = 1300.0;
constexpr double longestSilence = 3000.0;
constexpr double boredomFrom = 6000.0;
constexpr double boredomTo = 15000.0;

constexpr double triumphProbability = 0.12;
constexpr double complaintProbability = 0.35;

template<std::size_t Count>
const char* oneOf(const char* const (&texts)[Count], Chance& chance) {
    return texts[chance.below(static_cast<int>(Count))];
}

} // namespace

Remarks::Remarks(Chance chance)
    : chance_(chance), silentUntil_(static_cast<long>(shortestSilence)),
      boredAt_(static_cast<long>(chance_.between(boredomFrom, boredomTo))) {}

void Remarks::notePoints(std::int32_t points) {
    ++tick_;
    if (points > points_) {
        soakedInARow_ = 0;
        mayRemark(triumphProbability, oneOf(triumphs, chance_));
    } else if (points < points_ && ++soakedInARow_ == 2) {
        soakedInARow_ = 0;
        mayRemark(complaintProbability, oneOf(complaints, chance_));
    }
    points_ = points;
    if (tick_ >= boredAt_)
        mayRemark(1.0, oneOf(musings, chance_));
}

void Remarks::mayRemark(double probability, const char* text) {
    if (!chance_.happens(probability) || tick_ < silentUntil_)
        return;
    due_ = text;
    silentUntil_ = tick_ + static_cast<long>(chance_.between(shortestSilence, longestSilence));
    boredAt_ = tick_ + static_cast<long>(chance_.between(boredomFrom, boredomTo));
}

std::optional<std::string> Remarks::take() {
    return std::exchange(due_, std::nullopt);
}

} // namespace drench::bots
