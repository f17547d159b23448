#include "bots/Play.h"

#include "bots/Ending.h"
#include "bots/Names.h"
#include "client/Records.h"
#include "src/Player.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <stdexcept>
#include <sys/epoll.h>
#include <unistd.h>

namespace drench::bots {

namespace {

using client::Time;
using std::chrono::milliseconds;

/// A player asks a full room again after this time, in which somebody may have left.
constexpr milliseconds patience{5000};

/// A player that is out for another reason asks again after this time at first, and then after
/// twice the previous time.
constexpr milliseconds shortestRetry{500};

/// Doubling ends here, so that a room that comes back is found within seconds.
constexpr milliseconds longestRetry{8000};

/// One service to hear, and one to send what follows from it. A room that floods us may always have
/// more to hear.
constexpr int servicesAtOnce = 2;

/// World units by which the body tested against cubes is smaller than a player's: rounding may
/// leave a body a little within a cube.
constexpr float tolerance = 2.0f;

bool canBeThere(const MapManager& map, vec3 position) {
    const vec3 margin(tolerance, tolerance, tolerance);
    const bool within = position.x > 0.0f && position.x < map.width && position.z > 0.0f &&
                        position.z < map.length && position.y > 0.0f;
    return within && !map.collides(Box(position, Player::bodySize - margin));
}

milliseconds retryAfter(int failures) {
    return std::min(shortestRetry * (1 << std::min(failures, 10)), longestRetry);
}

std::string numbered(const std::string& name, int number) {
    return name + ' ' + std::to_string(number);
}

} // namespace

Controls combined(const Controls& earlier, const Controls& later) {
    Controls both = later;
    both.jump = earlier.jump || later.jump;
    both.dx += earlier.dx;
    both.dy += earlier.dy;
    return both;
}

void send(client::Session& session, const Controls& controls) {
    for (int key = 0; key < keyIndex::count; ++key) {
        if (key != keyIndex::jump)
            session.setKey(key, controls.held[key]);
    }
    if (controls.jump)
        session.setKey(keyIndex::jump, true);
    if (controls.dx != 0 || controls.dy != 0)
        session.turn(controls.dx, controls.dy);
}

Play::Play(const Roadmap& roadmap, std::vector<client::RoomAddress> rooms,
           const PlayOptions& options, std::function<void(const std::string&)> note)
    : roadmap_(roadmap), rooms_(std::move(rooms)), skill_(options.skill), sight_(options.sight),
      tap_(options.tap), note_(std::move(note)), epoll_(epoll_create1(EPOLL_CLOEXEC)),
      told_(rooms_.size()) {
    if (epoll_ < 0)
        throw std::runtime_error(std::string("no epoll instance: ") + std::strerror(errno));
    Chance chance(options.seed);
    for (std::size_t room = 0; room < rooms_.size(); ++room) {
        const std::vector<std::string> names = namesFor(options.playersPerRoom, chance.bits());
        for (int i = 0; i < options.playersPerRoom; ++i) {
            const std::string name = options.name.empty() ? names[static_cast<std::size_t>(i)]
                                                          : numbered(options.name, i + 1);
            seats_.push_back({room, name, chance.split()});
        }
    }
    if (options.keepTracks) {
        tracks_.reserve(static_cast<std::size_t>(options.playersPerRoom));
        for (Seat& seat : seats_) {
            if (seat.room == 0)
                seat.track = &tracks_.emplace_back(seat.name);
        }
    }
}

Play::~Play() {
    leave();
    close(epoll_);
}

void Play::step(Time until) {
    const auto dueAt = [](const Seat& seat) {
        return seat.session ? seat.session->wakeAt() : seat.nextJoin;
    };
    for (const Seat& seat : seats_)
        until = std::min(until, dueAt(seat));
    const auto left = std::chrono::ceil<milliseconds>(until - client::Clock::now());
    std::array<epoll_event, 64> ready;
    const int count = epoll_wait(epoll_, ready.data(), static_cast<int>(ready.size()),
                                 static_cast<int>(std::max(left, milliseconds(0)).count()));
    for (int i = 0; i < count; ++i)
        serve(seats_[ready[static_cast<std::size_t>(i)].data.u32], client::Clock::now());
    const Time now = client::Clock::now();
    for (Seat& seat : seats_) {
        if (dueAt(seat) <= now)
            serve(seat, now);
    }
}

void Play::leave() {
    const Time now = client::Clock::now();
    for (Seat& seat : seats_) {
        if (seat.session)
            seat.session->leave(now);
        seat.session.reset();
        seat.nextJoin = Time::max();
    }
}

void Play::serve(Seat& seat, Time now) {
    if (!seat.session)
        join(seat, now);
    if (!seat.session)
        return;
    // Events are taken after the last service too, since they would not wake us later. Controls
    // that follow from them are due at once, and so sent by the next step.
    for (int i = 0; i < servicesAtOnce && seat.session; ++i) {
        seat.session->service(now);
        if (seat.bodies)
            seat.bodies->serviced(*seat.session, now);
        if (!takeEvents(seat, now))
            return;
    }
}

void Play::join(Seat& seat, Time now) {
    const client::RoomAddress& room = rooms_[seat.room];
    // The first seats are those of the first room.
    const auto number = static_cast<std::uint32_t>(&seat - seats_.data());
    std::string problem;
    seat.session = client::Session::join(room.address, seat.name, now, problem,
                                         client::onLine(seat.room == 0 ? tap_ : nullptr, number));
    epoll_event readable = {};
    readable.events = EPOLLIN;
    readable.data.u32 = number;
    if (seat.session &&
        epoll_ctl(epoll_, EPOLL_CTL_ADD, seat.session->descriptor(), &readable) != 0)
        problem = std::strerror(errno);
    if (!problem.empty())
        giveUp(seat, now + retryAfter(seat.failures++), problem);
}

/// Takes the session's events and answers them; false if there were none.
bool Play::takeEvents(Seat& seat, Time now) {
    bool any = false;
    std::optional<Controls> controls;
    while (const std::optional<client::Event> event = seat.session->nextEvent()) {
        any = true;
        if (std::get_if<client::Joined>(&*event)) {
            seat.scorer.join();
            seat.bot.emplace(roadmap_, skill_, seat.chance.bits());
            if (sight_ != Sight::newest)
                seat.bodies.emplace(*roadmap_.map);
            if (seat.failures > 0)
                told_[seat.room].trouble.clear();
            seat.failures = 0;
        } else if (const auto* snapshot = std::get_if<client::Snapshot>(&*event)) {
            see(seat, *snapshot, controls);
        } else if (const std::string ending = endingBy(*event); !ending.empty()) {
            const bool full = std::get_if<client::Refused>(&*event);
            giveUp(seat, now + (full ? patience : retryAfter(seat.failures++)),
                   ending + "; trying again");
            return true;
        }
    }
    if (controls)
        send(seat, *controls);
    return any;
}

void Play::send(Seat& seat, const Controls& controls) {
    bots::send(*seat.session, controls);
    if (const std::optional<std::string> remark = seat.bot->remark())
        seat.session->say(*remark);
}

void Play::see(Seat& seat, const client::Snapshot& snapshot, std::optional<Controls>& controls) {
    const PlayerUpdate* self = seat.session->self(snapshot.state);
    if (!self || !seat.bot)
        return;
    seat.scorer.see(*self, seat.session->statistics().snapshotsMissed, snapshot.arrival);
    if (const std::optional<double> roundTrip = seat.session->roundTrip().smoothed())
        seat.scorer.measureRoundTrip(*roundTrip);
    if (seat.track)
        seat.track->see(*self);
    tellOfOtherArena(seat, *self);
    const Controls decided = seat.bot->decide(sightOf(seat, snapshot), self->id);
    controls = controls ? combined(*controls, decided) : decided;
}

/// The state by which the bot decides.
UpdateMessage Play::sightOf(Seat& seat, const client::Snapshot& snapshot) const {
    if (!seat.bodies)
        return snapshot.state;
    seat.bodies->take(snapshot, *seat.session);
    return seat.bodies->shown(*seat.session->self(snapshot.state),
                              seat.bodies->own(snapshot.arrival), snapshot.arrival,
                              sight_ == Sight::ahead);
}

void Play::giveUp(Seat& seat, Time again, const std::string& trouble) {
    seat.session.reset();
    seat.bot.reset();
    seat.bodies.reset();
    if (seat.track)
        seat.track->breakOff();
    seat.nextJoin = again;
    std::string& told = told_[seat.room].trouble;
    if (told != trouble)
        note_(rooms_[seat.room].name + ": " + trouble);
    told = trouble;
}

void Play::tellOfOtherArena(const Seat& seat, const PlayerUpdate& self) {
    bool& told = told_[seat.room].otherArena;
    if (told || client::isSoaked(self) || canBeThere(*roadmap_.map, self.position))
        return;
    told = true;
    note_(rooms_[seat.room].name + ": plays an arena that the bots do not know: " + seat.name +
          " stands where nobody can; name its file with --arena");
}

Standing Play::standing() const {
    Standing standing;
    standing.players = seats_.size();
    std::vector<double> roundTrips;
    for (const Seat& seat : seats_) {
        const Tally& tally = seat.scorer.tally();
        standing.snapshots += tally.snapshots;
        standing.soaks += tally.soaks;
        if (!seat.session || !seat.session->isPlaying())
            continue;
        ++standing.playing;
        if (tally.roundTrip)
            roundTrips.push_back(*tally.roundTrip);
    }
    standing.medianRoundTrip = upperMedian(roundTrips);
    return standing;
}

std::vector<PlayerReport> Play::players() const {
    std::vector<PlayerReport> reports;
    for (const Seat& seat : seats_)
        reports.push_back({rooms_[seat.room].name, seat.name, seat.scorer.tally()});
    return reports;
}

} // namespace drench::bots
