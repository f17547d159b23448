#include "arena/Reach.h"

#include "arena/BodyStates.h"
#include "arena/Components.h"
#include "arena/Map.h"
#include "arena/Prospects.h"

#include <algorithm>
#include <cmath>
#include <unordered_set>
#include <utility>

namespace drench::arena {

namespace {

/// Ticks after which a flight may change its keys.
constexpr int flightTicks = 6;

/// Long enough for a step on foot to leave its part of a cube.
constexpr int strideTicks = 8;

/// Ticks after which every body is at rest that ever comes to rest.
constexpr int longestSettling = 700;

/// Leaps are aimed at floors within about 30 degrees of the way over the edge.
constexpr double cosineOfWidestLeap = 0.88;

/// Floors are labelled again after this many ticks: rarely enough to cost little beside them.
constexpr long ticksPerLabelling = 1'000'000;

/// States expanded between two reports of progress.
constexpr std::size_t statesPerReport = 4096;

/// The search: the states found so far, and the moves from those that have been expanded.
///
/// Walking is tried first, everywhere. Floors that walks, climbs and falls connect both ways get
/// one label. Flights cost most, and most lead nowhere new. Only those are followed that may end on
/// floors of several labels, on a floor that was not reached, or outside the world. The others
/// change neither the places reached nor the ways between them in the end. They could add one
/// thing, which is left out: a jump from a landing that hovers a little gains a tick or two of
/// flight.
struct Search {
    MapManager& map;
    Pace pace;
    std::size_t enoughDepartures;
    Prospects prospects;
    std::array<Player, headings> walks{};
    std::array<Player, headings> runs{};
    Reach reach{};

    std::vector<BodyState> states{};
    std::unordered_map<StateKey, int, HashOfState> stateOfKey{};
    std::unordered_map<CellIndex, int, HashOfCell> placeOfCell{};
    std::unordered_set<CellIndex, HashOfCell> departureCells{};

    /// Pairs of states: the first leads to the second.
    std::vector<std::pair<int, int>> moves{};

    /// Places from which the floors beside have been tried by a jump.
    std::vector<bool> hoppedFrom{};

