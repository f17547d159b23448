#include "bots/Eyes.h"

#include "bots/Sightline.h"

#include <algorithm>
#include <cmath>

namespace drench::bots {

namespace {

/// World units by which spawns may lie above a low world, at most.
constexpr float headroom = 2000.0f;

/// Tangents of half the field of view: 100 degrees wide, on a screen of 16:10.
constexpr float halfWidth = 1.1918f;
constexpr float halfHeight = 0.7448f;

/// Noticing varies by these factors, takes longer towards the edge of the field of view, and less
/// for somebody who was there a moment ago.
constexpr double quickest = 0.85;
constexpr double slowest = 1.3;
constexpr double longerAtEdge = 0.5;
constexpr double expected = 0.8;

/// A player is still noticed after up to this many ticks out of sight.
constexpr double lingering = 20.0;

/// Velocities are taken over this many ticks. A player that moves further in one was put elsewhere.
constexpr long velocitySpan = 4;
constexpr float longestStep = 60.0f;

struct Glimpse {
    bool seen = false;
    bool canBeSoaked = false;
    vec3 target;
};

/// The parts of the body at `body` that are in sight from `eye`. Of those that can be soaked, the
/// one nearest to the middle of them all is the target.
Glimpse glimpse(const arena::Grid& grid, vec3 eye, vec3 body) {
    std::array<vec3, 9> soakable;
    std::size_t count = 0;
    Glimpse result;
    vec3 middle;
    for (const vec3 part : bodyParts(eye, body)) {
        const Sightline line = sightline(grid, eye, body + part);
        result.seen |= line != Sightline::hidden;
        if (line == Sightline::beforeCube) {
            soakable[count++] = part;
            middle += part;
        }
    }
    if (count == 0)
        return result;
    result.canBeSoaked = true;
    middle = middle / static_cast<float>(count);
    result.target = *std::min_element(
        soakable.begin(), soakable.begin() + static_cast<std::ptrdiff_t>(count),
        [&](vec3 a, vec3 b) { return (a - middle).length() < (b - middle).length(); });
    return result;
}

/// The distance of a point from the middle of the view, as a share of the way to the edge; more
/// than 1 is outside.
double eccentricity(const PlayerUpdate& self, vec3 point) {
    const vec3 way = point - self.position;
    vec3 right = self.direction.cross(vec3(0.0f, 1.0f, 0.0f));
    right.normalize();
    const vec3 up = right.cross(self.direction);
    const float ahead = way.dot(self.direction);
    if (ahead <= 0.0f)
        return 2.0;
    return static_cast<double>(std::max(std::fabs(way.dot(right)) / (ahead * halfWidth),
                                        std::fabs(way.dot(up)) / (ahead * halfHeight)));
}

void noteReturn(Sighting& other, bool fires) {
    other.sinceReturn =
        fires ? Sighting::longReturned : std::min(other.sinceReturn + 1, Sighting::longReturned);
}

} // namespace

bool isInWorld(const MapManager& map, vec3 position) {
    return position.x >= 0.0f && position.x <= map.width && position.y >= 0.0f &&
           position.y <= map.height + headroom && position.z >= 0.0f && position.z <= map.length;
}

Eyes::Eyes(const Skill& skill, Chance chance) : skill_(skill), chance_(chance) {}

Eyes::Watched& Eyes::watched(char id) {
    const auto place =
        std::lower_bound(watched_.begin(), watched_.end(), id,
                         [](const Watched& other, char key) { return other.sighting.id < key; });
    if (place != watched_.end() && place->sighting.id == id)
        return *place;
    Watched added;
    added.sighting.id = id;
    return *watched_.insert(place, added);
}

void Eyes::keepOnly(const UpdateMessage& snapshot) {
    std::erase_if(watched_, [&](const Watched& other) {
        return std::none_of(
            std::begin(snapshot.updates), std::end(snapshot.updates),
            [&](const PlayerUpdate& update) { return update.id == other.sighting.id; });
    });
}

void Eyes::look(const arena::Grid& grid, const UpdateMessage& snapshot, const PlayerUpdate& self) {
    ++tick_;
    keepOnly(snapshot);
    for (const PlayerUpdate& update : snapshot.updates) {
        if (update.id == 0 || update.id == self.id)
            continue;
        Watched& other = watched(update.id);
        if (!isInWorld(*grid.map, update.position)) {
            // A player soaked in sight is seen to vanish and is forgotten; otherwise nothing is
            // known of the soaking.
            if (other.sighting.visible)
                other.remembered = false;
            other.sighting.sinceReturn = 0;
            miss(other);
            continue;
        }
        noteReturn(other.sighting, update.shooting);
        const double offside = eccentricity(self, update.position);
        const Glimpse seen =
            offside <= 1.0 ? glimpse(grid, self.position, update.position) : Glimpse{};
        if (seen.seen) {
            other.sighting.canBeSoaked = seen.canBeSoaked;
            other.sighting.target = seen.target;
            see(other, update, offside);
        } else {
            miss(other);
        }
    }
    listKnown();
}

void Eyes::close() {
    for (Watched& other : watched_) {
        other.exposure = 0.0;
        miss(other);
    }
    listKnown();
}

void Eyes::forget(char id) {
    for (Watched& other : watched_) {
        if (other.sighting.id == id && !other.sighting.visible)
            other.remembered = false;
    }
    listKnown();
}

void Eyes::listKnown() {
    known_.clear();
    for (const Watched& other : watched_) {
        if (other.remembered)
            known_.push_back(other.sighting);
    }
}

void Eyes::see(Watched& other, const PlayerUpdate& update, double offside) {
    if (other.sampleCount > 0 &&
        (update.position - other.samples[0].position).length() >
            longestStep * static_cast<float>(tick_ - other.samples[0].tick))
        other.sampleCount = 0;
    std::shift_right(other.samples.begin(), other.samples.end(), 1);
    other.samples[0] = {tick_, update.position};
    other.sampleCount = std::min(other.sampleCount + 1, static_cast<int>(other.samples.size()));

    if (other.exposure <= 0.0)
        other.needed = skill_.reaction * chance_.between(quickest, slowest) *
                       (1.0 + longerAtEdge * offside) * (other.remembered ? expected : 1.0);
    other.exposure = std::min(other.exposure + 1.0, other.needed + lingering);
    if (other.exposure < other.needed)
        return;

    // The latest movement taken in is a moment old; the player is assumed to have gone on alike.
    const auto first = other.samples.begin();
    const auto last = first + other.sampleCount;
    const long past = std::lround(skill_.perceptionDelay);
    auto taken = std::find_if(first, last, [&](const Sample& s) { return s.tick <= tick_ - past; });
    if (taken == last)
        --taken;
    auto before = std::find_if(
        taken, last, [&](const Sample& s) { return s.tick <= taken->tick - velocitySpan; });
    if (before == last)
        --before;
    Sighting& sighting = other.sighting;
    sighting.velocity = vec3();
    if (before != taken)
        sighting.velocity =
            (taken->position - before->position) / static_cast<float>(taken->tick - before->tick);
    sighting.position =
        taken->position + sighting.velocity * static_cast<float>(tick_ - taken->tick);
    sighting.direction = update.direction;
    sighting.visible = true;
    sighting.unseen = 0;
    other.remembered = true;
}

void Eyes::miss(Watched& other) {
    Sighting& sighting = other.sighting;
    other.exposure = std::max(other.exposure - 1.0, 0.0);
    if (other.exposure <= 0.0)
        other.sampleCount = 0;
    sighting.visible = false;
    sighting.canBeSoaked = false;
    ++sighting.unseen;
    if (sighting.unseen > skill_.memory)
        other.remembered = false;
}

} // namespace drench::bots
