#include "bench/PlayedLife.h"

#include "bench/Process.h"
#include "client/Session.h"

#include <algorithm>
#include <ctime>
#include <netinet/in.h>
#include <optional>
#include <poll.h>
#include <stdexcept>
#include <variant>

namespace drench::bench {

namespace {

using client::Clock;
using client::Event;
using client::Session;
using client::Time;

constexpr char playerName[] = "Player";

/// Milliseconds.
constexpr double longestWait = 10'000.0;
constexpr double frameEvery = 1000.0 / 120.0;
constexpr double observerTurnsEvery = 8.0;

/// The player stands still for this long before it leaves, so that its last records are decided.
constexpr double quietEnd = 1000.0;

double milliseconds(Time at) {
    return std::chrono::duration<double, std::milli>(at.time_since_epoch()).count();
}

Time timeAt(double milliseconds) {
    return Time(std::chrono::duration_cast<Clock::duration>(
        std::chrono::duration<double, std::milli>(milliseconds)));
}

/// Processor time of this thread: others on the machine do not count.
double usedMicroseconds() {
    timespec used;
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &used);
    return static_cast<double>(used.tv_sec) * 1e6 + static_cast<double>(used.tv_nsec) * 1e-3;
}

Session join(int port, const std::string& name) {
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    std::string problem;
    std::optional<Session> session = Session::join(address, name, Clock::now(), problem);
    if (!session)
        throw std::runtime_error(problem);
    return std::move(*session);
}

void require(bool holds, const char* problem) {
    if (!holds)
        throw std::runtime_error(problem);
}

class Life {
  public:
    Life(const Programs& programs, MapManager& map, const LineUnderTest& line, Hands hands)
        : room_(startRoom(programs.server, allowedCores().back())),
          relay_(line.options.empty()
                     ? std::nullopt
                     : std::optional<Room>(startRelay(programs.relay, room_, line.options))),
          observer_(join(room_.port, "Observer")), prediction_(map), hands_(hands) {
        await([&] { return observer_.isPlaying() && !life_.observed.empty(); });
        player_ = join(relay_ ? relay_->port : room_.port, playerName);
        await([&] { return !life_.takings.empty(); });
    }

    PlayedLife play(double seconds) {
        const double begin = milliseconds(Clock::now());
        const double end = begin + seconds * 1000.0;
        double nextFrame = begin;
        Move move = hands_.next();
        for (;;) {
            const double nextMove = begin + move.at;
            const double now = milliseconds(Clock::now());
            if (now >= end + quietEnd)
                break;
            if (nextMove < end && now >= nextMove) {
                make(move);
                move = hands_.next();
            } else if (now >= nextFrame) {
                draw();
                // After a stall the frames that were missed are not made up for.
                nextFrame = std::max(nextFrame + frameEvery, now);
            }
            serve(std::min(nextFrame, nextMove < end ? nextMove : end + quietEnd));
        }
        life_.statistics = prediction_.statistics();
        collectSightings();
        return std::move(life_);
    }

  private:
    template<class Condition>
    void await(const Condition& holds) {
        const double deadline = milliseconds(Clock::now()) + longestWait;
        while (!holds()) {
            const double now = milliseconds(Clock::now());
            require(now < deadline, "nobody let in");
            serve(now + 5.0);
        }
    }

    /// Waits until the moment, or until there is something to receive or send; then does that.
    void serve(double moment) {
        Time wake = std::min(timeAt(std::min(moment, nextStamp_)), observer_.wakeAt());
        if (player_)
            wake = std::min(wake, player_->wakeAt());
        const auto left = std::max(Clock::duration(0), wake - Clock::now());
        timespec timeout = {};
        timeout.tv_sec = std::chrono::floor<std::chrono::seconds>(left).count();
        timeout.tv_nsec = (left - std::chrono::floor<std::chrono::seconds>(left)).count();
        pollfd readable[] = {{observer_.descriptor(), POLLIN, 0},
                             {player_ ? player_->descriptor() : -1, POLLIN, 0}};
        ppoll(readable, 2, &timeout, nullptr);

        // Turned a little all the time, no two of the room's states are alike.
        const Time now = Clock::now();
        if (milliseconds(now) >= nextStamp_) {
            nextStamp_ = milliseconds(now) + observerTurnsEvery;
            observer_.turn(1, 0);
        }
        observer_.service(now);
        require(observer_.isOpen(), "the observer was dropped");
        while (const std::optional<Event> event = observer_.nextEvent()) {
            if (const auto* snapshot = std::get_if<client::Snapshot>(&*event)) {
                life_.observed.push_back(snapshot->state);
                arrivals_.push_back(milliseconds(snapshot->arrival));
                periods_.push_back(observer_.tickClock().period());
            }
        }
        servePlayer(std::nullopt);
    }

