// Whom a shot meets that is aimed exactly at the middle of the body drawn: with the others drawn
// behind the newest snapshot, as the window does by itself, and where the shot will meet them, as
// it does when asked. Four bots play without a line; what a player at the end of one would be shown
// is worked out from their states. drench-lead-figures ARENA [TICKS].

#include "arena/ArenaFile.h"
#include "arena/Rays.h"
#include "bots/Chart.h"
#include "client/Interpolation.h"
#include "client/Records.h"
#include "src/Collisions.h"
#include "tests/bots/BotMatch.h"
#include "tests/support/CapturedOutput.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <vector>

using namespace drench;

namespace {

constexpr double period = 16.4;

/// World units; hardly anybody fires farther.
constexpr float range = 1280.0f;

std::vector<UpdateMessage> playedStates(const std::string& text, const bots::Roadmap& roadmap,
                                        int ticks) {
    const CapturedOutput quiet;
    BotMatch match({text, roadmap, {0.7, 0.7, 0.7, 0.7}, 1});
    std::vector<UpdateMessage> states;
    for (int tick = 0; tick < ticks; ++tick) {
        match.play(1);
        UpdateMessage state;
        for (Player& player : match.room().server.players)
            state.add(player.getPlayerUpdate());
        states.push_back(state);
    }
    return states;
}

client::Time momentOf(double tick) {
    return client::Time() + std::chrono::duration_cast<client::Clock::duration>(
                                std::chrono::duration<double, std::milli>(tick * period));
}

struct Hits {
    int shots = 0;
    int hits = 0;
};

/// Each tick everybody fires at everybody in sight.
Hits shareOfHits(MapManager& map, const std::vector<UpdateMessage>& states, double roundTrip,
                 bool ahead) {
    const arena::Grid grid = arena::gridOf(map);
    client::Interpolation others(map);
    Hits result;
    const double ticksOnTheWay = roundTrip / period;
    std::size_t taken = 0;
    for (std::size_t acts = 64; acts < states.size(); ++acts) {
        const double sent = static_cast<double>(acts) - ticksOnTheWay;
        for (; static_cast<double>(taken) <= sent; ++taken)
            others.take(states[taken], static_cast<std::int64_t>(taken), momentOf(sent));
        const double shown =
            ahead ? static_cast<double>(acts) : sent - client::interpolationDelay(0.0, 0.0, period);
        const std::vector<PlayerUpdate> drawn = others.at(shown, momentOf(sent));
        for (const PlayerUpdate& shooter : states[acts].updates) {
            for (const PlayerUpdate& target : drawn) {
                const PlayerUpdate* const truth = client::playerWith(states[acts], target.id);
                if (!truth || target.id == shooter.id || client::isSoaked(shooter) ||
                    client::isSoaked(target) || client::isSoaked(*truth))
                    continue;
                vec3 way = target.position - shooter.position;
                const auto wall = arena::trace(grid, arena::rayAlong(shooter.position, way));
                if (way.length() > range || (wall && wall->distance < 1.0))
                    continue;
                way.normalize();
                const Box body(truth->position, Player::bodySize);
                vec3 ignored;
                ++result.shots;
                result.hits += Line_AABB(shooter.position, shooter.position + way * (2.0f * range),
                                         body.min, body.max, ignored);
            }
        }
    }
    return result;
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 2 || argc > 3) {
        std::fprintf(stderr, "use: drench-lead-figures ARENA [TICKS]\n");
        return 2;
    }
    const int ticks = argc > 2 ? std::max(std::atoi(argv[2]), 100) : 20'000;
    arena::ArenaFile arena = arena::readWholeArena(argv[1]);
    const bots::Roadmap roadmap = bots::chart(arena.text.map);
    const std::vector<UpdateMessage> states =
        playedStates(arena::writeMapText(arena.text.map), roadmap, ticks);
    std::printf("round trip   shots   behind   ahead\n");
    for (const double roundTrip : {0.0, 40.0, 80.0, 160.0}) {
        const Hits behind = shareOfHits(arena.text.map, states, roundTrip, false);
        const Hits ahead = shareOfHits(arena.text.map, states, roundTrip, true);
        std::printf("%7.0f ms %7d   %5.1f %%  %5.1f %%\n", roundTrip, behind.shots,
                    100.0 * behind.hits / behind.shots, 100.0 * ahead.hits / ahead.shots);
    }
    return 0;
}
