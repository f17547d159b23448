#pragma once

#include "bots/Eyes.h"
#include "bots/Skill.h"
#include "bots/View.h"
#include "src/MapManager.h"

#include <vector>

namespace drench::bots {

/// Whether a shot soaks a body at `body` by the server's rules: up to the first cube, and never
/// into the open sky.
bool soaks(const MapManager& map, vec3 from, View view, vec3 body);

/// The finger on the fire key: pulls if a shot soaks a player in sight or is about to, but not for
/// a player whom it spares.
class Trigger {
  public:
    explicit Trigger(const Skill& skill) : skill_(skill) {}

    /// Whether the key is held. `from` and `view` are those of the next shot; `velocity` and
    /// `speed` are their changes in a tick. The sightings are `delay` ticks older than that shot.
    bool pull(const MapManager& map, vec3 from, vec3 velocity, View view, View speed,
              const std::vector<Sighting>& known, double delay);

    void release() { held_ = 0; }

  private:
    Skill skill_;

    /// Ticks for which the key stays down; a press and its release in one tick would cancel.
    int held_ = 0;
};

} // namespace drench::bots
