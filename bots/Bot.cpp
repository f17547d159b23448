#include "bots/Bot.h"

#include "arena/Map.h"
#include "bots/Cover.h"
#include "bots/Geometry.h"
#include "bots/Routes.h"
#include "client/Session.h"
#include "src/Player.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

namespace drench::bots {

namespace {

// Times are in ticks, lengths in world units.

/// A bot that stays within this of a point is idle: one and a half cubes.
constexpr float idleRadius = 96.0f;

/// An idle bot moves on after this, in any mood: three seconds.
constexpr long idleTime = 190;

/// A bot that moves on leaves others alone for this time.
constexpr long moveOnTime = 130;

/// A bot goes in any direction for this time if moving on did not help.
constexpr long stumbleTime = 60;

/// A stumbling bot keeps a direction for at least the first and less than the second of these.
constexpr int shortestStumble = 20;
constexpr int longestStumble = 45;

/// A route to a goal is asked for no more often than this.
constexpr long routeInterval = 12;

/// A route to a moving enemy is asked for anew at most this often.
constexpr long chaseInterval = 40;

/// A failed road is avoided as if it took longer by this.
constexpr double tollTicks = 600.0;

/// A failed road is avoided for this time: the obstacle may have gone.
constexpr long tollTime = 1500;

/// A lost quarry is sought where its movement would lead after these times, one after the other.
constexpr float huntAhead[] = {25.0f, 110.0f};

/// Enemies further away than this are approached by road.
constexpr float closeRange = 1100.0f;

/// Mouse counts. Enemies further off the view than this are approached by road too.
constexpr double wideView = 0.9 * countsPerRadian;

/// A bot waits in cover for at least the first and at most the second of these.
constexpr double shortestWait = 45.0;
constexpr double longestWait = 130.0;

/// A bot that has hidden does not hide again for this time; otherwise it might never fight.
constexpr long hidePause = 400;

/// Enemies count as near for this time after they were in sight.
constexpr int lately = 120;

/// A bot is late in a duel when it has to turn by more counts than this.
constexpr double slowTurn = 0.45 * countsPerRadian;

/// An enemy is early in a duel when its view is off by fewer counts than this.
constexpr double goodAim = 0.3 * countsPerRadian;

/// The enemy is chosen that takes the fewest counts to turn to. A world unit of distance counts as
/// this many of them.
constexpr double weightOfDistance = 0.3;

/// An enemy without a cube behind it counts as this many counts further, since shots at it are
/// lost.
constexpr double weightOfSky = 500.0;

/// The present enemy counts as this many counts nearer, so that the bot does not waver.
constexpr double loyalty = 200.0;

/// An enemy that disappears is still fought for this time: most come out again.
constexpr int patience = 15;

/// Errors of the view that are not corrected in a fight, as a share of half a body's width.
constexpr double fightTolerance = 0.35;

/// A bot on its way looks at the place of its route this far ahead.
constexpr std::size_t placesLookedAhead = 4;

/// A bot on its way looks up and down by no more counts than this, since a steep view slows
/// walking.
constexpr double steepestAhead = 0.3 * countsPerRadian;

/// A bot on its way does not correct errors up to this many counts.
constexpr double aheadTolerance = 25.0;

/// Looking ahead is worth this share of the hand's speed.
constexpr double aheadHaste = 0.55;

/// A hostile room may send any floats. A position in the world is finite; a view must be checked.
bool isFinite(vec3 v) {
    return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z);
}

bool isGoing(const Steps& steps) {
    return steps.heading.x != 0.0f || steps.heading.z != 0.0f;
}

} // namespace

Bot::Bot(const Roadmap& roadmap, double skill, std::uint64_t seed)
    : roadmap_(&roadmap), skill_(skillOf(skill)), chance_(seed), eyes_(skill_, chance_.split()),
      hand_(skill_, chance_.split()), trigger_(skill_), gaze_(chance_.split()),
      footwork_(chance_.split()), goals_(roadmap, skill_.curiosity, chance_.split()),
      remarks_(chance_.split()) {}