    /// For each place known at the last labelling its label, and whether jumps from there lead to
    /// that label only.
    std::vector<int> labelOfPlace{};
    std::vector<bool> isSettled{};
    long ticksWhenLabelled = 0;
};

BodyState& stateAt(Search& search, int state) {
    return search.states[static_cast<std::size_t>(state)];
}

/// Whether the rounding of an undone step has left the body touching a cube, so that it hangs
/// there. No arena can rule that out; nothing is followed from there.
bool isStuck(const Player& player) {
    return player.mapMan->collides(player.box);
}

int placeOf(Search& search, const Player& player) {
    const CellIndex feet = cellOfFeet(player);
    const auto [entry, isNew] =
        search.placeOfCell.try_emplace(feet, static_cast<int>(search.reach.places.size()));
    if (isNew)
        search.reach.places.push_back({feet, player.position, {}});
    return entry->second;
}

/// The outcome of a tick. A body that bumps has met a ceiling or has just run over an edge: it is
/// not in the air yet, and so free to jump.
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

void releaseKeys(Player& player) {
    for (bool& key : player.keys)
        key = false;
}

/// Lets a landed body fall the rest if it hovers above the floor. Returns whether it comes to
/// stand.
bool settles(Search& search, Player& player) {
    releaseKeys(player);
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
        search.states.push_back(stateOf(player, inTheAir));
    return entry->second;
}

/// The state in which a body that has just landed settles, or -1 if it is lost.
int stateOnFloor(Search& search, const Player& player) {
    // A body that hovers high above the floor may have its feet in a row above its own.
    Player settled = player;
    if (-player.velocity.y >= search.prospects.climbingHover && !settles(search, settled))
        return -1;
    const StateKey key = standingKey(settled, isOpenFloor(search.prospects, cellOfFeet(settled)));
    if (const auto known = search.stateOfKey.find(key); known != search.stateOfKey.end())
        return known->second;
    if (!settles(search, settled))
        return -1;
    const int state = static_cast<int>(search.states.size());
    search.stateOfKey.emplace(key, state);
    search.states.push_back(stateOf(settled, placeOf(search, settled)));
    return state;
}

void addMove(Search& search, int from, int to) {
    if (to >= 0 && to != from)
        search.moves.emplace_back(from, to);
}

/// Notes the result of a move. A body stopped in a deep fall hovers high above the floor, and a
/// jump from there leads higher than one from the floor: such a jump is followed too.
void addMove(Search& search, int from, const Player& player, Outcome outcome) {
    if (outcome == Outcome::isLost)
        return;
    if (outcome == Outcome::lands)
        addMove(search, from, stateOnFloor(search, player));
    if (outcome != Outcome::lands || -player.velocity.y >= search.prospects.climbingHover)
        addMove(search, from, stateInFlight(search, player));
}

/// Ends a flight in a landing or in the air. A body that touches a floor just to run over its edge
/// might jump again at once. Here it only falls on; otherwise flights would go on from place to
/// place.
void endFlight(Search& search, int from, Player& player, Outcome outcome) {
    if (outcome == Outcome::bumps && player.velocity.y < 0.0f)
        player.inAir = true;
    addMove(search, from, player, outcome);
}

/// Lets a body fall from its present state until it lands.
void fall(Search& search, int from, Player player) {
    releaseKeys(player);
    Outcome outcome = Outcome::flies;
    while (outcome == Outcome::flies)
        outcome = tick(search, player);
    endFlight(search, from, player, outcome);
}

/// Jumps, runs towards a point until the body is above it, then falls.
void leapTo(Search& search, int from, const BodyState& start, vec3 goal) {
    const float step = search.prospects.runSpeed;
    const auto aimed = [&](const BodyState& body) {
        Player player =
            inState(runningAlong(search.map, yawTowards(body.position, goal), search.pace), body);
        run(player);
        return player;
    };
    Player player = aimed(start);
    player.setKey(keyIndex::jump, true);
    Outcome outcome = Outcome::flies;
    float left = levelDistance(player.position, goal);
    while (outcome == Outcome::flies) {
        const bool isThere = left < 0.5f * step;
        if (isThere)
            releaseKeys(player);
        const vec3 before = player.position;
        outcome = tick(search, player);
        left = levelDistance(player.position, goal);
        // A body that slides along a wall has to turn.
        const float moved = levelDistance(before, player.position);
        if (outcome == Outcome::flies && !isThere && moved < 0.9f * step)
            player = aimed(stateOf(player, inTheAir));
    }
    endFlight(search, from, player, outcome);
}

/// Walks from an open floor straight to the middles of the cells around it: nothing is in the way.
void walkOverOpenFloor(Search& search, int state) {
    const BodyState start = stateAt(search, state);
    const CellIndex feet = search.reach.places[static_cast<std::size_t>(start.place)].feet;
    for (int i = -1; i <= 1; ++i) {
        for (int k = -1; k <= 1; ++k) {
            if (i == 0 && k == 0)
                continue;
            const vec3 goal =
                carriedPoint(search.prospects, {feet.column + i, feet.row, feet.depth + k});
            Player player = inState(
                walkingAlong(search.map, yawTowards(start.position, goal), search.pace), start);
            player.setKey(keyIndex::forward, true);
            Outcome outcome = Outcome::lands;
            float left = levelDistance(player.position, goal);
            for (float step = 0.0f; left > 0.5f * step && outcome == Outcome::lands; left -= step) {
                const vec3 before = player.position;
                outcome = tick(search, player);
                step = levelDistance(before, player.position);
            }
            addMove(search, state, player, outcome);
        }
    }
}

/// Walks from a standing state along a heading until the body is in another state.
Outcome stride(Search& search, int state, int heading, Player& player) {
    player = inState(search.walks[static_cast<std::size_t>(heading)], stateAt(search, state));
    player.setKey(keyIndex::forward, true);
    const StateKey start = standingKey(player, false);
    Outcome outcome = Outcome::lands;
    for (int i = 0; i < strideTicks && outcome == Outcome::lands; ++i) {
        outcome = tick(search, player);
        if (outcome == Outcome::lands && standingKey(player, false) != start &&
            stateOnFloor(search, player) != state)
            break;
    }
    return outcome;
}

/// Jumps to the floors beside a place that are as high or higher, once for each place.
void hopFrom(Search& search, int state) {
    const BodyState start = stateAt(search, state);
    const auto place = static_cast<std::size_t>(start.place);
    search.hoppedFrom.resize(search.reach.places.size(), false);
    if (search.hoppedFrom[place])
        return;
    search.hoppedFrom[place] = true;
    const CellIndex feet = search.reach.places[place].feet;
    for (int i = -1; i <= 1; ++i) {
        for (int k = -1; k <= 1; ++k) {
            for (int row = feet.row; row <= feet.row + highestClimb; ++row) {
                const CellIndex goal = {feet.column + i, row, feet.depth + k};
                if ((i != 0 || k != 0) && mayStand(search.prospects, goal))
                    leapTo(search, state, start, carriedPoint(search.prospects, goal));
            }
        }
    }
}

/// Walks from a standing state along every heading, climbs the floors beside it, and falls if a way
/// leads over an edge.
void walkFrom(Search& search, int state) {
    if (isOpenFloor(
            search.prospects,
            search.reach.places[static_cast<std::size_t>(stateAt(search, state).place)].feet)) {
        walkOverOpenFloor(search, state);
        return;
    }
    for (int heading = 0; heading < headings; ++heading) {
        Player player;
        const Outcome outcome = stride(search, state, heading, player);
        const std::size_t known = search.states.size();
        addMove(search, state, player, outcome);
        if (outcome == Outcome::bumps && search.states.size() > known)
            fall(search, static_cast<int>(known), player);
    }
    hopFrom(search, state);
}

/// Flies on from a state for some ticks, running along a heading or straight up and down.
void fly(Search& search, int state, const Player& view, bool runs, bool jumps) {
    Player player = inState(view, stateAt(search, state));
    Outcome outcome = Outcome::flies;
    for (int i = 0; i < flightTicks; ++i) {
        if (runs)
            run(player);
        // A body that jumps in every tick glides along a ceiling.
        if (jumps && (i == 0 || outcome == Outcome::bumps))
            player.setKey(keyIndex::jump, true);
        outcome = tick(search, player);
        if (outcome != Outcome::flies && !(jumps && outcome == Outcome::bumps))
            break;
    }
    endFlight(search, state, player, outcome);
}

/// Flies on from a state, with a jump or without, along every second heading.
void flyFrom(Search& search, int state, bool jumps) {
    fly(search, state, search.walks[0], false, jumps);
    for (std::size_t heading = 0; heading < headings; heading += 2)
        fly(search, state, search.runs[heading], true, jumps);
}

/// Whether a floor was not reached, or has another label than a place.
bool isElsewhere(const Search& search, const CellIndex& feet, int place) {
    const auto known = search.placeOfCell.find(feet);
    if (known == search.placeOfCell.end())
        return true;
    const auto other = static_cast<std::size_t>(known->second);
    const auto own = static_cast<std::size_t>(place);
    return std::max(other, own) >= search.labelOfPlace.size() ||
           search.labelOfPlace[other] != search.labelOfPlace[own];
}

/// The floors elsewhere that a jump from a place might reach.
std::vector<CellIndex> floorsElsewhere(const Search& search, int place, float height) {
    std::vector<CellIndex> floors;
    const CellIndex feet = search.reach.places[static_cast<std::size_t>(place)].feet;
    for (int ring = 1; ring <= std::max(search.map.columns, search.map.depth); ++ring) {
        const int highest = highestRowAfterJump(search.prospects, height, ring);
        if (highest < 0)
            break;
        for (int i = -ring; i <= ring; ++i) {
            const int stride = std::abs(i) == ring ? 1 : 2 * ring;
            for (int k = -ring; k <= ring; k += stride) {
                for (int row = 1; row <= highest; ++row) {
                    const CellIndex floor = {feet.column + i, row, feet.depth + k};
                    if (mayStand(search.prospects, floor) && isElsewhere(search, floor, place))
                        floors.push_back(floor);
                }
            }
        }
    }
    return floors;
}

/// Leaps over every edge beside a standing state straight to the floors elsewhere that lie ahead:
/// steered flights are merged every few ticks and so lose a little of their way.
void leapFrom(Search& search, int state) {
    const BodyState start = stateAt(search, state);
    const std::vector<CellIndex> goals = floorsElsewhere(search, start.place, start.feet());
    if (goals.empty())
        return;
    for (int heading = 0; heading < headings; ++heading) {
        Player player;
        if (stride(search, state, heading, player) != Outcome::bumps)
            continue;
        const BodyState overEdge = stateOf(player, inTheAir);
        const double yaw = yawTowards(start.position, player.position);
        for (const CellIndex& goal : goals) {
            const vec3 point = carriedPoint(search.prospects, goal);
            const double turn = yawTowards(player.position, point) - yaw;
            if (std::cos(turn) > cosineOfWidestLeap)
                leapTo(search, state, overEdge, point);
        }
    }
}

/// Follows the flights that begin or go on in a state, unless they lead nowhere new.
void followFlights(Search& search, int state) {
    // Copied, since new states may move the old ones.
    const BodyState from = stateAt(search, state);
    if (from.place >= 0) {
        const auto place = static_cast<std::size_t>(from.place);
        if (place < search.isSettled.size() && search.isSettled[place])
            return;
        flyFrom(search, state, true);
        leapFrom(search, state);
        return;
    }
    const int column = search.map.getColumn(from.position.x);
    const int depth = search.map.getDepth(from.position.z);
    const int label =
        from.inAir ? inFlight(search.prospects, column, depth, from.feet(), from.verticalSpeed)
                   : afterJump(search.prospects, column, depth, from.feet());
    if (label >= 0) {
        fall(search, state, inState(search.walks[0], from));
        return;
    }
    flyFrom(search, state, false);
    if (!from.inAir)
        flyFrom(search, state, true);
}

/// Gives all floors that lead to each other the same label. Each place and each state in flight is
/// one node; all states that stand at a place belong to its node.
void labelFloors(Search& search) {
    const std::vector<StandingPlace>& places = search.reach.places;
    const auto nodeOf = [&](int state) {
        const int place = stateAt(search, state).place;
        return place >= 0 ? place : static_cast<int>(places.size()) + state;
    };
    std::vector<std::pair<int, int>> edges;
    edges.reserve(search.moves.size());
    for (const auto& [from, to] : search.moves)
        edges.emplace_back(nodeOf(from), nodeOf(to));
    search.labelOfPlace = strongComponents(digraph(places.size() + search.states.size(), edges));
    search.labelOfPlace.resize(places.size());

    std::vector<int> labelOfFloor;
    for (const CellIndex& floor : search.prospects.floors) {
        const auto known = search.placeOfCell.find(floor);
        labelOfFloor.push_back(known == search.placeOfCell.end()
                                   ? -1
                                   : search.labelOfPlace[static_cast<std::size_t>(known->second)]);
    }
    label(search.prospects, labelOfFloor);

    search.isSettled.clear();
    for (std::size_t place = 0; place < places.size(); ++place) {
        const CellIndex& feet = places[place].feet;
        const float height = places[place].position.y - 0.5f * Player::bodySize.y;
        search.isSettled.push_back(afterJump(search.prospects, feet.column, feet.depth, height) ==
                                   search.labelOfPlace[place]);
    }
    search.ticksWhenLabelled = search.reach.ticks;
}

/// Fills each place's `next`: the places that its states lead to, through states in flight.
void connectPlaces(Search& search) {
    std::vector<StandingPlace>& places = search.reach.places;
    std::vector<std::vector<int>> statesOf(places.size());
    for (std::size_t state = 0; state < search.states.size(); ++state) {
        if (const int place = search.states[state].place; place >= 0)
            statesOf[static_cast<std::size_t>(place)].push_back(static_cast<int>(state));
    }
    const Digraph graph = digraph(search.states.size(), search.moves);

    // For each state the last place whose flights passed it.
    std::vector<int> passedFrom(search.states.size(), -1);
    for (std::size_t place = 0; place < places.size(); ++place) {
        const int self = static_cast<int>(place);
        std::vector<int>& open = statesOf[place];
        std::vector<int>& next = places[place].next;
        while (!open.empty()) {
            const auto state = static_cast<std::size_t>(open.back());
            open.pop_back();
            for (std::size_t i = graph.first[state]; i < graph.first[state + 1]; ++i) {
                const auto successor = static_cast<std::size_t>(graph.targets[i]);
                if (passedFrom[successor] == self)
                    continue;
                passedFrom[successor] = self;
                if (const int landing = search.states[successor].place; landing < 0)
                    open.push_back(graph.targets[i]);
                else if (landing != self)
                    next.push_back(landing);
            }
        }
        std::sort(next.begin(), next.end());
        next.erase(std::unique(next.begin(), next.end()), next.end());
    }
}

/// Whether enough ways out of the world were found: more would add no insight.
bool hasEnough(const Search& search) {
    return search.reach.departures.size() >= search.enoughDepartures;
}

/// The cells of feet in which the search starts.
std::vector<CellIndex> startingCells(const std::vector<Arrival>& arrivals) {
    std::vector<CellIndex> cells;
    for (const Arrival& arrival : arrivals) {
        if (arrival.startsFree())
            cells.push_back(cellOfFeet(arrival.spawned));
    }
    return cells;
}

/// World units that a body runs in a tick.
float runSpeed(Pace pace) {
    MapManager nothing;
    Player player = runningAlong(nothing, 0.0, pace);
    run(player);
    player.update(0.0f);
    return std::hypot(player.velocity.x, player.velocity.z);
}

} // namespace

Reach explore(MapManager& map, const std::vector<Arrival>& arrivals, Pace pace,
              const std::function<void(std::size_t)>& progress, std::size_t enoughDepartures) {
    Search search{
        .map = map,
        .pace = pace,
        .enoughDepartures = enoughDepartures,
        .prospects = prospects(map, startingCells(arrivals), runSpeed(pace)),
    };
    for (int heading = 0; heading < headings; ++heading) {
        const double yaw = 4.0 * quarterTurn * heading / headings;
        search.walks[static_cast<std::size_t>(heading)] = walkingAlong(map, yaw, pace);
        search.runs[static_cast<std::size_t>(heading)] = runningAlong(map, yaw, pace);
    }

    for (const Arrival& arrival : arrivals) {
        if (arrival.startsFree())
            stateInFlight(search, arrival.spawned);
        if (arrival.comesToStand())
            addMove(search, stateInFlight(search, arrival.spawned),
                    stateOnFloor(search, arrival.landed));
        search.reach.landings.push_back(arrival.comesToStand() ? placeOf(search, arrival.landed)
                                                               : -1);
    }

    // Following a state appends the new states that it leads to. All of them are walked from before
    // the next flight, so that as many floors as possible have a label by then.
    std::size_t walked = 0;
    for (std::size_t flown = 0; flown < search.states.size(); ++flown) {
        for (; walked < search.states.size() && !hasEnough(search); ++walked) {
            if (progress && walked % statesPerReport == 0)
                progress(search.reach.places.size());
            if (search.states[walked].place >= 0)
                walkFrom(search, static_cast<int>(walked));
        }
        if (flown == 0 || search.reach.ticks - search.ticksWhenLabelled > ticksPerLabelling)
            labelFloors(search);
        if (hasEnough(search))
            break;
        followFlights(search, static_cast<int>(flown));
    }
    search.reach.isWhole = !hasEnough(search);
    connectPlaces(search);
    std::sort(search.reach.departures.begin(), search.reach.departures.end());
    return std::move(search.reach);
}

bool mightLeave(const MapManager& map, const std::vector<Arrival>& arrivals, Pace pace) {
    std::vector<std::pair<CellIndex, float>> starts;
    for (const Arrival& arrival : arrivals) {
        if (arrival.startsFree())
            starts.emplace_back(cellOfFeet(arrival.spawned), arrival.spawned.box.min.y);
    }
    return mightLeave(prospects(map, startingCells(arrivals), runSpeed(pace)), starts);
}

std::vector<CellIndex> walkableCells(const MapManager& map) {
    std::vector<CellIndex> walkable;
    constexpr float hover = 0.5f;
    constexpr vec3 toCentre(0.0f, 0.5f * (Player::bodySize.y + hover), 0.0f);
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
