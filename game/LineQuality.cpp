#include "game/LineQuality.h"

#include "common/Decimals.h"

#include <algorithm>
#include <limits>

namespace drench::game {

namespace {

using std::chrono::milliseconds;

/// Long enough for a share of lost datagrams to mean something, short enough to see it change.
constexpr milliseconds window{5000};
constexpr milliseconds sampleGap{250};

/// A session's first seconds say little about times.
constexpr milliseconds leastWatched{3000};

/// Fewer datagrams say nothing about a share.
constexpr std::uint64_t fewest = 40;

/// Three of a hundred lost are felt now and then; from there on the player is told.
constexpr double badShare = 0.03;

/// Milliseconds there and back, of which shots have to be aimed ahead.
constexpr double slowRoundTrip = 150.0;

/// Milliseconds: more than a tick.
constexpr double unevenJitter = 17.0;

/// As long as it takes to notice that all others stand still.
constexpr milliseconds silence{600};

double share(std::uint64_t part, std::uint64_t whole) {
    return whole < fewest ? 0.0 : static_cast<double>(part) / static_cast<double>(whole);
}

/// Some counts fall again when what was thought lost comes late.
std::uint64_t growth(std::uint64_t before, std::uint64_t now) {
    return now > before ? now - before : 0;
}

/// The least of these times without what our frames added, since a single bad moment is no bad
/// line.
template<class Samples, class Counts>
double leastOf(const Samples& samples, double Counts::*time) {
    double least = std::numeric_limits<double>::infinity();
    for (const auto& sample : samples)
        least = std::min(least, sample.counts.*time - sample.counts.frame);
    return least;
}

} // namespace

void LineQuality::add(Time now, const Counts& counts) {
    if (samples_.size() >= 2 && now - samples_[samples_.size() - 2].moment < sampleGap)
        samples_.pop_back();
    samples_.push_back({now, counts});
    while (now - samples_.front().moment > window)
        samples_.pop_front();
}

double LineQuality::lossShare() const {
    if (samples_.empty())
        return 0.0;
    const Counts& begin = samples_.front().counts;
    const Counts& end = samples_.back().counts;
    return share(growth(begin.lostDatagrams, end.lostDatagrams),
                 growth(begin.datagrams, end.datagrams));
}

double LineQuality::missedShare() const {
    if (samples_.empty())
        return 0.0;
    const Counts& begin = samples_.front().counts;
    const Counts& end = samples_.back().counts;
    const std::uint64_t missed = growth(begin.missedSnapshots, end.missedSnapshots);
    return share(missed, missed + growth(begin.snapshots, end.snapshots));
}

std::string LineQuality::words() const {
    if (samples_.empty())
        return "";
    const auto& [moment, counts] = samples_.back();
    const auto quiet = moment - counts.lastSnapshot;
    if (quiet > silence) {
        const double seconds = std::chrono::duration<double>(quiet).count();
        return "no word from the room for " + decimals(seconds, 1) + " s";
    }
    const double lost = std::max(lossShare(), missedShare());
    if (lost > badShare)
        return "bad line: " + decimals(100.0 * lost, 0) + " % lost";
    if (moment - samples_.front().moment < leastWatched)
        return "";
    if (leastOf(samples_, &Counts::roundTrip) > slowRoundTrip)
        return "slow line: " + decimals(counts.roundTrip, 0) + " ms there and back";
    if (leastOf(samples_, &Counts::jitter) > unevenJitter)
        return "uneven line: " + decimals(counts.jitter, 0) + " ms more or less";
    return "";
}

LineQuality::Counts countsOf(const client::Session& session, double frame,
                             client::Time lastSnapshot) {
    const client::RoundTrip& trip = session.roundTrip();
    const client::Statistics& statistics = session.statistics();
    return {trip.datagrams(),
            trip.lost(),
            statistics.snapshots,
            statistics.snapshotsMissed,
            trip.smoothed().value_or(0.0),
            session.tickClock().jitter(),
            frame,
            lastSnapshot};
}

} // namespace drench::game
