#include "game/Standings.h"

#include <algorithm>

namespace drench::game {

std::vector<MatchPlayer> standings(const Match& match) {
    std::vector<MatchPlayer> players = match.players();
    std::stable_sort(
        players.begin(), players.end(),
        [](const MatchPlayer& a, const MatchPlayer& b) { return a.points > b.points; });
    return players;
}

} // namespace drench::game