Controls Bot::decide(const UpdateMessage& snapshot, char id) {
    ++tick_;
    const PlayerUpdate* self = client::playerWith(snapshot, id);
    if (self)
        remarks_.notePoints(self->points);
    if (!self || !isInWorld(*roadmap_->map, self->position) || !isFinite(self->direction)) {
        rest();
        return {};
    }
    velocity_ = alive_ ? self->position - position_ : vec3();
    position_ = self->position;
    direction_ = self->direction;
    if (!alive_)
        arrive();
    eyes_.look(roadmap_->grid, snapshot, *self);
    goals_.look(*roadmap_, position_, direction_);
    hand_.feel(direction_);

    noteFailedRoad();
    noteStay();
    chooseMood();
    const Sighting* enemy = opponent();
    const Steps next = steps(enemy);
    const Hand::Counts counts = hand_.move(enemy ? aimAt(*enemy) : aimAhead(next));
    Controls controls;
    controls.dx = counts.dx;
    controls.dy = counts.dy;
    controls.jump = next.jump;
    legs_.press(controls, next.heading, hand_.view());

    const double delay = 1.0 + hand_.delay();
    controls.held[keyIndex::shoot] =
        trigger_.pull(*roadmap_->map, position_ + velocity_ * static_cast<float>(delay), velocity_,
                      hand_.view(), hand_.speed(), eyes_.known(), delay);
    return controls;
}

void Bot::rest() {
    alive_ = false;
    eyes_.close();
    trigger_.release();
}

/// Begins a life.
void Bot::arrive() {
    alive_ = true;
    hand_.letGo();
    roam();
    anchor_ = position_;
    anchoredAt_ = tick_;
    idled_ = 0;
    movesOnUntil_ = stumblesUntil_ = tick_;
}

/// Notices that the walker strayed, and remembers where.
void Bot::noteFailedRoad() {
    if (const std::optional<Stretch> failed = walker_.failedStretch()) {
        tolls_.push_back({failed->to, tick_ + tollTime});
        walker_ = Walker();
    }
}

/// Makes a bot move on that stays anywhere for long.
void Bot::noteStay() {
    if ((position_ - anchor_).length() > idleRadius) {
        anchor_ = position_;
        anchoredAt_ = tick_;
        idled_ = 0;
    }
    if (tick_ - anchoredAt_ < idleTime)
        return;
    anchoredAt_ = tick_;
    movesOnUntil_ = tick_ + moveOnTime;
    if (++idled_ > 1)
        stumblesUntil_ = tick_ + stumbleTime;
    roam();
}

// Moods

void Bot::chooseMood() {
    if (movesOn())
        return;
    const Sighting* enemy = opponent();
    if (mood_ == Mood::hide) {
        if (!inCover_ && walker_.isDone()) {
            inCover_ = true;
            waitsUntil_ = tick_ + std::lround(chance_.between(shortestWait, longestWait));
        }
        if (!inCover_ || (!enemy && tick_ < waitsUntil_))
            return;
    }
    if (enemy)
        fight(*enemy);
    else if (const Sighting* lost = lastSeen())
        hunt(*lost);
    else if (mood_ != Mood::roam)
        roam();
}

void Bot::fight(const Sighting& enemy) {
    const bool begins = mood_ != Mood::fight;
    mood_ = Mood::fight;
    other_ = enemy.id;
    if (begins)
        routeAskedAt_ = tick_ - chaseInterval;
    const bool outnumbered = enemiesAbout().size() > 1;
    if (tick_ >= hidesAgainAt_ && (outnumbered || (begins && isOutgunnedBy(enemy)))) {
        hidesAgainAt_ = tick_ + hidePause;
        if (chance_.happens(skill_.caution) && hide())
            mood_ = Mood::hide;
    }
}

