#include "tests/client/PredictedLine.h"

#include "bench/Hands.h"

#include <algorithm>
#include <chrono>
#include <utility>

using namespace drench;
using namespace drench::client;

namespace {

Clock::duration milliseconds(double count) {
    return std::chrono::duration_cast<Clock::duration>(
        std::chrono::duration<double, std::milli>(count));
}

/// Milliseconds: from tick to tick.
constexpr double shortestTick = 16.2;
constexpr double longestTick = 16.8;
constexpr double period = (shortestTick + longestTick) / 2.0;

/// Milliseconds: now and then a tick of a loaded room is late by up to this.
constexpr double latestTick = 20.0;
constexpr double lateTickShare = 0.002;

constexpr double frameEvery = 1000.0 / 240.0;
constexpr char id = '1';

} // namespace

PredictedLine::PredictedLine(const std::string& mapText, const Settings& settings)
    : truth(id, "Ann", 0.0f, static_cast<int>(settings.seed % Player::spawnPoseCount)),
      prediction(map_), now(Time() + std::chrono::hours(1)), settings_(settings),
      up_(settings.line, settings.seed), down_(settings.line, settings.seed + 1000),
      chance_(settings.seed + 2000), nextTick_(now), nextFrame_(now) {
    map_.init(mapText);
    truth.setMapMan(&map_);
}

void PredictedLine::sendKey(int key, bool isDown) {
    KeyMessage record;
    record.id = id;
    record.key = static_cast<signed char>(key);
    record.down = static_cast<char>(isDown);
    send(record);
}

void PredictedLine::sendView(int dx, int dy) {
    ViewMessage record;
    record.id = id;
    record.dx = dx;
    record.dy = dy;
    send(record);
}

void PredictedLine::send(const InputRecord& record) {
    prediction.sent({record}, now);
    const lag::Fate fate = up_.decide(now);
    for (int copy = 0; copy < fate.copies && recordsToLose == 0; ++copy)
        ups_.push_back({std::max(fate.due + longerWay_, heldUntil_), record, sent_});
    recordsToLose = std::max(0, recordsToLose - 1);
    if (const auto body = prediction.body(now)) {
        predicted_[sent_] = body->player.position;
        predictedTicks_[sent_] = taken_ + body->tick - prediction.tick();
    }
    ++sent_;
}

void PredictedLine::pass(double duration) {
    const Time end = now + milliseconds(duration);
    for (;;) {
        Time next = std::min({end, nextTick_, nextFrame_});
        if (!ups_.empty())
            next = std::min(next, ups_.front().at);
        if (!downs_.empty())
            next = std::min(next, downs_.front().at);
        now = next;
        if (!ups_.empty() && ups_.front().at == now) {
            const Up up = ups_.front();
            ups_.pop_front();
            acted_[up.number] = tick + 1;
            if (truth.dead)
                continue;
            if (const auto* view = std::get_if<ViewMessage>(&up.record))
                truth.rotateView(view->dx, view->dy);
            else if (const auto* key = std::get_if<KeyMessage>(&up.record))
                truth.setKey(key->key, key->down != 0);
        } else if (!downs_.empty() && downs_.front().at == now) {
            const UpdateMessage state = downs_.front().state;
            taken_ = downs_.front().tick;
            downs_.pop_front();
            take(state);
        } else if (nextTick_ == now) {
            playTick();
        } else if (nextFrame_ == now) {
            const std::optional<Prediction::Body> body = prediction.body(now);
            eyes.push_back(body ? std::optional(body->eye) : std::nullopt);
            nextFrame_ += milliseconds(frameEvery);
        } else {
            return;
        }
    }
}

void PredictedLine::stall(double duration) {
    nextTick_ += milliseconds(duration);
}

void PredictedLine::delayRecords(double duration) {
    settings_.roundTrip = roundTrip() + duration;
    longerWay_ += milliseconds(duration);
}

