#pragma once

#include "game/Match.h"
#include "game/PlayedEvents.h"
#include "src/MapManager.h"

#include <array>
#include <cstddef>
#include <optional>
#include <span>
#include <vector>

namespace drench::game {

/// A recorded match at any of its moments, and its way through them: at a speed, paused, or by
/// leaps. What it shows follows from the moment alone, however one got there. Moments are seconds
/// since the recording began.
class Playback {
  public:
    /// Somebody was soaked.
    struct Soaking {
        double moment = 0.0;

        /// Identifiers; 0 if unknown.
        char who = 0;
        char whom = 0;
    };

    /// Seconds of the recording for each one that passes.
    static constexpr std::array<double, 6> speeds{0.1, 0.25, 0.5, 1.0, 2.0, 4.0};

    /// Seconds of what led to a soaking that is shown before it.
    static constexpr double leadToSoaking = 3.0;

    /// Plays from the begin, at the usual speed. Throws InputError if there is no snapshot.
    /// @param events  by ascending moment
    explicit Playback(std::vector<PlayedEvent> events);

    /// The moments of the first snapshot and of the last one.
    double begin() const;
    double end() const;
    double moment() const;

    /// The same moment on the clock of the match.
    client::Time now() const { return now_; }

    /// Goes on by so many seconds at the present speed; pauses at the end.
    void pass(double seconds);

    /// What happened on the way of the latest pass().
    std::span<const PlayedEvent> passed() const;

    /// Leaps to a moment, or to the end that is nearer.
    void seek(double moment);

    /// Leaps to before the next soaking or the last one; false if there is none.
    bool seekNextSoaking();
    bool seekLastSoaking();

    /// By ascending moment.
    const std::vector<Soaking>& soakings() const { return soakings_; }

    /// Grows with every leap: what flows from frame to frame starts anew then.
    unsigned leaps() const { return leaps_; }

    bool isPaused() const { return isPaused_; }
    bool isAtEnd() const { return now_ >= endTime(); }

    /// To go on at the end means to begin anew.
    void setPaused(bool paused);

    double speed() const { return speeds[speed_]; }
    void faster();
    void slower();

    /// The match seen by the player with this identifier; 0 for a looker-on.
    void watchAs(char id) { match_.watchAs(id); }
    const Match& match() const { return match_; }

    /// All players, between the snapshots around this moment. Where snapshots lack for long they
    /// are carried on through no wall of the map, then stand.
    std::vector<PlayerUpdate> players(MapManager& map) const;

    /// The player as seen last before it was soaked, or now; nothing if it was not in the room
    /// within the last seconds.
    std::optional<PlayerUpdate> lastAlive(char id) const;

    /// The identifier of whoever recorded it; 0 if unknown.
    char recorder() const { return recorder_; }

  private:
    /// The match before an event.
    struct Checkpoint {
        std::size_t event = 0;
        Match match;
    };

    const client::Snapshot& snapshot(std::size_t index) const;
    void takeUntil(client::Time moment);
    void findSoakings(const PlayedEvent& event);
    void addSoaking(const Soaking& soaking);
    client::Time endTime() const;

    std::vector<PlayedEvent> events_;

    /// The indices of the events that are snapshots.
    std::vector<std::size_t> snapshots_;
    std::vector<Checkpoint> checkpoints_;
    std::vector<Soaking> soakings_;
    char recorder_ = 0;

    client::Time now_;
    Match match_;

    /// The events that the match has taken, and those before the latest pass().
    std::size_t taken_ = 0;
    std::size_t takenBefore_ = 0;
    std::size_t speed_ = 3;
    unsigned leaps_ = 0;
    bool isPaused_ = false;
};

} // namespace drench::game
