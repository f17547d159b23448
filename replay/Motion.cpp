#include "replay/Motion.h"

#include "src/Collisions.h"
#include "src/Player.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace drench::replay {

namespace {

/// World units. The strafe vector is computed back from the step, which rounding limits.
constexpr double closeEnough = 0.01;

/// Radians by which one strafes beside the directions seen: several turns of a tick may go beyond
/// both.
constexpr double turnsBeyond = 0.3;

/// How much the angles between view and rotation may change in a tick by rounding; measured up to
/// 0.0004.
constexpr double closeView = 0.003;

/// A direction of the ground: x and z.
struct Level {
    double x = 0.0;
    double z = 0.0;

    double length() const { return std::hypot(x, z); }
};

Level levelOf(const vec3& v) {
    return {static_cast<double>(v.x), static_cast<double>(v.z)};
}

/// The left of a direction, which is up × direction.
Level leftOf(const vec3& direction) {
    const Level level = levelOf(direction);
    const double length = std::max(level.length(), 1e-9);
    return {level.z / length, -level.x / length};
}

double azimuth(const Level& level) {
    return std::atan2(level.x, level.z);
}

double turnBetween(double from, double to) {
    return std::remainder(to - from, 2.0 * M_PI);
}

/// Whether one can strafe this way, having turned from one direction to another.
bool canStrafe(const Level& left, const vec3& from, const vec3& to) {
    const double start = azimuth(leftOf(from));
    const double turn = turnBetween(start, azimuth(leftOf(to)));
    const double at = turnBetween(start, azimuth(left));
    return at >= std::min(turn, 0.0) - turnsBeyond && at <= std::max(turn, 0.0) + turnsBeyond;
}

/// The strafe vectors that can have led to a step, one of them for each axis that may have been
/// blocked.
std::vector<Level> strafesFor(const Level& moved, const Level& forward, double input,
                              const vec3& direction) {
    const double speed = input * static_cast<double>(Player::strafingSpeed);
    const Level left{(moved.x - forward.x) / speed, (moved.z - forward.z) / speed};
    std::vector<Level> strafes = {leftOf(direction)};
    if (std::fabs(left.length() - 1.0) < closeEnough)
        strafes.push_back({left.x / left.length(), left.z / left.length()});
    for (const double sign : {1.0, -1.0}) {
        if (std::fabs(left.x) <= 1.0)
            strafes.push_back({left.x, sign * std::sqrt(1.0 - left.x * left.x)});
        if (std::fabs(left.z) <= 1.0)
            strafes.push_back({sign * std::sqrt(1.0 - left.z * left.z), left.z});
    }
    return strafes;
}

/// The falls to try where nothing is known: the one that the step shows, standing, and for who
/// stays at its height, those that a cube may have ended.
std::vector<Unseen::Fall> anyFalls(const PlayerUpdate& before, const PlayerUpdate& seen) {
    const float fallen = seen.position.y - before.position.y;
    // Vertical speeds are multiples of gravity.
    const auto gravity = static_cast<float>(Player::gravity);
    const float speed = std::round(fallen / gravity) * gravity;
    std::vector<Unseen::Fall> falls = {{speed + gravity, true}, {0.0f, false}};
    if (std::fabs(static_cast<double>(fallen)) < closeEnough) {
        for (const float ended : {-4.0f, -8.0f, -12.0f, -16.0f, -20.0f, -26.0f, -32.0f, -40.0f,
                                  -50.0f, -60.0f, 2.0f, 4.0f, 8.0f, Player::takeOffSpeed})
            falls.push_back({ended, true});
    }
    return falls;
}

class Search {
  public:
    Search(MapManager& map, const PlayerUpdate& before, const Unseen& unseen,
           const PlayerUpdate& seen)
        : before_(before), unseen_(unseen), seen_(seen),
          start_(bodyAt(map, before.position, before.position + seen.direction)) {
        start_.direction = seen.direction;
    }

    Step run() {
        const std::vector<Unseen::Fall> falls =
            unseen_.falls.empty() ? anyFalls(before_, seen_) : unseen_.falls;
        for (const Unseen::Fall& fall : falls) {
            start_.verticalSpeed = fall.verticalSpeed;
            start_.inAir = fall.isInAir;
            tryInputs(false);
            if (!fall.isInAir)
                tryInputs(true);
        }
        if (found_.empty())
            return {std::nullopt, nearest_};
        Unseen unseen{found_, unseen_.turnedFrom};
        if (!isSame(before_.direction, seen_.direction))
            unseen.turnedFrom = before_.direction;
        return {unseen, 0.0};
    }

  private:
    /// All keys, up to those that lead there.
    void tryInputs(bool jumps) {
        const Level moved{levelOf(seen_.position).x - levelOf(before_.position).x,
                          levelOf(seen_.position).z - levelOf(before_.position).z};
        for (const double ahead : {0.0, 1.0, -1.0}) {
            if (tryKeys(jumps, ahead, 0.0, leftOf(seen_.direction)))
                return;
            const Level direction = levelOf(seen_.direction);
            const double speed = ahead * static_cast<double>(Player::walkingSpeed);
            const Level forward{direction.x * speed, direction.z * speed};
            for (const double left : {1.0, -1.0}) {
                for (const Level& strafe : strafesFor(moved, forward, left, seen_.direction)) {
                    if (isAllowed(strafe) && tryKeys(jumps, ahead, left, strafe))
                        return;
                }
            }
        }
    }

