#pragma once

#include "client/Clock.h"
#include "common/GapHistogram.h"
#include "src/Messages.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace drench::bots {

/// The counts of one player, over all its times in the room.
struct Tally {
    /// Times that the room let it in.
    long joined = 0;

    /// Deaths are read from the pose, which lasts for seconds, and points are soaks minus deaths.
    /// So both come from snapshots and survive the loss of some. Notices might get lost, and only
    /// hold names, which several players may share.
    long soaks = 0;
    long deaths = 0;

    /// Times that the fire key was held without a break, and the number of them that soaked
    /// somebody.
    long bursts = 0;
    long burstsThatSoaked = 0;

    /// World units walked while alive.
    double distance = 0.0;

    std::uint64_t snapshots = 0;
    std::uint64_t snapshotsMissed = 0;

    /// Gaps between the arrivals of successive snapshots.
    GapHistogram gaps;

    /// Milliseconds, the latest estimate; absent while unknown.
    std::optional<double> roundTrip;

    /// The share of bursts that soaked somebody; absent without a burst.
    std::optional<double> accuracy() const;

    /// Adds the counts of another player, but not its round trip.
    void add(const Tally& other);
};

/// The middle value, the upper one of two; absent when there is none.
std::optional<double> upperMedian(std::vector<double> values);

/// Watches one player in its snapshots and keeps its tally.
class Scorer {
  public:
    /// The room has let the player in, at any place and with any points.
    void join();

    /// A snapshot came.
    /// @param self  the player in it
    /// @param missed  snapshots missed since joining, in client::Statistics; it may sink again
    void see(const PlayerUpdate& self, std::uint64_t missed, client::Time arrival);

    void measureRoundTrip(double milliseconds) { tally_.roundTrip = milliseconds; }

    const Tally& tally() const { return tally_; }

  private:
    void countSoaks(const PlayerUpdate& self, bool died);

    struct Seen {
        vec3 position;
        std::int32_t points;
        bool shooting;
        bool dead;
        client::Time arrival;
    };

    Tally tally_;

    /// Snapshots missed in the times before the latest join.
    std::uint64_t missedBefore_ = 0;

    /// The last snapshot since joining.
    std::optional<Seen> last_;

    /// Whether the latest burst has soaked somebody.
    bool burstHasSoaked_ = false;
};

} // namespace drench::bots