void PredictedLine::holdRecords(double duration) {
    if (ups_.empty())
        return;
    heldUntil_ = ups_.front().at + milliseconds(duration);
    for (Up& up : ups_)
        up.at = std::max(up.at, heldUntil_);
}

double PredictedLine::roundTrip() const {
    return settings_.roundTrip.value_or(
        2.0 * std::chrono::duration<double, std::milli>(settings_.line.delay).count());
}

void PredictedLine::playTick() {
    ++tick;
    if (truth.dead && now >= respawn_) {
        truth.dead = false;
        truth.spawnAt(chance_.below(Player::spawnPoseCount));
    } else if (!truth.dead && movesNext) {
        truth.update(0.0f);
    }
    movesNext = true;
    places_[tick] = truth.position;
    UpdateMessage state;
    state.add(truth.getPlayerUpdate());
    for (int other = 0; other < others; ++other) {
        PlayerUpdate standing;
        standing.id = static_cast<char>(id + 1 + other);
        state.add(standing);
    }
    const lag::Fate fate = down_.decide(now);
    for (int copy = 0; copy < fate.copies && snapshotsToLose == 0; ++copy)
        downs_.push_back({fate.due, state, tick});
    snapshotsToLose = std::max(0, snapshotsToLose - 1);
    if (isSoaking_ && !truth.dead) {
        truth.die(0.0f);
        respawn_ = now + milliseconds(Player::respawnDelay);
    }
    isSoaking_ = false;
    const double late = chance_.happens(lateTickShare) ? chance_.between(0.0, latestTick) : 0.0;
    nextTick_ = now + milliseconds(chance_.between(shortestTick, longestTick) + late);
}

void PredictedLine::take(const UpdateMessage& state) {
    hasJoined_ = true;
    matches.push_back(prediction.take({state, 0, now}, id, roundTrip(), period));
    for (const InputRecord& lost : prediction.takeLost()) {
        told.push_back(lost);
        if (!settings_.sendsAgain)
            continue;
        if (const auto* view = std::get_if<ViewMessage>(&lost)) {
            lostRight_ += view->dx;
            lostDown_ += view->dy;
        } else if (const auto* key = std::get_if<KeyMessage>(&lost)) {
            sendKey(key->key, key->key == keyIndex::jump || keys_[key->key]);
        }
    }
}

void PredictedLine::playAtRandom(double seconds) {
    const Time begin = now;
    const Time end = now + milliseconds(seconds * 1000.0);
    bench::Hands hands(bench::Hands::Habit::random, chance_.bits());
    for (;;) {
        const bench::Move move = hands.next();
        const Time at = std::min(begin + milliseconds(move.at), end);
        pass(std::chrono::duration<double, std::milli>(at - now).count());
        if (now == end)
            return;
        if (!hasJoined_)
            continue;
        if (move.key) {
            keys_[*move.key] = move.isDown && *move.key != keyIndex::jump;
            sendKey(*move.key, move.isDown);
            continue;
        }
        const int dx = move.dx + std::exchange(lostRight_, 0);
        const int dy = move.dy + std::exchange(lostDown_, 0);
        if (dx != 0 || dy != 0)
            sendView(dx, dy);
    }
}

std::vector<float> PredictedLine::errors() const {
    std::vector<float> errors;
    for (const auto& [number, place] : predicted_) {
        const auto acted = acted_.find(number);
        const auto then = acted == acted_.end() ? places_.end() : places_.find(acted->second);
        if (then != places_.end())
            errors.push_back((then->second - place).length());
    }
    std::sort(errors.begin(), errors.end());
    return errors;
}

double PredictedLine::wrongTickShare() const {
    int wrong = 0;
    int all = 0;
    for (const auto& [number, predicted] : predictedTicks_) {
        const auto acted = acted_.find(number);
        if (acted == acted_.end())
            continue;
        ++all;
        wrong += acted->second != predicted;
    }
    return static_cast<double>(wrong) / all;
}
