#include "bots/Hand.h"

#include <algorithm>
#include <cmath>

namespace drench::bots {

namespace {

/// The peak speed of a movement with least jerk, over its mean speed.
constexpr double peakOverMean = 1.875;

/// The rates, per tick, at which the pursuit takes on a target's speed and the wobble changes.
constexpr double pursuitChange = 0.15;
constexpr double wobbleChange = 0.05;

/// End points scatter across a movement less than along it.
constexpr double scatterAcross = 0.4;

/// The view must move by more than the first, in counts, within the window to show the delay. The
/// estimate then moves towards the observed delay by the second, a share.
constexpr double tellingMotion = 40.0;
constexpr double delayChange = 0.1;

/// The share of a movement that is done after a share of its time.
double done(double time) {
    return time * time * time * (10.0 + time * (6.0 * time - 15.0));
}

/// Shifts [low, high] no further than needed for it to hold `value`.
double shiftToHold(double low, double high, double value) {
    return value < low ? value - low : value > high ? value - high : 0.0;
}

} // namespace

Hand::Hand(const Skill& skill, Chance chance) : skill_(skill), chance_(chance) {}

void Hand::letGo() {
    feltBefore_ = false;
    movements_.clear();
    pause_ = 0.0;
    pursuit_ = speed_ = carry_ = View{};
}

void Hand::feel(vec3 direction) {
    const View seen = viewAlong(direction);
    if (!feltBefore_) {
        sent_.fill(seen);
        feltBefore_ = true;
        return;
    }
    const View felt = sent_.front() + turnBetween(sent_.front(), seen);
    const auto byRight = [](View a, View b) { return a.right < b.right; };
    const auto byDown = [](View a, View b) { return a.down < b.down; };
    const auto [left, right] = std::minmax_element(sent_.begin(), sent_.end(), byRight);
    const auto [top, bottom] = std::minmax_element(sent_.begin(), sent_.end(), byDown);
    if (right->right - left->right > tellingMotion) {
        const auto nearest = std::min_element(sent_.begin(), sent_.end(), [&](View a, View b) {
            return std::fabs(a.right - felt.right) < std::fabs(b.right - felt.right);
        });
        delay_ += (static_cast<double>(nearest - sent_.begin()) - delay_) * delayChange;
    }
    const View shift = {shiftToHold(left->right, right->right, felt.right),
                        shiftToHold(top->down, bottom->down, felt.down)};
    for (View& view : sent_)
        view += shift;
}

View Hand::remaining() const {
    View rest;
    for (const Movement& movement : movements_)
        rest += movement.way * (1.0 - done(movement.elapsed / movement.duration));
    return rest;
}

Hand::Counts Hand::move(const Aim& aim) {
    const double steadiness = std::sqrt(1.0 - (1.0 - wobbleChange) * (1.0 - wobbleChange));
    wobble_ = wobble_ * (1.0 - wobbleChange) +
              View{chance_.bell(), chance_.bell()} * (skill_.wobble * steadiness);
    pursuit_ += (aim.drift * skill_.pursuit - pursuit_) * pursuitChange;

    const View miss = turnBetween(view() + remaining(), aim.view + wobble_);
    const double way = miss.length();
    pause_ -= 1.0;
    if (pause_ <= 0.0 && way > aim.tolerance) {
        const double along = 1.0 + skill_.spread * chance_.bell();
        const double across = scatterAcross * skill_.spread * chance_.bell();
        const View scattered = {miss.right * along - miss.down * across,
                                miss.down * along + miss.right * across};
        const double shortest = std::max(skill_.movement, peakOverMean * way / skill_.topSpeed);
        movements_.push_back({scattered, shortest / aim.haste, 0.0});
        pause_ = skill_.correction * chance_.between(0.8, 1.3);
    }

    speed_ = pursuit_;
    for (Movement& movement : movements_) {
        const double before = done(movement.elapsed / movement.duration);
        movement.elapsed = std::min(movement.elapsed + 1.0, movement.duration);
        speed_ += movement.way * (done(movement.elapsed / movement.duration) - before);
    }
    std::erase_if(movements_, [](const Movement& m) { return m.elapsed >= m.duration; });
    const double excess = speed_.length() / skill_.topSpeed;
    if (excess > 1.0)
        speed_ = speed_ * (1.0 / excess);

    carry_ += speed_;
    const View whole = {std::round(carry_.right), std::round(carry_.down)};
    carry_ = carry_ - whole;
    std::shift_right(sent_.begin(), sent_.end(), 1);
    sent_.front() = withoutSteepness(sent_[1] + whole);
    const View sent = sent_.front() - sent_[1];
    return {static_cast<int>(std::lround(sent.right)), static_cast<int>(std::lround(sent.down))};
}

} // namespace drench::bots
