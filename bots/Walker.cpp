#include "bots/Walker.h"

#include "bots/Geometry.h"
#include "src/Player.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

namespace drench::bots {

namespace {

// Distances are world units, times snapshots.

/// A place is reached within this of its middle.
constexpr float arrivalRadius = 20.0f;

/// A body is in the middle of a place within this.
constexpr float middleRadius = 7.0f;

/// A body stands still within this of its target: steps of 6 units get no nearer.
constexpr float stillRadius = 6.0f;

/// Room that a straight way must have beside the body.
constexpr float leastMargin = 4.0f;

/// A line is followed towards a point on it this far ahead; with less room, the point is nearer.
/// Keys that only nearly suit the heading lead up to 0.41 of that aside.
struct LookAhead {
    float margin;
    float distance;
};
constexpr LookAhead lookAheads[] = {{40.0f, 96.0f}, {16.0f, 40.0f}, {0.0f, 24.0f}};

/// A jump is begun within this of the middle, along both axes.
constexpr float jumpReach = 24.0f;

/// A leap is begun this far past the middle.
constexpr float leapStart = 8.0f;

/// A leap is begun at most this far past the middle: beyond, the edge may come first.
constexpr float leapLatest = 34.0f;

/// A leap is begun at most this far beside the line.
constexpr float leapAside = 16.0f;

/// A body that jumps up moves on once it is at most this far below the place.
constexpr float pushHeight = 4.0f;

/// A body that falls is about to land if it is at most this high.
constexpr float landingHeight = 40.0f;

/// A jump that shows no effect is asked for again after this.
constexpr int jumpPatience = 24;

/// A jump is given up after this many misses.
constexpr int mostMisses = 3;

/// A body gets on if it is nearer by this than ever before.
constexpr float nearerBy = 3.0f;

/// A body that does not get on for this long is stuck: one and a half seconds.
constexpr int nearerPatience = 93;

/// A body that advances by less than this in a tick is held up.
constexpr float heldUpSpeed = 1.0f;

/// A body that is held up for this long is caught on a corner.
constexpr int heldUpPatience = 3;

/// A caught body is free once it is this near its line again.
constexpr float backOnLine = 2.0f;

/// Speed of a body that two keys move, in a tick.
constexpr float aslantSpeed = std::numbers::sqrt2_v<float> * Player::walkingSpeed;

bool isInJumpReach(vec3 way) {
    return std::fabs(way.x) <= jumpReach && std::fabs(way.z) <= jumpReach;
}

/// The room beside a straight way that begins at `offset` from the middle of a place. Going to the
/// middle first would gain nothing if the body is nearly there.
float marginAt(vec3 offset) {
    return horizontal(offset).length() > middleRadius ? leastMargin : 0.0f;
}

bool isLevelWalk(const Roadmap& roadmap, int from, int to) {
    const Road* road = roadmap.road(from, to);
    return road && road->gait == Gait::walk &&
           roadmap.place(from).feet.row == roadmap.place(to).feet.row;
}

Steps stepTo(vec3 position, vec3 target) {
    Steps steps;
    const vec3 way = horizontal(target - position);
    if (way.length() > stillRadius)
        steps.heading = unit(way);
    return steps;
}

} // namespace

void Walker::follow(std::vector<int> route) {
    ahead_ = std::move(route);
    before_.reset();
    aloft_ = false;
    strayed_ = false;
    if (!ahead_.empty())
        advance();
}

std::optional<Stretch> Walker::failedStretch() const {
    if (!strayed_)
        return std::nullopt;
    return Stretch{from_, ahead_.front()};
}

/// Makes the next place the start of the way.
void Walker::advance() {
    from_ = ahead_.front();
    ahead_.erase(ahead_.begin());
    straight_ = false;
    caughtAside_.reset();
    heldUp_ = 0;
    centres_ = false;
    sinceJump_ = -1;
    tookOff_ = false;
    misses_ = 0;
    sinceNearer_ = -1;
}

Steps Walker::step(const Roadmap& roadmap, vec3 position, int delay) {
    const Steps steps = chooseSteps(roadmap, position, delay);
    std::rotate(headings_.begin(), headings_.end() - 1, headings_.end());
    headings_.front() = steps.heading;
    before_ = position;
    return steps;
}

Steps Walker::chooseSteps(const Roadmap& roadmap, vec3 position, int delay) {
    if (isDone())
        return {};
    const int here = roadmap.placeBelow(position);
    const float feet = position.y - 0.5f * Player::bodySize.y;
    aloft_ = here < 0 || feet - roadmap.floorHeight(here) > restingTolerance;
    if (sinceJump_ >= 0 && before_ && position.y > before_->y + 1.0f)
        tookOff_ = true;
    const vec3 ahead = foreseen(position, delay);
    if (!aloft_) {
        const int row = roadmap.place(here).feet.row;
        const bool staysLevel = roadmap.isOpen(position, ahead, row, 0.0f);
        const vec3 soon = ahead_.size() > 1 && staysLevel ? ahead : position;
        settle(roadmap, soon, roadmap.placeBelow(soon));
    }
    if (isDone())
        return {};

    if (landsForJump(roadmap, position, ahead, here)) {
        advance();
        sinceJump_ = 0;
        Steps steps = stepTo(ahead, roadmap.place(ahead_.front()).position);
        steps.jump = true;
        return steps;
    }
    const vec3 target = roadmap.place(ahead_.front()).position;
    strayed_ = !getsNearer(position, target);
    if (strayed_)
        return {};
    return straight_ ? stepOnLine(position, ahead, target, delay) : stepOnRoad(roadmap, ahead);
}

/// The body's position when the steps under way have acted.
vec3 Walker::foreseen(vec3 position, int delay) const {
    const vec3 moved = position - before_.value_or(position);
    const float speed = std::clamp(horizontal(moved).length(), Player::walkingSpeed, aslantSpeed);
    const int underWay = std::clamp(delay, 0, longestLag);
    for (int i = 0; i < underWay; ++i)
        position += headings_[static_cast<std::size_t>(i)] * speed;
    if (aloft_) {
        const auto ticks = static_cast<float>(underWay);
        position.y +=
            ticks * moved.y - 0.5f * static_cast<float>(Player::gravity) * ticks * (ticks + 1.0f);
    }
    return position;
}

/// Finds the place on the route at which a standing body is.
void Walker::settle(const Roadmap& roadmap, vec3 position, int here) {
    const bool jumped = std::exchange(tookOff_, false);
    if (jumped) {
        sinceJump_ = -1;
        sinceNearer_ = -1;
    }
    const int row = roadmap.place(here).feet.row;
    if (std::find(ahead_.begin(), ahead_.end(), here) != ahead_.end()) {
        while (ahead_.front() != here)
            advance();
        if (horizontal(roadmap.place(here).position - position).length() <= arrivalRadius)
            advance();
    } else {
        const bool fell =
            row < roadmap.place(from_).feet.row && row < roadmap.place(ahead_.front()).feet.row;
        strayed_ = fell || (jumped && ++misses_ >= mostMisses);
    }
    if (!isDone())
        cutCorners(roadmap, position, row);
}

/// Leaves out places of this row that need not be passed, and checks whether the next one can be
/// reached straight.
void Walker::cutCorners(const Roadmap& roadmap, vec3 position, int row) {
    const auto isOpen = [&](int place, float margin) {
        const arena::StandingPlace& target = roadmap.place(place);
        return target.feet.row == row && roadmap.isOpen(position, target.position, row, margin);
    };
    while (ahead_.size() >= 2 && isLevelWalk(roadmap, ahead_[0], ahead_[1]) &&
           isOpen(ahead_[1], leastMargin))
        advance();
    if (straight_)
        return;
    const Road* road = roadmap.road(from_, ahead_.front());
    straight_ = (!road || road->gait == Gait::walk) &&
                isOpen(ahead_.front(), marginAt(position - roadmap.place(from_).position));
    if (straight_) {
        lineStart_ = position;
        lookAhead_ =
            std::find_if(std::begin(lookAheads), std::end(lookAheads) - 1,
                         [&](const LookAhead& wide) { return isOpen(ahead_.front(), wide.margin); })
                ->distance;
    }
}

/// Whether a falling body is about to land at the start of the next jump. A jump asked for in the
/// air comes without a pause.
bool Walker::landsForJump(const Roadmap& roadmap, vec3 position, vec3 ahead, int here) const {
    if (!aloft_ || ahead_.size() < 2 || here != ahead_.front() || !before_ ||
        position.y >= before_->y)
        return false;
    const Road* following = roadmap.road(ahead_[0], ahead_[1]);
    const vec3 middle = roadmap.place(here).position;
    return following && following->gait == Gait::jump && isInJumpReach(ahead - middle) &&
           position.y - middle.y < landingHeight;
}

bool Walker::getsNearer(vec3 position, vec3 target) {
    const float distance = (target - position).length();
    if (sinceNearer_ < 0 || distance < nearest_ - nearerBy) {
        nearest_ = distance;
        sinceNearer_ = 0;
    }
    return ++sinceNearer_ <= nearerPatience;
}

/// Towards a point of the line not far ahead (pure pursuit: Coulter, CMU-RI-TR-92-01, 1992), since
/// keys that only nearly suit the heading would lead far from the line. A body caught on a corner
/// beside the line goes back to the line first.
Steps Walker::stepOnLine(vec3 position, vec3 ahead, vec3 target, int delay) {
    const vec3 way = horizontal(target - lineStart_);
    const vec3 line = unit(way);
    const vec3 offset = horizontal(ahead - lineStart_);
    const float passed = offset.dot(line);
    const vec3 aside = offset - line * passed;

    const vec3 acted = headings_[static_cast<std::size_t>(std::clamp(delay, 0, longestLag - 1))];
    const bool isHeldUp =
        before_ && acted.dot(line) > 0.5f && (position - *before_).dot(line) < heldUpSpeed;
    heldUp_ = isHeldUp ? heldUp_ + 1 : 0;
    if (heldUp_ >= heldUpPatience && !caughtAside_)
        caughtAside_ = aside;
    if (caughtAside_ && (aside.length() < backOnLine || aside.dot(*caughtAside_) < 0.0f)) {
        caughtAside_.reset();
        heldUp_ = 0;
    }
    if (caughtAside_)
        return {unit(aside * -1.0f)};
    return stepTo(ahead, lineStart_ + line * std::min(passed + lookAhead_, way.length()));
}

Steps Walker::stepOnRoad(const Roadmap& roadmap, vec3 ahead) {
    const arena::StandingPlace& start = roadmap.place(from_);
    const arena::StandingPlace& end = roadmap.place(ahead_.front());
    const Road* road = roadmap.road(from_, ahead_.front());
    if (!road) {
        strayed_ = true;
        return {};
    }
    // A body that jumps up and pushes against the face of a cube may slip aside along it.
    if (road->gait == Gait::jump && tookOff_ && ahead.y < end.position.y - pushHeight)
        return {};
    const bool awaitsJump = sinceJump_ >= 0 && ++sinceJump_ <= jumpPatience;
    if (aloft_ || awaitsJump)
        return stepTo(ahead, end.position);

    // A way between walls begins at the middle: keys that only nearly suit the heading may lead a
    // body astray that slides along the walls.
    const vec3 offset = horizontal(ahead - start.position);
    const float margin = centres_ ? marginAt(offset) : 0.0f;
    centres_ =
        !roadmap.isClear(ahead, end.position, std::max(start.feet.row, end.feet.row), margin);
    if (centres_)
        return stepTo(ahead, start.position);
    if (road->gait == Gait::walk)
        return stepTo(ahead, end.position);

    const bool leaps = road->gait == Gait::leap;
    const vec3 line = unit(horizontal(end.position - start.position));
    const float progress = offset.dot(line);
    const float aside = (offset - line * progress).length();
    if (leaps ? aside > leapAside || progress > leapLatest : !isInJumpReach(offset))
        return stepTo(ahead, start.position);
    Steps steps = stepTo(ahead, end.position);
    steps.jump = !leaps || progress >= leapStart;
    if (steps.jump)
        sinceJump_ = 0;
    return steps;
}

} // namespace drench::bots
