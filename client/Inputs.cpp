#include "client/Inputs.h"

#include "client/Records.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <limits>
#include <utility>

namespace drench::client {

namespace {

/// The longest time for which a lost key record, or the release of all keys by a respawn, is felt.
constexpr std::chrono::milliseconds resendKeyAfter(250);

/// At a loss of 5 %, one release in 8,000 is lost with all its copies.
constexpr int releaseCopies = 3;

/// More than anybody writes between two calls of service().
constexpr std::size_t mostWords = 16;

std::int32_t saturatingSum(std::int32_t a, std::int32_t b) {
    using Limits = std::numeric_limits<std::int32_t>;
    return static_cast<std::int32_t>(
        std::clamp(std::int64_t{a} + b, std::int64_t{Limits::min()}, std::int64_t{Limits::max()}));
}

bool isToBeSent(const Inputs::Key& key) {
    return key.isDown || key.releasesLeft > 0;
}

} // namespace

void Inputs::setKey(int key, bool down, Time now) {
    if (key < 0 || key >= keyIndex::count)
        return;
    if (key == keyIndex::jump) {
        jump |= down;
        return;
    }
    Key& state = keys[static_cast<std::size_t>(key)];
    if (state.isDown == down)
        return;
    state = {down, down ? 0 : releaseCopies, now};
}

void Inputs::turn(int countsRight, int countsDown) {
    dx = saturatingSum(dx, countsRight);
    dy = saturatingSum(dy, countsDown);
}

void Inputs::say(std::string_view text) {
    if (words.size() < mostWords)
        words.emplace_back(untilZero(text).substr(0, sizeof TalkMessage::text));
}

void Inputs::sendAgain(const InputRecord& lost, Time now) {
    if (const auto* view = std::get_if<ViewMessage>(&lost))
        turn(view->dx, view->dy);
    const auto* const record = std::get_if<KeyMessage>(&lost);
    if (!record)
        return;
    const int index{record->key};
    if (index < 0 || index >= keyIndex::count)
        return;
    if (index == keyIndex::jump) {
        jump = true;
        return;
    }
    Key& key = keys[static_cast<std::size_t>(index)];
    key.sendAt = now;
    if (!key.isDown)
        key.releasesLeft = std::max(key.releasesLeft, 1);
}

bool Inputs::isEmpty() const {
    return !jump && dx == 0 && dy == 0 && words.empty();
}

void Inputs::clear() {
    jump = false;
    dx = 0;
    dy = 0;
    words.clear();
}

Time Inputs::keysDueAt() const {
    Time due = Time::max();
    for (const Key& key : keys) {
        if (isToBeSent(key))
            due = std::min(due, key.sendAt);
    }
    return due;
}

std::vector<InputRecord> Inputs::takeDue(char id, Time now) {
    std::vector<InputRecord> due;
    const auto addKey = [&](int key, bool down) {
        KeyMessage record;
        record.id = id;
        record.key = static_cast<signed char>(key);
        record.down = static_cast<char>(down);
        due.emplace_back(record);
    };
    for (int i = 0; i < keyIndex::count; ++i) {
        if (i == keyIndex::jump && jump)
            addKey(i, true);
        Key& key = keys[static_cast<std::size_t>(i)];
        if (!isToBeSent(key) || now < key.sendAt)
            continue;
        addKey(i, key.isDown);
        key.sendAt = now + resendKeyAfter;
        if (key.releasesLeft > 0)
            --key.releasesLeft;
    }
    if (dx != 0 || dy != 0) {
        ViewMessage record;
        record.id = id;
        record.dx = dx;
        record.dy = dy;
        due.emplace_back(record);
    }
    for (const std::string& text : words) {
        TalkMessage record;
        record.id = id;
        text.copy(record.text, sizeof record.text);
        due.emplace_back(record);
    }
    clear();
    return due;
}

} // namespace drench::client