    void servePlayer(std::optional<int> changedKey) {
        if (!player_)
            return;
        const Time now = Clock::now();
        player_->service(now);
        require(player_->isOpen(), "the player was dropped");
        noteSent(now, changedKey);
        while (const std::optional<Event> event = player_->nextEvent()) {
            if (const auto* snapshot = std::get_if<client::Snapshot>(&*event))
                take(*snapshot);
        }
    }

    void noteSent(Time now, std::optional<int> changedKey) {
        prediction_.sent(player_->sentInputs(), now);
        const std::optional<client::Prediction::Body> body = prediction_.body(now);
        for (const client::InputRecord& input : player_->sentInputs()) {
            const std::optional<client::SentRecord> record =
                client::SentRecord::of(input, milliseconds(now));
            if (!record)
                continue;
            PlayedLife::Sending sending;
            sending.isChange = record->isView || changedKey == record->key;
            if (record->isView) {
                for (; carried_ < life_.losses.size(); ++carried_)
                    life_.losses[carried_].carrier = life_.records.end();
            }
            if (body) {
                sending.predicted = body->player.position;
                sending.isPredicted = true;
                sending.taking = life_.takings.size() - 1;
                sending.ticksAhead = body->tick - prediction_.tick();
            }
            life_.records.add(*record);
            life_.sendings.push_back(sending);
        }
    }

    void take(const client::Snapshot& snapshot) {
        PlayedLife::Taking taking;
        taking.state = snapshot.state;
        const double before = usedMicroseconds();
        prediction_.take(snapshot, player_->id(), player_->roundTrip().smoothed(),
                         player_->tickClock().period());
        taking.microseconds = usedMicroseconds() - before;
        taking.hypotheses = prediction_.hypotheses();
        life_.takings.push_back(taking);
        const std::vector<client::InputRecord> lost = prediction_.takeLost();
        for (const client::InputRecord& record : lost) {
            life_.losses.push_back({record, milliseconds(snapshot.arrival)});
            player_->sendAgain(record);
        }
    }

    void make(const Move& move) {
        if (move.key)
            player_->setKey(*move.key, move.isDown);
        else
            player_->turn(move.dx, move.dy);
        servePlayer(move.key);
    }

    void draw() {
        const Time now = Clock::now();
        const std::optional<client::Prediction::Body> body = prediction_.body(now);
        if (!body)
            return;
        PlayedLife::Frame frame;
        frame.taking = life_.takings.size() - 1;
        frame.recordsSent = life_.records.end();
        frame.drawnAhead = body->drawnTick - static_cast<double>(prediction_.tick());
        frame.eye = body->eye;
        life_.frames.push_back(frame);
    }

    void collectSightings() {
        for (std::size_t tick = 0; tick < life_.observed.size(); ++tick) {
            const PlayerUpdate* const seen =
                client::playerWith(life_.observed[tick], player_->id());
            if (!seen)
                continue;
            if (life_.sightings.empty())
                life_.firstSighting = tick;
            life_.sightings.push_back({*seen, arrivals_[tick], periods_[tick]});
        }
    }

    Room room_;
    std::optional<Room> relay_;
    Session observer_;
    std::optional<Session> player_;
    client::Prediction prediction_;
    Hands hands_;
    PlayedLife life_;

    /// Of each observed tick.
    std::vector<double> arrivals_;
    std::vector<double> periods_;
    double nextStamp_ = 0.0;

    /// Losses whose counts have been sent again.
    std::size_t carried_ = 0;
};

} // namespace

PlayedLife playLife(const Programs& programs, MapManager& map, const LineUnderTest& line,
                    Hands::Habit habit, std::uint64_t seed, double seconds) {
    return Life(programs, map, line, Hands(habit, seed)).play(seconds);
}

} // namespace drench::bench
