// How bots play an arena, in figures: pace, where they are, how long lives last, and how long
// somebody lives who stands still. It takes minutes, so it is no test: drench-bot-figures ARENA
// [MATCHES].

#include "arena/ArenaFile.h"
#include "bots/Chart.h"
#include "tests/bots/BotMatch.h"
#include "tests/support/CapturedOutput.h"
#include "tests/support/Datagrams.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

using namespace drench;

namespace {

/// Two minutes at 16 ms a tick.
constexpr int twoMinutes = 7500;

constexpr int ninths = 9;

/// The ninth of the arena that a point lies in, three by three as seen from above.
std::size_t ninthOf(const MapManager& map, vec3 point) {
    const auto third = [](float along, float length) {
        return static_cast<std::size_t>(std::clamp(static_cast<int>(3.0f * along / length), 0, 2));
    };
    return 3 * third(point.z, map.length) + third(point.x, map.width);
}

/// Where the bots of matches are, for each ninth as a multiple of its share of standing places.
struct Presence {
    std::array<double, ninths> places{};
    std::array<double, ninths> ticks{};

    explicit Presence(const bots::Roadmap& roadmap) {
        for (const arena::StandingPlace& place : roadmap.reach.places)
            ++places[ninthOf(*roadmap.map, place.position)];
    }

    void print() const {
        double allPlaces = 0.0;
        double allTicks = 0.0;
        for (std::size_t i = 0; i < ninths; ++i) {
            allPlaces += places[i];
            allTicks += ticks[i];
        }
        std::puts("time in each ninth, by its share of standing places:");
        for (std::size_t i = 0; i < ninths; ++i)
            std::printf("%6.2f%s",
                        places[i] > 0 ? ticks[i] / allTicks * allPlaces / places[i] : 0.0,
                        i % 3 == 2 ? "\n" : "");
    }
};

void playMatches(const std::string& text, const bots::Roadmap& roadmap, double skill,
                 unsigned matches, bool withPresence) {
    Presence presence(roadmap);
    int soaks = 0;
    int lives = 0;
    int shortLives = 0;
    int longestStay = 0;
    for (unsigned seed = 1; seed <= matches; ++seed) {
        BotMatch match({text, roadmap, {skill, skill, skill, skill}, seed});
        for (int tick = 0; tick < twoMinutes; tick += 10) {
            match.play(10);
            for (const vec3 position : match.positions())
                ++presence.ticks[ninthOf(*roadmap.map, position)];
        }
        soaks += match.soaks();
        longestStay = std::max(longestStay, match.longestStay());
        for (const BotMatch::Score& score : match.scores()) {
            lives += score.lives;
            shortLives += score.shortLives;
        }
    }
    std::printf(
        "skill %.2f: %.1f soaks in two minutes, %.0f %% of lives within four seconds of the "
        "return, longest stay %.1f s\n",
        skill, static_cast<double>(soaks) / matches, 100.0 * shortLives / std::max(lives, 1),
        0.016 * longestStay);
    if (withPresence)
        presence.print();
}

/// How long somebody who stands still at a place lived, each time, up to two minutes.
std::vector<int> livesAt(const std::string& text, const bots::Roadmap& roadmap, int place,
                         unsigned tries) {
    std::vector<int> lives;
    for (unsigned seed = 1; seed <= tries; ++seed) {
        BotMatch match(
            {text, roadmap, {0.5, 0.5, 0.5}, 1000 * seed + static_cast<unsigned>(place)});
        UdpPeer peer;
        const char id = match.room().join("Stander", peer);
        const vec3 position = roadmap.place(place).position;
        const vec3 middle(roadmap.map->width / 2.0f, position.y, roadmap.map->length / 2.0f);
        vec3 view = middle - position;
        view.normalize();
        int tick = 0;
        do {
            if (tick % 100 == 0) {
                const CapturedOutput quiet;
                match.room().dispatch(keyDatagram(id, keyIndex::shoot, false), peer);
            }
            if (tick == 0)
                match.room().server.playerByID(id)->placeAt(position, position + view);
            match.play(5);
            peer.received();
            tick += 5;
        } while (tick < twoMinutes && match.room().server.playerByID(id)->alive());
        lives.push_back(tick);
    }
    std::sort(lives.begin(), lives.end());
    return lives;
}

/// So many places, each as far from those before as can be: corners come first.
std::vector<int> spreadPlaces(const bots::Roadmap& roadmap, std::size_t count) {
    const std::size_t all = roadmap.reach.places.size();
    std::vector<float> distance(all, 1e9f);
    std::vector<int> chosen{0};
    while (chosen.size() < std::min(count, all)) {
        const vec3 last = roadmap.place(chosen.back()).position;
        for (std::size_t i = 0; i < all; ++i)
            distance[i] = std::min(distance[i], (roadmap.reach.places[i].position - last).length());
        chosen.push_back(static_cast<int>(std::max_element(distance.begin(), distance.end()) -
                                          distance.begin()));
    }
    return chosen;
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 2 || argc > 5) {
        std::fprintf(stderr, "use: drench-bot-figures ARENA [MATCHES [PLACES [TRIES]]]\n");
        return 2;
    }
    const auto number = [&](int index, int otherwise) {
        return argc > index ? std::max(std::atoi(argv[index]), 0) : otherwise;
    };
    arena::ArenaFile arena = arena::readWholeArena(argv[1]);
    MapManager& map = arena.text.map;
    const bots::Roadmap roadmap = bots::chart(map);
    const std::string text = arena::writeMapText(map);
    const auto matches = static_cast<unsigned>(number(2, 20));
    for (const double skill : {0.0, 0.25, 0.5, 0.7, 1.0}) {
        playMatches(text, roadmap, skill, matches, skill == 0.5 || skill == 0.7);
        std::fflush(stdout);
    }

    const auto tries = static_cast<unsigned>(number(4, 5));
    std::vector<int> medians;
    int worst = 0;
    int outlived = 0;
    for (const int place : spreadPlaces(roadmap, static_cast<std::size_t>(number(3, 40)))) {
        const std::vector<int> lives = livesAt(text, roadmap, place, tries);
        const int median = lives[lives.size() / 2];
        medians.push_back(median);
        worst = std::max(worst, median);
        outlived += median >= twoMinutes;
        if (median >= twoMinutes * 3 / 4) {
            const arena::CellIndex& feet = roadmap.place(place).feet;
            std::printf("stood at cell %d, %d, %d for %.0f s in the median\n", feet.column,
                        feet.row, feet.depth, 0.016 * median);
        }
    }
    std::sort(medians.begin(), medians.end());
    if (!medians.empty())
        std::printf(
            "%zu standers among three of skill 0.5: median %.0f s, longest median %.0f s, %d "
            "outlived two minutes\n",
            medians.size(), 0.016 * medians[medians.size() / 2], 0.016 * worst, outlived);
}
