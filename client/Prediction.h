#pragma once

#include "client/ArrivalLine.h"
#include "client/Clock.h"
#include "client/Events.h"
#include "client/Hypothesis.h"
#include "client/Inputs.h"
#include "client/PredictionAhead.h"
#include "client/PredictionSearch.h"
#include "client/VisualError.h"
#include "src/MapManager.h"
#include "src/Player.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace drench::client {

/// One's own body ahead of the snapshots, to the bit.
///
/// The room numbers nothing. But it moves players by the very code that is linked here, so each
/// snapshot tells which of the records sent had acted: only they lead to its bits. From a spawn on,
/// whose state is known whole, a few hypotheses are carried from snapshot to snapshot, and with
/// them all that is not sent: vertical speed, look-at point, held keys. Records that no hypothesis
/// needs are lost. When a snapshot has no explanation, the prediction starts anew from it and
/// follows it within a hundredth of a unit, until the next spawn.
///
/// Ahead of the newest snapshot it plays the records under way in the ticks in which they should
/// act, up to the tick in which a record sent now will act.
class Prediction {
  public:
    /// How a snapshot was explained.
    enum class Match {
        /// To the bit, and so all since the last spawn; a soaked player always is.
        exact,

        /// Within closePosition, since there was a break.
        close,

        /// Not at all: the prediction started anew from it.
        none
    };

    struct Statistics {
        std::uint64_t exact = 0;
        std::uint64_t close = 0;
        std::uint64_t unexplained = 0;

        /// The times that exactness was lost.
        std::uint64_t breaks = 0;

        /// Records that no explanation needs.
        std::uint64_t lostKeys = 0;
        std::uint64_t lostViews = 0;

        /// The share of snapshots explained, 0 to 1; 1 before the first.
        double explainedShare() const;
    };

    /// The body at a moment of drawing.
    struct Body {
        /// At the end of the tick in which a record sent now will act: the view to draw by, and
        /// whatever else a player has.
        Player player;

        /// The number of that tick; each is reached once, so sounds and splashes can hang on it.
        std::int64_t tick;

        /// Between two ticks, with what is left of a correction.
        vec3 eye;

        /// The moment of `eye` in ticks, with its fraction; about `tick`, by a gently corrected
        /// clock.
        double drawnTick = 0.0;
    };

    /// @param map  the room's arena; must outlive the prediction
    explicit Prediction(MapManager& map) : map_(&map) {}

    /// The session has just sent these, at `now`: see Session::sentInputs(). Words, and keys
    /// outside keyIndex, are passed over.
    void sent(const std::vector<InputRecord>& records, Time now);

    /// A snapshot came: explains it. Nothing happens if it does not hold player `id`.
    /// @param roundTrip  in milliseconds, as far as known; only for the first snapshot, and when
    /// many have had no explanation
    /// @param period  milliseconds from tick to tick: TickClock::period()
    Match take(const Snapshot& snapshot, char id, std::optional<double> roundTrip, double period);

    /// The keys and views found lost since the last call, for Session::sendAgain().
    std::vector<InputRecord> takeLost();

    /// The body as drawn at `now`; nothing before the first snapshot and while soaked.
    std::optional<Body> body(Time now) const;

    /// The likeliest state after the newest snapshot's tick; null when body() is nothing.
    const Player* explained() const;

    /// Ticks since the first snapshot, missed ones included, as the explanations have them.
    std::int64_t tick() const { return tick_; }

    /// The tick whose snapshot is due at `now`, with its fraction: tick() and what has passed
    /// since.
    double tickAt(Time now) const;

    const Statistics& statistics() const { return statistics_; }

    /// Hypotheses kept.
    std::size_t hypotheses() const { return hypotheses_.size(); }

    /// The delays as learnt.
    const ArrivalLine& line() const { return line_; }

  private:
    Match explainSnapshot(const Evidence& evidence, bool mayHaveSatOut);
    bool continueFrom(const Evidence& evidence, bool mayHaveSatOut);
    void beSoaked(const Evidence& evidence);
    void breakOff();
    void accept(std::vector<Hypothesis>&& hypotheses, const Evidence& evidence);
    void playAhead(Time now);
    void learnDelay(std::uint64_t from);
    void settleLosses();
    void forgetBefore(std::uint64_t number);
    void count(Match match);

    MapManager* map_;
    SentRecords records_;
    std::vector<Hypothesis> hypotheses_;
    bool isExact_ = true;
    int unexplainedInARow_ = 0;
    std::int64_t tick_ = 0;
    ArrivalLine line_;
    std::vector<InputRecord> lost_;
    PredictionAhead ahead_;
    VisualError error_;
    Statistics statistics_;

    /// The newest snapshot's state of our own, and the players it held.
    std::optional<PlayerUpdate> lastSeen_;
    int lastPlayers_ = 0;
};

} // namespace drench::client