    bool isAllowed(const Level& strafe) const {
        const bool hasTurned = !isSame(before_.direction, seen_.direction);
        if (hasTurned)
            return canStrafe(strafe, before_.direction, seen_.direction);
        return !unseen_.turnedFrom || canStrafe(strafe, *unseen_.turnedFrom, seen_.direction);
    }

    bool tryKeys(bool jumps, double ahead, double left, const Level& strafe) {
        Player player = start_;
        player.strafeVector =
            vec3(static_cast<float>(strafe.x), 0.0f, static_cast<float>(strafe.z));
        player.setKey(keyIndex::jump, jumps);
        player.setKey(keyIndex::forward, ahead > 0.0);
        player.setKey(keyIndex::backward, ahead < 0.0);
        player.setKey(keyIndex::left, left > 0.0);
        player.setKey(keyIndex::right, left < 0.0);
        player.update(0.0f);
        const auto off = static_cast<double>((player.position - seen_.position).length());
        nearest_ = std::min(nearest_, off);
        // Also false for NaN.
        if (!(off < closeEnough))
            return false;
        const Unseen::Fall fall{player.verticalSpeed, player.inAir};
        if (std::find(found_.begin(), found_.end(), fall) == found_.end())
            found_.push_back(fall);
        return true;
    }

    const PlayerUpdate& before_;
    const Unseen& unseen_;
    const PlayerUpdate& seen_;
    Player start_;
    std::vector<Unseen::Fall> found_;
    double nearest_ = std::numeric_limits<double>::infinity();
};

/// The view as its own rotation has it: turns leave it as it is.
std::array<double, 3> viewInRotation(const PlayerUpdate& player) {
    const quat& q = player.rotation;
    const std::array<double, 4> r = {q.x, q.y, q.z, q.w};
    const double norm = r[0] * r[0] + r[1] * r[1] + r[2] * r[2] + r[3] * r[3];
    const std::array<double, 3> d = {player.direction.x, player.direction.y, player.direction.z};
    // d turned by the conjugate: d + 2 (c × (c × d + w d)), c = -(x, y, z).
    const auto cross = [](const std::array<double, 3>& a, const std::array<double, 3>& b) {
        return std::array<double, 3>{a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2],
                                     a[0] * b[1] - a[1] * b[0]};
    };
    const std::array<double, 3> c = {-r[0], -r[1], -r[2]};
    std::array<double, 3> inner = cross(c, d);
    for (std::size_t i = 0; i < 3; ++i)
        inner[i] += r[3] * d[i];
    const std::array<double, 3> outer = cross(c, inner);
    std::array<double, 3> turned = {};
    for (std::size_t i = 0; i < 3; ++i)
        turned[i] = d[i] + 2.0 * outer[i] / norm;
    return turned;
}

} // namespace

bool isSame(const vec3& a, const vec3& b) {
    return a.x == b.x && a.y == b.y && a.z == b.z;
}

Step step(MapManager& map, const PlayerUpdate& before, const Unseen& unseen,
          const PlayerUpdate& seen) {
    return Search(map, before, unseen, seen).run();
}

bool canBeThere(const MapManager& map, const PlayerUpdate& before, const Unseen& unseen,
                const PlayerUpdate& seen, int ticks) {
    const double time = ticks;
    const vec3 moved = seen.position - before.position;
    const double farthest =
        time * static_cast<double>(Player::walkingSpeed + Player::strafingSpeed) + closeEnough;
    if (!(levelOf(moved).length() <= farthest))
        return false;
    // Jumping from the next tick on rises most; of falls, the fastest one counts.
    const double rise = time * static_cast<double>(Player::takeOffSpeed);
    double speed = unseen.falls.empty() ? -std::numeric_limits<double>::infinity() : 0.0;
    for (const Unseen::Fall& fall : unseen.falls)
        speed = std::min(speed, static_cast<double>(fall.verticalSpeed));
    const double fall = time * speed - Player::gravity * time * (time + 1.0) / 2.0;
    const auto up = static_cast<double>(moved.y);
    // A body that touches a cube from outside may lie within it by rounding.
    const vec3 margin(2.0f, 2.0f, 2.0f);
    return up <= rise + closeEnough && up >= fall - closeEnough &&
           !map.collides(Box(seen.position, Player::bodySize - margin));
}

const char* wrongView(const PlayerUpdate& before, const PlayerUpdate& seen) {
    const auto length = static_cast<double>(seen.direction.length());
    if (!(std::fabs(length - 1.0) < closeView))
        return "its direction has another length than 1";
    const double steep = Player::steepView - closeView;
    if (std::fabs(static_cast<double>(seen.direction.x)) < steep &&
        std::fabs(static_cast<double>(seen.direction.z)) < steep)
        return "its view is steeper than any";
    const std::array<double, 3> from = viewInRotation(before);
    const std::array<double, 3> to = viewInRotation(seen);
    const double change = std::hypot(to[0] - from[0], to[1] - from[1], to[2] - from[2]);
    if (!(change < closeView))
        return "its rotation does not turn with its direction";
    return "";
}

bool isAtSpawn(const PlayerUpdate& seen) {
    for (int pose = 0; pose < Player::spawnPoseCount; ++pose) {
        Player player('0', nullptr, 0.0f, pose);
        const PlayerUpdate spawned = player.getPlayerUpdate();
        if (isSame(spawned.position, seen.position) && isSame(spawned.direction, seen.direction))
            return true;
    }
    return false;
}

} // namespace drench::replay
