#include "arena/Reach.h"

#include "arena/Map.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <initializer_list>
#include <unordered_map>
#include <unordered_set>
#include <utility>

namespace drench::arena {

namespace {

/// A floor is looked for this far below the feet: landing may leave a body hovering by less.
constexpr float feetTolerance = 0.5f;

/// Directions to move along: on foot all are tried, in flight every second one.
constexpr int headings = 16;

/// On foot, states are taken for one when they lie in the same fifth of a cube each way: whoever is
/// in the middle one fits through a gap one cube wide.
constexpr float walkingParts = 5.0f;

/// In flight, where the keys may change every `flightTicks`, they may lie further apart.
constexpr float flightParts = 2.0f;
constexpr float flightHeightParts = 4.0f;
constexpr int flightTicks = 6;

/// Long enough for a step on foot to leave its part of a cube.
constexpr int strideTicks = 8;

/// Ticks after which every body has come to rest that ever will.
constexpr int longestSettling = 700;

/// How many states are expanded between two reports of progress.
constexpr std::size_t statesPerReport = 4096;

constexpr int inFlight = -1;

/// What the future of a moving body depends on, apart from its view and keys.
struct State {
    vec3 position;
    vec3 bodyMin;
    vec3 bodyMax;
    float verticalSpeed;
    bool inAir;

    /// The place it stands on, or inFlight.
    int place;
};

/// States with the same key are taken for one. Vertical speeds are multiples of gravity.
struct StateKey {
    int x;
    int y;
    int z;
    int gravities;
    bool inAir;
    bool standing;

    bool operator==(const StateKey&) const = default;
};

/// FNV-1a, a number at a time.
std::size_t hashOf(std::initializer_list<int> numbers) {
    std::uint64_t hash = 14695981039346656037u;
    for (const int number : numbers)
        hash = (hash ^ static_cast<std::uint32_t>(number)) * 1099511628211u;
    return static_cast<std::size_t>(hash ^ (hash >> 32));
}

struct HashKey {
    std::size_t operator()(const StateKey& key) const {
        return hashOf({key.x, key.y, key.z, key.gravities, key.inAir, key.standing});
    }
    std::size_t operator()(const CellIndex& cell) const {
        return hashOf({cell.column, cell.row, cell.depth});
    }
};

/// Which of the parts that each cube is cut into holds the coordinate.
int partIndex(float coordinate, float parts) {
    return static_cast<int>(std::floor(coordinate * parts / cubeEdge));
}

CellIndex cellOfFeet(const Player& player) {
    return {partIndex(player.position.x, 1.0f), partIndex(player.box.min.y + feetTolerance, 1.0f),
            partIndex(player.position.z, 1.0f)};
}

StateKey standingKey(const Player& player) {
    return {partIndex(player.position.x, walkingParts),
            cellOfFeet(player).row,
            partIndex(player.position.z, walkingParts),
            0,
            false,
            true};
}

StateKey flightKey(const Player& player) {
    const vec3 p = player.position;
    return {partIndex(p.x, flightParts),
            partIndex(p.y, flightHeightParts),
            partIndex(p.z, flightParts),
            static_cast<int>(static_cast<double>(player.verticalSpeed) / Player::gravity),
            player.inAir,
            false};
}

/// Whether the rounding of an undone step has left the body touching a cube, so that it hangs
/// there. No arena can rule that out; nobody is followed from there.
bool isStuck(const Player& player) {
    return player.mapMan->collides(player.box);
}

/// Turns the view left in a single mouse report.
void turnLeft(Player& player, double radians) {
    player.rotateView(-static_cast<int>(std::lround(radians * Player::countsPerRadian)), 0);
}

/// A player of this map who looks along a heading, level.
Player lookingAlong(MapManager& map, int heading, Pace pace) {
    Player player = bodyAt(map, vec3(0.0f), vec3(0.0f, 0.0f, 1.0f));
    const double quarter = std::acos(0.0);
    turnLeft(player, 4.0 * quarter * heading / headings);
    if (pace == Pace::flicked)
        turnLeft(player, quarter);
    else
        player.updateDirAndStrafe();
    return player;
}

/// The search: states found so far, and what follows from those that have been expanded.
struct Search {
    MapManager& map;
    std::array<Player, headings> views;

    /// Who runs moves so many headings left of its view.
    int runTurn;
    Reach reach;

    std::vector<State> states;
    std::unordered_map<StateKey, int, HashKey> stateOfKey;
    std::unordered_map<CellIndex, int, HashKey> placeOfCell;
    std::unordered_set<CellIndex, HashKey> departureCells;

