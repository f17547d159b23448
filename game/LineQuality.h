#pragma once

#include "client/Session.h"

#include <deque>
#include <string>

namespace drench::game {

/// How the line to the room has been lately, from counts that only grow.
class LineQuality {
  public:
    using Time = client::Time;

    /// What was counted since the session began, and how long ways take.
    struct Counts {
        std::uint64_t datagrams = 0;
        std::uint64_t lostDatagrams = 0;
        std::uint64_t snapshots = 0;
        std::uint64_t missedSnapshots = 0;

        /// Milliseconds; 0 where unknown.
        double roundTrip = 0.0;
        double jitter = 0.0;

        /// What our own frames take, since what comes meanwhile is heard that much later.
        double frame = 0.0;
        Time lastSnapshot;
    };

    /// The counts at this moment. Moments never go back.
    void add(Time now, const Counts& counts);

    /// A new session counts from nothing.
    void forget() { samples_.clear(); }

    /// Shares, 0 to 1, of the last seconds: own datagrams or their receipts, and snapshots.
    double lossShare() const;
    double missedShare() const;

    /// What is bad about the line, in plain words; empty while it is good.
    std::string words() const;

  private:
    struct Sample {
        Time moment;
        Counts counts;
    };

    std::deque<Sample> samples_;
};

/// The counts of a session that plays.
LineQuality::Counts countsOf(const client::Session& session, double frame,
                             client::Time lastSnapshot);

} // namespace drench::game
