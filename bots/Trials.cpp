#include "bots/Trials.h"

#include "bots/Legs.h"
#include "bots/Walker.h"
#include "src/Player.h"

#include <algorithm>
#include <cmath>
#include <deque>
#include <numbers>
#include <utility>

namespace drench::bots {

namespace {

std::size_t asIndex(int i) {
    return static_cast<std::size_t>(i);
}

/// The conditions of one trial of a road.
struct Trial {
    /// World units: the start beside the middle of the place.
    float x = 0.0f;
    float z = 0.0f;

    /// Radians: the direction of its view.
    double yaw = 0.0;
    double pitch = 0.0;

    /// Whether it may turn. In a fight a bot looks elsewhere, and walks with the keys that suit.
    bool turns = true;

    /// Ticks until its steps act, and the delay that the Walker gets: over a real line it is a
    /// guess.
    int delay = 0;
    int toldLag = 0;
};

/// The n-th of a sequence of trials that differ in all respects. Their starts follow the
/// quasirandom R2 sequence (Roberts, "The Unreasonable Effectiveness of Quasirandom Sequences",
/// 2018), so any number of them is spread evenly.
Trial trial(int n) {
    // World units: a body is 50 wide, so all of its middle stays over the cell.
    constexpr float farthest = 22.0f;
    // Radians; a steeper view walks more slowly, and bots avoid it.
    constexpr double steepest = 0.7;
    // Ticks. A line of 80 ms takes 5.
    constexpr int lags[] = {0, 3, 5, 2, 4};
    constexpr int errors[] = {0, 1, -1};
    const auto spread = [n](double step) {
        const double multiple = n * step;
        return 2.0 * (multiple - std::floor(multiple)) - 1.0;
    };
    const int delay = lags[asIndex(n) % std::size(lags)];
    return {farthest * static_cast<float>(spread(0.7548776662)),
            farthest * static_cast<float>(spread(0.5698402910)),
            std::numbers::pi * spread(0.6180339887),
            steepest * spread(0.4142135624),
            n % 2 == 0,
            delay,
            std::max(0, delay + errors[asIndex(n) % std::size(errors)])};
}

/// A player who stands at a place.
Player standingAt(MapManager& map, const arena::StandingPlace& place, const Trial& trial) {
    const vec3 centre = place.position + vec3(trial.x, 0.0f, trial.z);
    const double level = std::cos(trial.pitch);
    return bodyAt(map, centre,
                  centre + vec3(static_cast<float>(std::sin(trial.yaw) * level),
                                static_cast<float>(std::sin(trial.pitch)),
                                static_cast<float>(std::cos(trial.yaw) * level)));
}

/// Ticks that a Walker takes from one place to the next; -1 if it does not get there.
int ticksTaken(const Roadmap& roadmap, int from, int to, const Trial& trial) {
    // Ticks after which the walker has failed.
    constexpr int limit = 120;
    Player player = standingAt(*roadmap.map, roadmap.place(from), trial);
    if (roadmap.map->collides(player.box)) {
        // A wall may be beside the middle, but hardly on both sides.
        Trial nearer = trial;
        nearer.x *= 0.3f;
        nearer.z *= 0.3f;
        player = standingAt(*roadmap.map, roadmap.place(from), nearer);
    }
    Walker walker;
    walker.follow({from, to});
    std::deque<Controls> underway(asIndex(trial.delay));
    // The view at the time when the controls under way have acted.
    Player turned = player;
    for (int tick = 0; tick < limit; ++tick) {
        const Steps steps = walker.step(roadmap, player.position, trial.toldLag);
        if (walker.isDone())
            return walker.hasStrayed() ? -1 : tick;
        Controls controls;
        if (trial.turns) {
            controls = legsOnly(steps, turned.direction);
        } else {
            pressForHeading(controls, steps.heading, turned.direction);
            controls.jump = steps.jump;
        }
        turned.rotateView(controls.dx, controls.dy);
        underway.push_back(controls);
        player.apply(underway.front());
        underway.pop_front();
        player.update(0.0f);
    }
    return -1;
}

} // namespace

int pacedTicks(const Roadmap& roadmap, int from, int to) {
    const vec3 way = roadmap.place(to).position - roadmap.place(from).position;
    Trial paced;
    paced.yaw = std::atan2(way.x, way.z);
    return ticksTaken(roadmap, from, to, paced);
}

bool isSure(const Roadmap& roadmap, int from, int to, int trials) {
    for (int n = 1; n <= trials; ++n) {
        if (ticksTaken(roadmap, from, to, trial(n)) < 0)
            return false;
    }
    return true;
}

} // namespace drench::bots