/// Goes to the quarry's probable position since it was last seen, then further that way, and at
/// last gives up.
void Bot::hunt(const Sighting& lost) {
    const bool goesOn = mood_ == Mood::hunt && other_ == lost.id;
    if (isInJump() || (goesOn && !walker_.isDone()))
        return;
    searches_ = goesOn ? searches_ + 1 : 0;
    mood_ = Mood::hunt;
    other_ = lost.id;
    for (; searches_ < std::size(huntAhead); ++searches_) {
        const vec3 there = lost.position + horizontal(lost.velocity) * huntAhead[searches_];
        if (goTo(roadmap_->placeBelow(there)))
            return;
    }
    goals_.noteCompany(lost.position);
    eyes_.forget(lost.id);
    roam();
}

/// Positions of the enemies in sight now or lately.
std::vector<vec3> Bot::enemiesAbout() const {
    std::vector<vec3> positions;
    for (const Sighting& other : eyes_.known()) {
        if (other.unseen < lately)
            positions.push_back(other.position);
    }
    return positions;
}

/// Sets out for cover from all near enemies; false if there is none.
bool Bot::hide() {
    const int here = roadmap_->placeBelow(position_);
    if (here < 0 || isInJump())
        return false;
    std::vector<int> route = routeToCover(*roadmap_, here, enemiesAbout());
    if (route.size() < 2)
        return false;
    walker_.follow(std::move(route));
    inCover_ = false;
    return true;
}

void Bot::roam() {
    mood_ = Mood::roam;
    other_ = 0;
    walker_ = Walker();
    routeAskedAt_ = tick_ - routeInterval;
}

const Sighting* Bot::known(char id) const {
    const auto& all = eyes_.known();
    const auto found =
        std::find_if(all.begin(), all.end(), [&](const Sighting& s) { return s.id == id; });
    return found == all.end() ? nullptr : &*found;
}

/// The enemy to fight, of those in sight now or a moment ago.
const Sighting* Bot::opponent() const {
    const Sighting* best = nullptr;
    double least = 0.0;
    for (const Sighting& other : eyes_.known()) {
        const bool justLost =
            mood_ == Mood::fight && other.id == other_ && other.unseen <= patience;
        if (!other.visible && !justLost)
            continue;
        const vec3 way = other.position - position_;
        const double cost = turnBetween(viewAlong(direction_), viewAlong(way)).length() +
                            weightOfDistance * static_cast<double>(way.length()) +
                            (other.canBeSoaked ? 0.0 : weightOfSky) -
                            (other.id == other_ ? loyalty : 0.0);
        if (!best || cost < least) {
            best = &other;
            least = cost;
        }
    }
    return best;
}

const Sighting* Bot::lastSeen() const {
    const auto& all = eyes_.known();
    const auto found =
        std::min_element(all.begin(), all.end(),
                         [](const Sighting& a, const Sighting& b) { return a.unseen < b.unseen; });
    return found == all.end() ? nullptr : &*found;
}

bool Bot::isOutgunnedBy(const Sighting& enemy) const {
    const vec3 way = enemy.position - position_;
    return turnBetween(viewAlong(direction_), viewAlong(way)).length() > slowTurn &&
           turnBetween(viewAlong(enemy.direction), viewAlong(way * -1.0f)).length() < goodAim;
}

/// Whether to dodge rather than to go nearer: the enemy is in reach and looks at this bot.
bool Bot::isDangerous(const Sighting& enemy) const {
    const vec3 way = enemy.position - position_;
    return way.length() < closeRange && (enemy.canBeSoaked || !enemy.visible) &&
           turnBetween(viewAlong(enemy.direction), viewAlong(way * -1.0f)).length() < wideView;
}

// Legs