    /// Those of state s stand from firstSuccessor[s] to firstSuccessor[s + 1].
    std::vector<int> successors;
    std::vector<std::size_t> firstSuccessor;
};

int placeOf(Search& search, const Player& player) {
    const CellIndex feet = cellOfFeet(player);
    const auto [entry, isNew] =
        search.placeOfCell.try_emplace(feet, static_cast<int>(search.reach.places.size()));
    if (isNew)
        search.reach.places.push_back({feet, player.position, {}});
    return entry->second;
}

State stateFrom(const Player& player, int place) {
    return {player.position,      player.box.min, player.box.max,
            player.verticalSpeed, player.inAir,   place};
}

/// What came of a tick. Who bumps has met a ceiling or has just run over an edge: not in the air
/// yet, and so free to jump.
enum class Outcome { flies, bumps, lands, isLost };

Outcome tick(Search& search, Player& player) {
    player.update(0.0f);
    ++search.reach.ticks;
    if (hasLeftTheWorld(player)) {
        const CellIndex cell = cellAt(search.map, player.position);
        if (search.departureCells.insert(cell).second)
            search.reach.departures.push_back(cell);
        return Outcome::isLost;
    }
    if (player.inAir)
        return Outcome::flies;
    if (isStuck(player))
        return Outcome::isLost;
    return player.velocity.y < 0.0f && isOverFloor(player) ? Outcome::lands : Outcome::bumps;
}

/// Lets who has landed fall what it may hover above the floor. Says whether it comes to stand.
bool settles(Search& search, Player& player) {
    for (bool& key : player.keys)
        key = false;
    for (int i = 0; i < longestSettling && !stands(player); ++i) {
        if (tick(search, player) == Outcome::isLost)
            return false;
    }
    return stands(player);
}

int stateInFlight(Search& search, const Player& player) {
    const auto [entry, isNew] =
        search.stateOfKey.try_emplace(flightKey(player), static_cast<int>(search.states.size()));
    if (isNew)
        search.states.push_back(stateFrom(player, inFlight));
    return entry->second;
}

/// The state that who has just landed settles in, or -1 when it is lost.
int stateOnFloor(Search& search, const Player& player) {
    const StateKey key = standingKey(player);
    if (const auto known = search.stateOfKey.find(key); known != search.stateOfKey.end())
        return known->second;
    Player settled = player;
    if (!settles(search, settled))
        return -1;
    const int state = static_cast<int>(search.states.size());
    search.stateOfKey.emplace(key, state);
    search.states.push_back(stateFrom(settled, placeOf(search, settled)));
    return state;
}

/// The player of a view, moved to where another body is and as fast as that falls.
Player inState(const Search& search, int heading, const State& state) {
    Player player = search.views[static_cast<std::size_t>(heading)];
    player.position = state.position;
    player.look = state.position + player.direction;
    player.box.centre = state.position;
    player.box.min = state.bodyMin;
    player.box.max = state.bodyMax;
    player.verticalSpeed = state.verticalSpeed;
    player.inAir = state.inAir;
    return player;
}

void addSuccessor(Search& search, int from, const Player& player, Outcome outcome) {
    if (outcome == Outcome::isLost)
        return;
    const int to =
        outcome == Outcome::lands ? stateOnFloor(search, player) : stateInFlight(search, player);
    if (to >= 0 && to != from)
        search.successors.push_back(to);
}

/// Presses the two keys that together move fastest.
void run(Player& player) {
    player.setKey(keyIndex::forward, true);
    player.setKey(keyIndex::left, true);
}

/// Adds what a flight leads to. Who touches a floor just to run over its edge might jump again at
/// once; it only falls on here, or flights would go on from place to place.
void endFlight(Search& search, int from, Player& player, Outcome outcome) {
    if (outcome == Outcome::bumps && player.velocity.y < 0.0f)
        player.inAir = true;
    addSuccessor(search, from, player, outcome);
}

/// Jumps from an edge and runs straight on until it lands. Steered flights are merged every few
/// ticks and so lose a little of their way; the widest gaps are crossed by these.
void leap(Search& search, int state, const Player& overEdge, int heading) {
    const int view = (heading + headings - search.runTurn) % headings;
    Player player = inState(search, view, stateFrom(overEdge, inFlight));
    run(player);
    player.setKey(keyIndex::jump, true);
    Outcome outcome = Outcome::flies;
    while (outcome == Outcome::flies)
        outcome = tick(search, player);
    endFlight(search, state, player, outcome);
}

/// Walks from a standing state along every heading until that makes another state, and leaps where
/// it leads over an edge.
void walkFrom(Search& search, int state) {
    for (int heading = 0; heading < headings; ++heading) {
        Player player = inState(search, heading, search.states[static_cast<std::size_t>(state)]);
        player.setKey(keyIndex::forward, true);
        Outcome outcome = Outcome::lands;
        for (int i = 0; i < strideTicks && outcome == Outcome::lands; ++i) {
            outcome = tick(search, player);
            if (outcome == Outcome::lands && stateOnFloor(search, player) != state)
                break;
        }
        addSuccessor(search, state, player, outcome);
        if (outcome == Outcome::bumps && heading % 2 == 0)
            leap(search, state, player, heading);
    }
}

/// Flies on from a state for some ticks, running along a view or straight up and down.
void fly(Search& search, int state, int heading, bool runs, bool jumps) {
    Player player = inState(search, heading, search.states[static_cast<std::size_t>(state)]);
    Outcome outcome = Outcome::flies;
    for (int i = 0; i < flightTicks; ++i) {
        if (runs)
            run(player);
        // Who jumps in every tick glides along a ceiling.
        if (jumps && (i == 0 || outcome == Outcome::bumps))
            player.setKey(keyIndex::jump, true);
        outcome = tick(search, player);
        if (outcome != Outcome::flies && !(jumps && outcome == Outcome::bumps))
            break;
    }
    endFlight(search, state, player, outcome);
}

void flyFrom(Search& search, int state) {
    // Copied, since new states may move the old ones.
    const State from = search.states[static_cast<std::size_t>(state)];
    for (const bool jumps : {false, true}) {
        const bool possible = jumps ? !from.inAir : from.place == inFlight;
        if (!possible)
            continue;
        fly(search, state, 0, false, jumps);
        for (int heading = 0; heading < headings; heading += 2)
            fly(search, state, heading, true, jumps);
    }
}

/// Fills each place's `next`: what its states lead to, through states in flight.
void connectPlaces(Search& search) {
    std::vector<StandingPlace>& places = search.reach.places;
    std::vector<std::vector<int>> statesOf(places.size());
    for (std::size_t state = 0; state < search.states.size(); ++state) {
        if (const int place = search.states[state].place; place >= 0)
            statesOf[static_cast<std::size_t>(place)].push_back(static_cast<int>(state));
    }

    // For each state the last place whose flights passed it.
    std::vector<int> passedFrom(search.states.size(), -1);
    for (std::size_t place = 0; place < places.size(); ++place) {
        const int self = static_cast<int>(place);
        std::vector<int>& open = statesOf[place];
        std::vector<int>& next = places[place].next;
        while (!open.empty()) {
            const auto state = static_cast<std::size_t>(open.back());
            open.pop_back();
            for (std::size_t i = search.firstSuccessor[state]; i < search.firstSuccessor[state + 1];
                 ++i) {
                const auto successor = static_cast<std::size_t>(search.successors[i]);
                if (passedFrom[successor] == self)
                    continue;
                passedFrom[successor] = self;
                if (const int landing = search.states[successor].place; landing < 0)
                    open.push_back(search.successors[i]);
                else if (landing != self)
                    next.push_back(landing);
            }
        }
        std::sort(next.begin(), next.end());
        next.erase(std::unique(next.begin(), next.end()), next.end());
    }
}

} // namespace

Reach explore(MapManager& map, const std::vector<Arrival>& arrivals, Pace pace,
              const std::function<void(std::size_t)>& progress) {
    Search search{map, {}, pace == Pace::flicked ? 0 : headings / 8, {}, {}, {}, {}, {}, {}, {}};
    for (int heading = 0; heading < headings; ++heading)
        search.views[static_cast<std::size_t>(heading)] = lookingAlong(map, heading, pace);

    for (const Arrival& arrival : arrivals) {
        if (arrival.startsFree())
            stateInFlight(search, arrival.spawned);
        search.reach.landings.push_back(arrival.comesToStand() ? placeOf(search, arrival.landed)
                                                               : -1);
    }
    // Expanding a state appends the new ones that it leads to.
    for (std::size_t i = 0; i < search.states.size(); ++i) {
        const int state = static_cast<int>(i);
        search.firstSuccessor.push_back(search.successors.size());
        if (search.states[i].place >= 0)
            walkFrom(search, state);
        flyFrom(search, state);
        if (progress && i % statesPerReport == 0)
            progress(search.reach.places.size());
    }
    search.firstSuccessor.push_back(search.successors.size());
    connectPlaces(search);
    return std::move(search.reach);
}

std::vector<CellIndex> walkableCells(const MapManager& map) {
    std::vector<CellIndex> walkable;
    constexpr vec3 toCentre(0.0f, 0.5f * (Player::bodySize.y + feetTolerance), 0.0f);
    for (int i = 0; i < map.columns; ++i) {
        for (int j = 1; j < map.rows; ++j) {
            for (int k = 0; k < map.depth; ++k) {
                if (map.cubeIsNull(i, j - 1, k))
                    continue;
                const Box& floor = cell(map, i, j - 1, k);
                if (!map.collides(Box(floor.top() + toCentre, Player::bodySize)))
                    walkable.push_back({i, j, k});
            }
        }
    }
    return walkable;
}

} // namespace drench::arena
