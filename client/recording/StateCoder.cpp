#include "client/recording/StateCoder.h"

#include "src/Quaternion.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdlib>
#include <cstring>

namespace drench::client {

namespace {

// Where a player's floats stand.
constexpr std::size_t rotationAt = 0;
constexpr std::size_t positionAt = 4;
constexpr std::size_t directionAt = 7;

// The movement as the format has it, in world units per tick.
constexpr float walkingSpeed = 6.0f;
constexpr float takeOffSpeed = 12.0f;
constexpr float gravity = 0.5f;
constexpr double countsPerRadian = 360.0;

/// The most counts of a turn; the series below is exact enough up to there.
constexpr int mostCounts = 1000;

/// Beyond this, and with NaN, nothing is predicted: no sum may become infinite.
constexpr float largestTame = 1e6f;

// A step is one of these for y, one of four for the axes that are blocked, and one of nine for the
// keys, or none at all.
enum Vertical : std::uint8_t { stays, falls, takesOff, verticals };
constexpr std::uint8_t blockings = 4;
constexpr std::uint8_t keyChoices = 9;
constexpr std::uint8_t noMove = verticals * blockings * keyChoices;

constexpr std::uint8_t movesOf(int keys, int blocked, int vertical) {
    return static_cast<std::uint8_t>((keys * blockings + blocked) * verticals + vertical);
}

/// Floats as integers in the same order, neighbours one apart.
std::int64_t rank(float x) {
    const auto bits = std::bit_cast<std::int32_t>(x);
    return bits < 0 ? std::int64_t{INT32_MIN} - bits - 1 : bits;
}

float floatOfRank(std::int64_t rank) {
    const std::int64_t bits = rank < 0 ? std::int64_t{INT32_MIN} - rank - 1 : rank;
    return std::bit_cast<float>(static_cast<std::int32_t>(bits));
}

std::int64_t distance(float a, float b) {
    return std::abs(rank(a) - rank(b));
}

/// Whether floats of two players are the same, of zeros and NaN too.
template<class Floats>
bool sameBits(const Floats& a, const Floats& b, std::size_t from, std::size_t count) {
    for (std::size_t at = from; at < from + count; ++at) {
        if (rank(a[at]) != rank(b[at]))
            return false;
    }
    return true;
}

vec3 vectorAt(const float* floats) {
    return {floats[0], floats[1], floats[2]};
}

void store(float* floats, const vec3& vector) {
    floats[0] = vector.x;
    floats[1] = vector.y;
    floats[2] = vector.z;
}

/// The rotation by an angle of at most mostCounts, with its sine and cosine by their Taylor series.
quat rotationBy(float angle, vec3 axis) {
    const double half = static_cast<double>(static_cast<float>(static_cast<double>(angle) * 0.5));
    double sine = 0.0;
    double cosine = 0.0;
    double term = 1.0;
    constexpr int terms = 24;
    for (int i = 0; i < terms; i += 2) {
        cosine += term;
        term = term * half / (i + 1);
        sine += term;
        term = -(term * half) / (i + 2);
    }
    axis.normalize();
    const auto s = static_cast<float>(sine);
    return {axis.x * s, axis.y * s, axis.z * s, static_cast<float>(cosine)};
}

void rotate(float angle, const vec3& axis, vec3& direction, quat& rotation) {
    const quat turn = rotationBy(angle, axis);
    direction = turn * direction;
    rotation = turn * rotation;
}

float angleOf(std::int32_t counts) {
    return static_cast<float>(static_cast<double>(counts) / countsPerRadian);
}

/// The same as a step along one axis that is taken, or undone.
float moved(float from, float by, bool isUndone) {
    const float there = from + by;
    return isUndone ? there - by : there;
}

/// The horizontal speeds of the nine choices of keys: forward, backward or neither, times left,
/// right or neither.
vec3 speedOf(int keys, const vec3& direction, const vec3& strafe) {
    constexpr float inputs[] = {0.0f, 1.0f, -1.0f};
    const float forward = walkingSpeed * inputs[keys / 3];
    const float left = walkingSpeed * inputs[keys % 3];
    vec3 speed(0.0f, 0.0f, 0.0f);
    if (forward != 0.0f)
        speed += vec3(direction.x * forward, 0.0f, direction.z * forward);
    if (left != 0.0f)
        speed += vec3(strafe.x * left, 0.0f, strafe.z * left);
    return speed;
}

float fallOf(int vertical, float verticalSpeed) {
    return (vertical == takesOff ? takeOffSpeed : verticalSpeed) - gravity;
}

/// The first bytes of every state: its code and the padding behind.
constexpr std::string_view stateHead("u\0\0\0", 4);

} // namespace

bool isCodableState(std::string_view datagram) {
    return datagram.size() == sizeof(UpdateMessage) && datagram.starts_with(stateHead);
}

bool StateCoder::isTame(const Slot& slot) {
    const auto isSmall = [](float x) { return std::fabs(x) < largestTame; };
    return std::all_of(slot.floats.begin(), slot.floats.end(), isSmall) && isSmall(slot.look.x) &&
           isSmall(slot.look.y) && isSmall(slot.look.z) && isSmall(slot.verticalSpeed);
}

/// The turn that leads about from the slot's direction to the one seen.
StateCoder::Step StateCoder::guessTurn(const Slot& slot, const Floats& seen) {
    if (sameBits(slot.floats, seen, directionAt, 3) && sameBits(slot.floats, seen, rotationAt, 4))
        return {};
    const vec3 from = vectorAt(&slot.floats[directionAt]);
    const vec3 to = vectorAt(&seen[directionAt]);
    const auto counts = [](float low, float high) {
        const double turn = std::remainder(static_cast<double>(high) - static_cast<double>(low),
                                           2.0 * 3.14159265358979323846);
        return std::round(turn * countsPerRadian);
    };
    const double dx = counts(std::atan2(to.x, to.z), std::atan2(from.x, from.z));
    const double dy = counts(std::asin(to.y), std::asin(from.y));
    // Also false for NaN.
    if (!(std::fabs(dx) <= mostCounts && std::fabs(dy) <= mostCounts))
        return {};
    return {.hasTurned = true,
            .dx = static_cast<std::int32_t>(dx),
            .dy = static_cast<std::int32_t>(dy)};
}

/// Turns as Player::rotateView does, but also near the vertical, where that refuses to.
void StateCoder::turn(Slot& slot, const Step& step) {
    if (!isTame(slot) || std::abs(step.dx) > mostCounts || std::abs(step.dy) > mostCounts)
        return;
    Floats& floats = slot.floats;
    const vec3 up(0.0f, 1.0f, 0.0f);
    vec3 direction = slot.look - vectorAt(&floats[positionAt]);
    direction.normalize();
    slot.strafe = up.cross(direction);
    slot.strafe.normalize();
    quat rotation(floats[0], floats[1], floats[2], floats[3]);
    rotate(angleOf(step.dy), slot.strafe, direction, rotation);
    rotate(angleOf(-step.dx), up, direction, rotation);
    store(&floats[directionAt], direction);
    floats[0] = rotation.x;
    floats[1] = rotation.y;
    floats[2] = rotation.z;
    floats[3] = rotation.w;
}

/// The step that leads nearest to the position seen, by the direction as it is now.
std::uint8_t StateCoder::guessMoves(const Slot& slot, const Floats& seen) {
    const float* const from = &slot.floats[positionAt];
    const float* const to = &seen[positionAt];
    std::int64_t least = distance(from[0], to[0]) + distance(from[2], to[2]);
    const std::int64_t leastVertical = distance(from[1], to[1]);

    int vertical = stays;
    std::int64_t nearest = INT64_MAX;
    for (const int choice : {stays, falls, takesOff}) {
        const float y = moved(from[1], fallOf(choice, slot.verticalSpeed), choice == stays);
        if (distance(y, to[1]) < nearest) {
            nearest = distance(y, to[1]);
            vertical = choice;
        }
    }
    if (least == 0 && leastVertical == 0 && nearest != 0)
        return noMove;

    std::uint8_t moves = movesOf(0, 0, vertical);
    const vec3 direction = vectorAt(&slot.floats[directionAt]);
    for (int keys = 1; keys < keyChoices && least > 0; ++keys) {
        const vec3 speed = speedOf(keys, direction, slot.strafe);
        const std::int64_t x[] = {distance(moved(from[0], speed.x, false), to[0]),
                                  distance(moved(from[0], speed.x, true), to[0])};
        const std::int64_t z[] = {distance(moved(from[2], speed.z, false), to[2]),
                                  distance(moved(from[2], speed.z, true), to[2])};
        const int blocked = (x[1] < x[0] ? 1 : 0) + (z[1] < z[0] ? 2 : 0);
        const std::int64_t all = std::min(x[0], x[1]) + std::min(z[0], z[1]);
        if (all < least) {
            least = all;
            moves = movesOf(keys, blocked, vertical);
        }
    }
    return moves;
}

/// Moves as Player::update does, told which axes are blocked.
void StateCoder::move(Slot& slot, std::uint8_t moves) {
    if (moves >= noMove || !isTame(slot))
        return;
    const int vertical = moves % verticals;
    const int blocked = moves / verticals % blockings;
    const int keys = moves / verticals / blockings;
    float* const position = &slot.floats[positionAt];

    const float fall = fallOf(vertical, slot.verticalSpeed);
    position[1] = moved(position[1], fall, vertical == stays);
    slot.look.y = moved(slot.look.y, fall, vertical == stays);
    slot.verticalSpeed = vertical == stays ? 0.0f : fall;
    if (keys == 0)
        return;
    const vec3 speed = speedOf(keys, vectorAt(&slot.floats[directionAt]), slot.strafe);
    position[0] = moved(position[0], speed.x, (blocked & 1) != 0);
    slot.look.x = moved(slot.look.x, speed.x, (blocked & 1) != 0);
    position[2] = moved(position[2], speed.z, (blocked & 2) != 0);
    slot.look.z = moved(slot.look.z, speed.z, (blocked & 2) != 0);
}

/// Corrects what is not seen after a prediction that was wrong.
void StateCoder::takeOverPosition(Slot& slot, const Floats& before, const Floats& predicted) {
    if (sameBits(slot.floats, predicted, positionAt, 3))
        return;
    const vec3 now = vectorAt(&slot.floats[positionAt]);
    if (!sameBits(slot.floats, predicted, positionAt + 1, 1))
        slot.verticalSpeed = now.y - before[positionAt + 1];
    slot.look = now + vectorAt(&slot.floats[directionAt]);
    if (!isTame(slot)) {
        slot.verticalSpeed = 0.0f;
        slot.look = vec3();
    }
}

void StateCoder::encode(std::string_view state, StateColumns<std::string>& columns) {
    state.remove_prefix(stateHead.size());
    for (int i = 0; i < maxPlayers; ++i, state.remove_prefix(sizeof(PlayerUpdate))) {
        Slot& slot = slots_[static_cast<std::size_t>(i)];
        SlotColumns<std::string>& column = columns[static_cast<std::size_t>(i)];
        Floats seen;
        std::memcpy(seen.data(), state.data(), sizeof seen);
        const Floats before = slot.floats;
        const auto put = [&](std::size_t from, std::size_t count) {
            for (std::size_t at = from; at < from + count; ++at)
                putSigned(column.differences[at], rank(seen[at]) - rank(slot.floats[at]));
            std::copy_n(seen.begin() + from, count, slot.floats.begin() + from);
        };

        const Step step = guessTurn(slot, seen);
        if (step.hasTurned) {
            putSigned(column.counts, step.dx);
            putSigned(column.counts, step.dy);
            turn(slot, step);
        }
        put(rotationAt, 4);
        put(directionAt, 3);
        if (step.hasTurned)
            slot.look = vectorAt(&slot.floats[positionAt]) + vectorAt(&slot.floats[directionAt]);
        const std::uint8_t moves = isTame(slot) ? guessMoves(slot, seen) : noMove;
        putByte(column.steps, static_cast<std::uint8_t>(moves * 2 + (step.hasTurned ? 1 : 0)));
        move(slot, moves);
        const Floats predicted = slot.floats;
        put(positionAt, 3);
        takeOverPosition(slot, before, predicted);

        const char* const rest = state.data() + sizeof seen;
        const bool hasChanged = std::memcmp(rest, slot.rest.data(), playerRest) != 0;
        putByte(column.rests, hasChanged ? 1 : 0);
        for (std::size_t at = 0; hasChanged && at < playerRest; ++at)
            putByte(column.rests, static_cast<std::uint8_t>(rest[at] ^ slot.rest[at]));
        std::memcpy(slot.rest.data(), rest, playerRest);
    }
}

std::string StateCoder::decode(StateColumns<ColumnReader>& columns) {
    std::string state(stateHead);
    for (std::size_t i = 0; i < slots_.size(); ++i) {
        Slot& slot = slots_[i];
        SlotColumns<ColumnReader>& column = columns[i];
        const Floats before = slot.floats;
        const auto take = [&](std::size_t from, std::size_t count) {
            for (std::size_t at = from; at < from + count; ++at) {
                const std::int64_t difference = column.differences[at].signedNumber();
                const std::int64_t sum =
                    static_cast<std::int64_t>(static_cast<std::uint64_t>(rank(slot.floats[at])) +
                                              static_cast<std::uint64_t>(difference));
                if (sum < INT32_MIN || sum > INT32_MAX)
                    throw InputError("a float is none");
                slot.floats[at] = floatOfRank(sum);
            }
        };

        const std::uint8_t stepByte = column.steps.byte();
        const bool hasTurned = (stepByte & 1) != 0;
        if (hasTurned) {
            const std::int64_t dx = column.counts.signedNumber();
            const std::int64_t dy = column.counts.signedNumber();
            if (std::clamp<std::int64_t>(dx, -mostCounts, mostCounts) != dx ||
                std::clamp<std::int64_t>(dy, -mostCounts, mostCounts) != dy)
                throw InputError("a turn is too wide");
            turn(slot, {.hasTurned = true,
                        .dx = static_cast<std::int32_t>(dx),
                        .dy = static_cast<std::int32_t>(dy)});
        }
        take(rotationAt, 4);
        take(directionAt, 3);
        if (hasTurned)
            slot.look = vectorAt(&slot.floats[positionAt]) + vectorAt(&slot.floats[directionAt]);
        move(slot, static_cast<std::uint8_t>(stepByte / 2));
        const Floats predicted = slot.floats;
        take(positionAt, 3);
        takeOverPosition(slot, before, predicted);

        state.append(reinterpret_cast<const char*>(slot.floats.data()), sizeof slot.floats);
        if (column.rests.byte() != 0) {
            for (char& byte : slot.rest)
                byte = static_cast<char>(byte ^ static_cast<char>(column.rests.byte()));
        }
        state.append(slot.rest.data(), playerRest);
    }
    return state;
}

} // namespace drench::client
