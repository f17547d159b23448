#pragma once

#include "game/Ears.h"
#include "game/Playback.h"
#include "game/Settings.h"
#include "game/Spectator.h"
#include "game/Staging.h"

#include <optional>
#include <span>

namespace drench::game {

/// A recorded match as it is seen and heard, in a window or in a film: from the moments of a
/// Playback and the place of a Spectator to a Scene and its sounds. What comes of it depends only
/// on what it is told.
class Watching {
  public:
    /// @param map  the room's arena; must outlive this
    Watching(Playback playback, MapManager& map);

    Playback& playback() { return playback_; }
    const Playback& playback() const { return playback_; }
    Spectator& spectator() { return spectator_; }
    const Spectator& spectator() const { return spectator_; }
    const Match& match() const { return playback_.match(); }

    /// The player in whose eye one is or whom one follows; 0 for none and in a flight.
    char watched() const { return watched_; }

    /// Goes on by so many seconds, and sets all in the scene but its time.
    void pass(double seconds, const Settings& settings, Scene& scene);

    /// What began on the way of the latest pass(), and what goes on.
    std::span<const Cue> cues() const { return ears_->cues(); }
    std::span<const HeardJet> jets() const;

  private:
    void beginAnew();

    Playback playback_;
    Spectator spectator_;
    MapManager* map_;
    std::optional<Staging> staging_;
    std::optional<Ears> ears_;
    unsigned leaps_ = 0;
    char watched_ = 0;
};

} // namespace drench::game
