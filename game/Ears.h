#pragma once

#include "client/Events.h"
#include "client/Prediction.h"
#include "game/Cues.h"

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace drench::game {

/// Collects what is to be heard of a match, from its events, until the next frame.
class Ears {
  public:
    /// @param map  the room's arena; must outlive this
    explicit Ears(const MapManager& map) : cues_(map) {}

    /// @param ownId  our identifier, 0 for a looker-on
    /// @param own  one's own body as predicted at this moment, which is heard instead of the
    /// snapshot's, so that one's own steps are not late
    void take(const client::Event& event, char ownId,
              const std::optional<client::Prediction::Body>& own);

    /// What has begun since the last call of forget(), and what goes on.
    std::span<const Cue> cues() const { return begun_; }
    const std::vector<HeardJet>& jets() const { return cues_.jets(); }

    /// A frame has passed them on.
    void forget() { begun_.clear(); }

  private:
    void hear(const client::Snapshot& snapshot, char ownId,
              const std::optional<client::Prediction::Body>& own);

    Cues cues_;
    std::vector<Cue> begun_;

    /// The ticks heard last: the room's, and those of the predicted body.
    std::int64_t tick_ = -1;
    std::optional<std::int64_t> ownTick_;
};

} // namespace drench::game