Steps Bot::steps(const Sighting* enemy) {
    if (tick_ < stumblesUntil_)
        return stumble();
    if (mood_ == Mood::hide && inCover_)
        return {};
    if (mood_ != Mood::fight || !enemy || isInJump() || !isDangerous(*enemy))
        return travel();
    walker_ = Walker();
    return footwork_.step(*roadmap_, position_, enemy->position, velocity_.y == 0.0f);
}

/// Follows the route, or asks for a new one: to the enemy or to some goal.
Steps Bot::travel() {
    const bool chases = mood_ == Mood::fight && !isInJump();
    if (tick_ - routeAskedAt_ >= (chases ? chaseInterval : routeInterval) &&
        (chases || walker_.isDone())) {
        routeAskedAt_ = tick_;
        const Sighting* other = known(other_);
        const int nearby = other ? roadmap_->placeBelow(other->position) : -1;
        goTo(nearby >= 0 ? nearby : goals_.next(*roadmap_));
    }
    if (walker_.isDone())
        return stumble();
    return walker_.step(*roadmap_, position_, static_cast<int>(std::lround(hand_.delay())));
}

/// Goes in any direction.
Steps Bot::stumble() {
    walker_ = Walker();
    Steps steps;
    if (tick_ >= stumbleTurnsAt_) {
        constexpr double halfTurn = std::numbers::pi * countsPerRadian;
        stumbleTurnsAt_ = tick_ + shortestStumble + chance_.below(longestStumble - shortestStumble);
        stumbleHeading_ = {chance_.between(-halfTurn, halfTurn), 0.0};
        steps.jump = true;
    }
    steps.heading = directionOf(stumbleHeading_);
    return steps;
}

/// Sets out for a place; false when there is no way.
bool Bot::goTo(int goal) {
    const int here = roadmap_->placeBelow(position_);
    if (here < 0 || goal < 0)
        return false;
    std::erase_if(tolls_, [&](const Toll& toll) { return toll.until <= tick_; });
    const auto toll = [&](int place) {
        return tollTicks * static_cast<double>(
                               std::count_if(tolls_.begin(), tolls_.end(), [&](const Toll& paid) {
                                   return paid.place == place;
                               }));
    };
    std::vector<int> route = quickestRoute(*roadmap_, here, goal, toll);
    if (route.size() < 2)
        return false;
    walker_.follow(std::move(route));
    return true;
}

bool Bot::isInJump() const {
    return walker_.isAloft() && !walker_.isDone();
}

// View

/// The enemy's position when the counts sent now act.
Hand::Aim Bot::aimAt(const Sighting& enemy) const {
    const float delay = static_cast<float>(1.0 + hand_.delay());
    // No lead on an enemy out of sight: perhaps it stands where it was last seen.
    const vec3 drift = (enemy.visible ? enemy.velocity : vec3()) - velocity_;
    const vec3 way = enemy.position + enemy.target - position_ + drift * delay;
    const View view = viewAlong(way);
    const double halfWidth = std::atan2(static_cast<double>(Player::bodySize.x) / 2.0,
                                        static_cast<double>(way.length())) *
                             countsPerRadian;
    return {view, turnBetween(view, viewAlong(way + drift)), fightTolerance * halfWidth, 1.0};
}

/// The aim while there is nobody to fight: an enemy's last known position, or along the way.
Hand::Aim Bot::aimAhead(const Steps& next) {
    View ahead = isGoing(next) ? viewAlong(next.heading) : hand_.view();
    const std::vector<int>& route = walker_.route();
    if (const Sighting* other = known(other_)) {
        ahead = viewAlong(other->position - position_);
    } else if (!route.empty()) {
        const vec3 place =
            roadmap_->place(route[std::min(route.size(), placesLookedAhead) - 1]).position;
        if (horizontal(place - position_).length() > arena::cubeEdge)
            ahead = viewAlong(place - position_);
    }
    ahead.down = std::clamp(ahead.down, -steepestAhead, steepestAhead);
    return {gaze_.next(roadmap_->grid, position_, ahead), {}, aheadTolerance, aheadHaste};
}

} // namespace drench::bots
