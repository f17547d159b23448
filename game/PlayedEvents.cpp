#include "game/PlayedEvents.h"

#include "client/Notices.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <deque>
#include <utility>
#include <variant>

namespace drench::game {

namespace {

using Seconds = std::chrono::duration<double>;

/// Snapshots to either side of one from which the line of ticks is drawn there: about a second.
constexpr std::size_t reach = 32;

/// A session that is told of anew this soon after the last snapshot is none.
constexpr std::chrono::seconds sessionsApart{1};

/// Arrivals in which client::TickClock finds a loss, and a few more.
constexpr std::size_t findingTime = 12;

/// Periods: when a room or a line lags by more at once, and stays behind, the match stood still.
constexpr double longestDelay = 4.0;

double secondsOf(client::Time time) {
    return Seconds(time.time_since_epoch()).count();
}

client::Time timeAt(double seconds) {
    return client::Time(std::chrono::duration_cast<client::Time::duration>(Seconds(seconds)));
}

Seconds periodOf(const client::TickClock& clock) {
    return std::chrono::duration<double, std::milli>(clock.period());
}

/// For each value the least of those at most `reach` places away.
std::vector<double> leastAround(const std::vector<double>& values) {
    std::vector<double> least(values.size());
    // Indices of values that may be the least of a window yet to come, ascending in both.
    std::deque<std::size_t> candidates;
    std::size_t taken = 0;
    for (std::size_t i = 0; i < values.size(); ++i) {
        for (; taken < values.size() && taken <= i + reach; ++taken) {
            while (!candidates.empty() && values[candidates.back()] >= values[taken])
                candidates.pop_back();
            candidates.push_back(taken);
        }
        while (candidates.front() + reach < i)
            candidates.pop_front();
        least[i] = values[candidates.front()];
    }
    return least;
}

/// For each value the mean of those at most `reach` places away.
std::vector<double> meanAround(const std::vector<double>& values) {
    std::vector<double> sums(values.size() + 1, 0.0);
    for (std::size_t i = 0; i < values.size(); ++i)
        sums[i + 1] = sums[i] + values[i];
    std::vector<double> means(values.size());
    for (std::size_t i = 0; i < values.size(); ++i) {
        const std::size_t from = i - std::min(i, reach);
        const std::size_t to = std::min(i + reach + 1, values.size());
        means[i] = (sums[to] - sums[from]) / static_cast<double>(to - from);
    }
    return means;
}

/// A snapshot and its arrival in seconds.
struct Arrival {
    PlayedEvent* event;
    double time;

