#include "bench/Hands.h"

#include "src/Messages.h"

#include <cmath>
#include <iterator>

namespace drench::bench {

namespace {

constexpr double turnEvery = 8.0;
constexpr double keyEvery = 500.0;

struct KeyChange {
    int key;
    bool isDown;
};

constexpr KeyChange script[] = {
    {keyIndex::forward, true},  {keyIndex::left, true},   {keyIndex::jump, true},
    {keyIndex::left, false},    {keyIndex::shoot, true},  {keyIndex::right, true},
    {keyIndex::jump, true},     {keyIndex::right, false}, {keyIndex::forward, false},
    {keyIndex::shoot, false},   {keyIndex::jump, true},   {keyIndex::backward, true},
    {keyIndex::left, true},     {keyIndex::left, false},  {keyIndex::jump, true},
    {keyIndex::backward, false}};

/// Of the view's sway: counts a turn at its fastest, and milliseconds.
constexpr double swayRight = 14.0;
constexpr double swayDown = 2.0;
constexpr double swayRightPeriod = 3700.0;
constexpr double swayDownPeriod = 2300.0;

double sway(double most, double at, double period) {
    return most * std::cos(2.0 * M_PI * at / period);
}

} // namespace

Move Hands::next() {
    return nextTurn_ <= nextKey_ ? turn() : keyMove();
}

Move Hands::keyMove() {
    Move move;
    move.at = nextKey_;
    if (habit_ == Habit::scripted) {
        const KeyChange& change = script[static_cast<std::size_t>(keyMoves_++) % std::size(script)];
        nextKey_ += keyEvery;
        move.key = change.key;
        move.isDown = change.isDown;
        return move;
    }
    nextKey_ += -std::log(1.0 - chance_.share()) * keyEvery;
    const int key = chance_.below(keyIndex::count);
    keys_[key] = key == keyIndex::jump || !keys_[key];
    move.key = key;
    move.isDown = keys_[key];
    return move;
}

Move Hands::turn() {
    Move move;
    move.at = nextTurn_;
    nextTurn_ += chance_.between(0.95, 1.05) * turnEvery;
    if (habit_ == Habit::scripted) {
        move.dx = static_cast<int>(std::lround(sway(swayRight, move.at, swayRightPeriod)));
        move.dy = static_cast<int>(std::lround(sway(swayDown, move.at, swayDownPeriod)));
        return move;
    }
    if (chance_.happens(0.03))
        turning_ = chance_.happens(0.3) ? 0.0 : chance_.between(-20.0, 20.0);
    move.dx = static_cast<int>(turning_ + chance_.between(-2.0, 2.0));
    move.dy = static_cast<int>(chance_.between(-2.0, 2.0) - 0.02 * pitch_);
    pitch_ += move.dy;
    return move;
}

} // namespace drench::bench
