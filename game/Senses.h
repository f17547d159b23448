#pragma once

#include "client/Bodies.h"
#include "game/Ears.h"
#include "game/Match.h"
#include "game/Scene.h"
#include "game/Settings.h"
#include "game/Staging.h"

#include <optional>

namespace drench::game {

/// What one perceives of a room: from the events of a session to all that is seen and heard. The
/// one place where match, bodies, ears and staging are fed.
class Senses {
  public:
    /// @param map  the arena that is shown; must outlive this
    explicit Senses(MapManager& map) : map_(&map), staging_(map, dropSeed) {}

    /// Another arena is shown: all but the match begins anew in it.
    void changeArena(MapManager& map);

    /// There is no room any more.
    void forget();

    /// To be called after each Session::service(now).
    void serviced(client::Session& session, client::Time now);

    void take(const client::Event& event, const client::Session& session, client::Time now);

    /// The state as it is drawn when a snapshot has just been taken in: see
    /// client::Bodies::shown().
    /// @param self  ourselves in that snapshot
    /// @param now  as given to take()
    UpdateMessage shown(const PlayerUpdate& self, client::Time now, bool ahead) {
        return bodies_->shown(self, own_, now, ahead);
    }

    const Match& match() const { return match_; }

    /// Null as long as no room has let one in.
    client::Bodies* bodies() { return bodies_ ? &*bodies_ : nullptr; }
    Ears* ears() { return ears_ ? &*ears_ : nullptr; }

    /// Sets all in the scene that changes with the match, the eye included. While one is soaked or
    /// not in the room, the eye stays where it was.
    /// @param isInRoom  if not, nobody is seen
    /// @param seconds  since the last call
    void show(Scene& scene, const Settings& settings, bool isInRoom, client::Time now,
              float seconds);

  private:
    /// Where the drops of water fly follows from it.
    static constexpr std::uint64_t dropSeed = 1;

    MapManager* map_;
    Match match_;
    std::optional<client::Bodies> bodies_;

    /// One's own body when the newest snapshot was taken in.
    std::optional<client::Prediction::Body> own_;
    std::optional<Ears> ears_;
    Staging staging_;
};

} // namespace drench::game