    std::int64_t& tick() const { return std::get<client::Snapshot>(event->event).tick; }
};

std::vector<Arrival> arrivalsIn(std::vector<PlayedEvent>& events) {
    std::vector<Arrival> arrivals;
    for (PlayedEvent& each : events) {
        if (std::holds_alternative<client::Snapshot>(each.event))
            arrivals.push_back({&each, secondsOf(each.moment)});
    }
    return arrivals;
}

/// The clock finds a loss some arrivals after it: gives the ticks that were missed their place.
void moveLosses(const std::vector<Arrival>& arrivals) {
    for (std::size_t found = 1; found < arrivals.size(); ++found) {
        const std::int64_t missed = arrivals[found].tick() - arrivals[found - 1].tick() - 1;
        if (missed == 0)
            continue;
        std::size_t first = found;
        for (std::size_t i = found - std::min(found - 1, findingTime); i < found; ++i) {
            if (arrivals[i].time - arrivals[i - 1].time >
                arrivals[first].time - arrivals[first - 1].time)
                first = i;
        }
        for (std::size_t i = first; i < found; ++i)
            arrivals[i].tick() += missed;
    }
}

/// The numbers of the snapshots that a late room sent first after it stood still, of the first
/// snapshot of all, and of one beyond the last.
std::vector<std::size_t> stretches(const std::vector<double>& lags, double period) {
    const auto least = [&](std::size_t from, std::size_t to) {
        return *std::min_element(lags.begin() + static_cast<std::ptrdiff_t>(from),
                                 lags.begin() + static_cast<std::ptrdiff_t>(to));
    };
    std::vector<std::size_t> begins = {0};
    for (std::size_t i = 1; i < lags.size(); ++i) {
        const std::size_t from = std::max(begins.back(), i - std::min(i, findingTime));
        const std::size_t to = std::min(i + findingTime, lags.size());
        if (lags[i] - lags[i - 1] > longestDelay * period &&
            least(i, to) - least(from, i) > longestDelay * period)
            begins.push_back(i);
    }
    begins.push_back(lags.size());
    return begins;
}

/// Moves snapshots from their arrivals to the moments at which they were due.
void smoothArrivals(const std::vector<Arrival>& arrivals, double period) {
    std::vector<double> lags;
    lags.reserve(arrivals.size());
    for (const Arrival& each : arrivals)
        lags.push_back(each.time - static_cast<double>(each.tick()) * period);
    const std::vector<std::size_t> begins = stretches(lags, period);
    double before = 0.0;
    for (std::size_t stretch = 1; stretch < begins.size(); ++stretch) {
        // The earliest arrivals around a snapshot draw its line of ticks; the mean joins the pieces
        // where the line moved.
        const std::vector<double> due =
            meanAround(leastAround({lags.begin() + static_cast<std::ptrdiff_t>(begins[stretch - 1]),
                                    lags.begin() + static_cast<std::ptrdiff_t>(begins[stretch])}));
        for (std::size_t i = 0; i < due.size(); ++i) {
            const Arrival& arrival = arrivals[begins[stretch - 1] + i];
            before = std::max(before, due[i] + static_cast<double>(arrival.tick()) * period);
            arrival.event->moment = timeAt(before);
        }
    }
}

} // namespace

void LineDecoder::take(client::Time arrival, std::string_view datagram) {
    now_ = arrival;
    std::visit([this](const auto& record) { take(record); }, client::readRecord(datagram));
}

void LineDecoder::takeSent(client::Time moment, std::string_view datagram) {
    constexpr char withIdentifier[] = {messageCode::key, messageCode::view, messageCode::chat,
                                       messageCode::keepAlive};
    if (ownId_ != 0 || datagram.size() < 2 || !client::isPlayerId(datagram[1]) ||
        std::ranges::count(withIdentifier, datagram[0]) == 0)
        return;
    now_ = moment;
    ownId_ = datagram[1];
    add(client::Joined{ownId_});
}

void LineDecoder::add(const client::Event& event) {
    if (events_.size() < mostEvents)
        events_.push_back({now_, event});
}

void LineDecoder::take(const AcceptanceMessage& acceptance) {
    // The second answer to a join that was sent twice; the session leaves that place.
    if (isIn_ && now_ - newest_ < sessionsApart)
        return;
    if (hasBegun_) {
        // A session of its own counts its own ticks.
        const double ticks = Seconds(now_ - newest_) / periodOf(clock_);
        firstTick_ = tick_ + std::max<std::int64_t>(1, std::llround(ticks));
        clock_ = {};
    }
    ownId_ = acceptance.id;
    add(client::Joined{acceptance.id});
}

void LineDecoder::take(const UpdateMessage& state) {
    hasBegun_ = true;
    newest_ = now_;
    isIn_ = client::playerWith(state, ownId_) != nullptr;
    tick_ = firstTick_ + clock_.arrival(now_);
    add(client::Snapshot{state, tick_, now_});
}

void LineDecoder::take(const TalkMessage& talk) {
    add(client::wordsOf(talk));
}

std::vector<PlayedEvent> LineDecoder::finish() {
    std::vector<PlayedEvent> events = std::move(events_);
    const std::vector<Arrival> arrivals = arrivalsIn(events);
    moveLosses(arrivals);
    smoothArrivals(arrivals, periodOf(clock_).count());
    std::stable_sort(events.begin(), events.end(), [](const PlayedEvent& a, const PlayedEvent& b) {
        return a.moment < b.moment;
    });
    return events;
}

} // namespace drench::game
