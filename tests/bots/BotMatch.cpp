#include "tests/bots/BotMatch.h"

#include "tests/support/CapturedOutput.h"
#include "tests/support/Datagrams.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

using namespace drench;

namespace {

/// Everything held is told again after so many ticks, as a respawn releases all keys.
constexpr int tellAgain = 30;

constexpr int fourSeconds = 250;

constexpr float staySquare = 128.0f;

/// Whether positions lie within the square that counts as one place.
bool isOnePlace(const std::deque<vec3>& positions) {
    const auto extent = [&](float vec3::*axis) {
        const auto [low, high] =
            std::minmax_element(positions.begin(), positions.end(),
                                [&](const vec3& a, const vec3& b) { return a.*axis < b.*axis; });
        return (*high).*axis - (*low).*axis;
    };
    return extent(&vec3::x) <= staySquare && extent(&vec3::z) <= staySquare;
}

} // namespace

BotMatch::BotMatch(const Setup& setup) : room_(setup.arena) {
    srand(setup.seed);
    std::uint64_t seed = std::uint64_t{setup.seed} << 8;
    for (const double skill : setup.skills) {
        Seat seat{bots::Bot(setup.roadmap, skill, ++seed),
                  std::make_unique<UdpPeer>(),
                  0,
                  std::deque<Controls>(static_cast<std::size_t>(setup.delay)),
                  {},
                  0,
                  {},
                  false,
                  0,
                  false,
                  {}};
        seat.id = room_.join("Bot " + std::to_string(seats_.size() + 1), *seat.peer);
        seats_.push_back(std::move(seat));
    }
    scores_.resize(seats_.size());
}

/// The state that everybody was sent; whatever else came is dropped.
UpdateMessage BotMatch::receive() {
    UpdateMessage state;
    for (Seat& seat : seats_) {
        for (const std::string& datagram : seat.peer->received())
            readState(datagram, state);
    }
    return state;
}

void BotMatch::play(int ticks) {
    const CapturedOutput quiet;
    for (int tick = 0; tick < ticks; ++tick) {
        room_.tick();
        const UpdateMessage state = receive();
        for (std::size_t i = 0; i < seats_.size(); ++i) {
            Seat& seat = seats_[i];
            const Controls controls = seat.bot.decide(state, seat.id);
            hash(controls);
            seat.sent.push_back(controls);
            send(seat, seat.sent.front());
            seat.sent.pop_front();
            for (const PlayerUpdate& update : state.updates) {
                if (update.id == seat.id)
                    note(seat, scores_[i], update);
            }
        }
    }
}

void BotMatch::note(Seat& seat, Score& score, const PlayerUpdate& now) {
    const bool alive = bots::isInWorld(room_.server.mapMan, now.position);
    const bool died = seat.wasAlive && !alive;
    const int soaks = now.points - seat.last.points + (died ? 1 : 0);
    score.deaths += died;
    if (died) {
        ++score.lives;
        score.shortLives += seat.lived <= fourSeconds;
    }
    seat.lived = alive ? seat.lived + 1 : 0;
    score.soaks += soaks;
    if (soaks > 0 && !seat.burstSoaked) {
        ++score.burstsThatSoaked;
        seat.burstSoaked = true;
    }
    if (now.shooting && !seat.last.shooting) {
        ++score.bursts;
        seat.burstSoaked = false;
    }
    if (!alive || !seat.wasAlive) {
        seat.stay.clear();
    } else {
        score.distance += std::hypot(static_cast<double>(now.position.x - seat.last.position.x),
                                     static_cast<double>(now.position.z - seat.last.position.z));
        seat.stay.push_back(now.position);
        while (!isOnePlace(seat.stay))
            seat.stay.pop_front();
        score.longestStay = std::max(score.longestStay, static_cast<int>(seat.stay.size()));
    }
    seat.wasAlive = alive;
    seat.last = now;
}

void BotMatch::hash(const Controls& controls) {
    // FNV-1a, 64 bits (Fowler, Noll, Vo).
    const auto add = [&](int value) {
        decisions_ = (decisions_ ^ static_cast<unsigned>(value)) * 1099511628211u;
    };
    for (const bool held : controls.held)
        add(held);
    add(controls.jump);
    add(controls.dx);
    add(controls.dy);
}

void BotMatch::send(Seat& seat, const Controls& controls) {
    const bool everything = ++seat.sinceTold >= tellAgain;
    if (everything)
        seat.sinceTold = 0;
    for (int key = 0; key < keyIndex::count; ++key) {
        if (key != keyIndex::jump && (everything || controls.held[key] != seat.told.held[key]))
            room_.queue(keyDatagram(seat.id, key, controls.held[key]), *seat.peer);
    }
    if (controls.jump)
        room_.queue(keyDatagram(seat.id, keyIndex::jump, true), *seat.peer);
    if (controls.dx != 0 || controls.dy != 0)
        room_.queue(viewDatagram(seat.id, controls.dx, controls.dy), *seat.peer);
    seat.told = controls;
}

int BotMatch::soaks() const {
    int sum = 0;
    for (const Score& score : scores_)
        sum += score.soaks;
    return sum;
}

int BotMatch::longestStay() const {
    int longest = 0;
    for (const Score& score : scores_)
        longest = std::max(longest, score.longestStay);
    return longest;
}

std::vector<vec3> BotMatch::positions() const {
    std::vector<vec3> all;
    for (const Seat& seat : seats_) {
        if (seat.wasAlive)
            all.push_back(seat.last.position);
    }
    return all;
}
