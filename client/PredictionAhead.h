#pragma once

#include "client/ArrivalLine.h"
#include "client/Hypothesis.h"
#include "src/Player.h"

#include <cstdint>
#include <vector>

namespace drench::client {

/// One's own player in the ticks after an explained one, under the records that should act in them.
class PredictionAhead {
  public:
    /// The player at a moment of drawing; ticks are counted from the explained one.
    struct Moment {
        /// At the end of the tick in which a record sent then acts, and that tick.
        Player player;
        int tick;

        /// The place that the drawn clock shows, and its time in ticks.
        vec3 eye;
        double drawnTick;
    };

    /// Goes on from what is now explained, and plays the ticks in which nothing that is sent from
    /// `now` on can act. What was played already stays where it is still right. To be called for
    /// each snapshot, and when records were sent or forgotten.
    void follow(const Hypothesis& explained, const SentRecords& records, const ArrivalLine& line,
                Milliseconds now);

    /// Nothing is explained.
    void clear() { states_.clear(); }

    /// The player at `now`; only behind follow().
    Moment at(const SentRecords& records, const ArrivalLine& line, Milliseconds now) const;

  private:
    /// A player after a tick, and the first record that acts after it.
    struct State {
        Player player;
        std::uint64_t next;

        void play(const SentRecords& records, const ArrivalLine& line, int tick, bool isLast);
    };

    void keepWhatIsRight(const Hypothesis& explained, const SentRecords& records,
                         const ArrivalLine& line);

    /// After the explained tick, and after each that is played.
    std::vector<State> states_;
};

} // namespace drench::client
