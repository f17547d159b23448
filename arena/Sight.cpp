#include "arena/Sight.h"

#include "src/Collisions.h"

#include <algorithm>
#include <cmath>

namespace drench::arena {

namespace {

/// The fineness of the points on bodies: seen from the spawns, and from the many other places.
constexpr int finePoints = 5;
constexpr int coarsePoints = 3;

/// The outermost points lie this far inside the body, as a share of its size.
constexpr float inset = 0.002f;

/// Directions in which shots are tried from each place.
constexpr int skyDirections = 64;

/// A player sees 90 degrees at once.
constexpr float cosineOfFieldOfView = 0.0f;

constexpr std::size_t placesPerReport = 64;

/// Lost shots are counted from at least this many places, evenly spread over the arena: their share
/// is known to a percent long before.
constexpr std::size_t placesToShootFrom = 2000;

/// Whether `holds` for any of the points spread over a body: `side` along each horizontal edge,
/// twice as many less one along each vertical edge.
template<typename Predicate>
bool anyPointOf(const Box& body, int pointsAcross, const Predicate& holds) {
    const int pointsUpward = 2 * pointsAcross - 1;
    const vec3 size = body.max - body.min;
    const auto share = [](int index, int count) {
        return inset +
               (1.0f - 2.0f * inset) * static_cast<float>(index) / static_cast<float>(count - 1);
    };
    for (int i = 0; i < pointsAcross; ++i) {
        for (int j = 0; j < pointsUpward; ++j) {
            for (int k = 0; k < pointsAcross; ++k) {
                const vec3 offset(size.x * share(i, pointsAcross), size.y * share(j, pointsUpward),
                                  size.z * share(k, pointsAcross));
                if (holds(body.min + offset))
                    return true;
            }
        }
    }
    return false;
}

bool isHidden(const Grid& grid, vec3 eye, vec3 point) {
    const std::optional<Hit> hit = trace(grid, rayAlong(eye, point - eye));
    return hit && hit->distance < 1.0;
}

/// Whether a shot meets no cube. A march into the open sky is the longest, so this is tested last.
bool isLost(const Grid& grid, vec3 shooter, vec3 direction) {
    return !trace(grid, rayAlong(shooter, direction)) ||
           isMiss(grid.map->pointOfIntersection(shooter, direction));
}

/// Directions spread evenly over the sphere along a spiral (a Fibonacci lattice), without those
/// that are too steep to look along.
std::vector<vec3> viewDirections() {
    const double goldenAngle = std::acos(-1.0) * (3.0 - std::sqrt(5.0));
    std::vector<vec3> directions;
    for (int i = 0; i < skyDirections; ++i) {
        const double y = 1.0 - (2.0 * i + 1.0) / skyDirections;
        const double horizontal = std::sqrt(1.0 - y * y);
        const double x = horizontal * std::cos(goldenAngle * i);
        const double z = horizontal * std::sin(goldenAngle * i);
        if (std::fabs(x) >= Player::steepView || std::fabs(z) >= Player::steepView)
            directions.emplace_back(static_cast<float>(x), static_cast<float>(y),
                                    static_cast<float>(z));
    }
    return directions;
}

/// Ordered pairs of poses that see each other at a moment, among the arrivals that get to it.
std::vector<std::pair<int, int>> pairsInSight(const Grid& grid,
                                              const std::vector<Arrival>& arrivals,
                                              Player Arrival::*moment,
                                              bool (Arrival::*getsThere)() const) {
    std::vector<std::pair<int, int>> pairs;
    for (const Arrival& from : arrivals) {
        for (const Arrival& to : arrivals) {
            if (from.pose != to.pose && (from.*getsThere)() && (to.*getsThere)() &&
                sees(grid, (from.*moment).position, (to.*moment).box))
                pairs.emplace_back(from.pose, to.pose);
        }
    }
    return pairs;
}

/// Whether both points can be seen at once, on one screen.
bool inOneView(vec3 eye, vec3 a, vec3 b) {
    vec3 toA = a - eye;
    vec3 toB = b - eye;
    toA.normalize();
    toB.normalize();
    return toA.dot(toB) >= cosineOfFieldOfView;
}

/// Whether two landed players can be soaked in one view from the middle of a body while no third
/// player can soak that body.
bool isSniperPlace(const Grid& grid, const std::vector<Arrival>& arrivals, const Box& body) {
    std::vector<const Arrival*> targets;
    for (const Arrival& arrival : arrivals) {
        if (arrival.comesToStand() && canSoak(grid, body.centre, arrival.landed.box))
            targets.push_back(&arrival);
    }
    if (targets.size() < 2)
        return false;
    std::vector<const Arrival*> shooters;
    for (const Arrival& arrival : arrivals) {
        if (arrival.comesToStand() && canSoak(grid, arrival.landed.position, body))
            shooters.push_back(&arrival);
    }
    for (const Arrival* one : targets) {
        for (const Arrival* other : targets) {
            const auto isThird = [&](const Arrival* shooter) {
                return shooter != one && shooter != other;
            };
            if (one != other &&
                inOneView(body.centre, one->landed.position, other->landed.position) &&
                std::none_of(shooters.begin(), shooters.end(), isThird))
                return true;
        }
    }
    return false;
}

} // namespace

bool sees(const Grid& grid, vec3 eye, const Box& body) {
    return anyPointOf(body, finePoints, [&](vec3 point) { return !isHidden(grid, eye, point); });
}

bool canSoak(const Grid& grid, vec3 shooter, const Box& body) {
    return anyPointOf(body, coarsePoints, [&](vec3 point) {
        // Shots march in small steps; a cube that hides the point is found much faster.
        if (isHidden(grid, shooter, point))
            return false;
        vec3 towards = point - shooter;
        towards.normalize();
        const vec3 hit = grid.map->pointOfIntersection(shooter, towards);
        vec3 entry;
        return !isMiss(hit) && Line_AABB(shooter, hit, body.min, body.max, entry);
    });
}

Sight lookAround(const MapManager& map, const std::vector<Arrival>& arrivals, const Reach& reach,
                 const std::function<void(std::size_t)>& progress) {
    const Grid grid = gridOf(map);
    Sight sight;
    sight.whenSpawned = pairsInSight(grid, arrivals, &Arrival::spawned, &Arrival::startsFree);
    sight.whenLanded = pairsInSight(grid, arrivals, &Arrival::landed, &Arrival::comesToStand);

    const std::vector<vec3> directions = viewDirections();
    const std::size_t placesPerShooter =
        std::max<std::size_t>(reach.places.size() / placesToShootFrom, 1);
    long shots = 0;
    long lost = 0;
    for (std::size_t i = 0; i < reach.places.size(); ++i) {
        const StandingPlace& place = reach.places[i];
        const Box body(place.position, Player::bodySize);
        if (isSniperPlace(grid, arrivals, body))
            sight.sniperPlaces.push_back(static_cast<int>(i));
        if (i % placesPerShooter == 0) {
            for (const vec3 direction : directions) {
                ++shots;
                lost += isLost(grid, place.position, direction);
            }
        }
        if (progress && i % placesPerReport == 0)
            progress(i);
    }
    sight.openSky = shots > 0 ? static_cast<double>(lost) / static_cast<double>(shots) : 0.0;
    return sight;
}

} // namespace drench::arena
