#pragma once

#include "common/Chance.h"
#include "game/Drops.h"
#include "game/Landing.h"
#include "game/Patches.h"
#include "game/Scene.h"

#include <cstdint>
#include <span>
#include <vector>

namespace drench::game {

/// A player who fires.
struct Shooter {
    WetBody body;

    /// The view.
    glm::vec3 direction{0.0f, 0.0f, 1.0f};

    /// Where the water comes out, if no wall is nearer.
    glm::vec3 nozzle{0.0f};
};

/// The point of a jet's curve at a share of its way, 0 at the nozzle, 1 at the end, and the
/// direction of the curve there, not scaled.
glm::vec3 pointOn(const Jet& jet, float share);
glm::vec3 directionOn(const Jet& jet, float share);

/// All water in an arena. It moves by the seconds that pass and by chance from a seed: the same
/// calls make the same water.
class Water {
  public:
    /// Jets at any time, with those that have just ended.
    static constexpr std::size_t mostJets = 12;

    /// @param map  the room's arena; must outlive this
    Water(const MapManager& map, std::uint64_t seed);

    /// Time passes; a long time counts as a tenth of a second.
    /// @param shooters  those who fire now, each player at most once; whoever fires no more is not
    ///                  among them
    /// @param bodies  of all living players
    void advance(float seconds, std::span<const Shooter> shooters, std::span<const WetBody> bodies);

    /// Somebody is soaked here.
    void burst(glm::vec3 place);

    const std::vector<Jet>& jets() const { return jets_; }
    const std::vector<Drop>& drops() const { return drops_.inFlight(); }
    const std::vector<Patch>& splashes() const { return patches_.patches(); }
    const arena::Grid& grid() const { return grid_; }

  private:
    /// What is not drawn of the jet at the same index.
    struct Flow {
        bool isFed = true;

        /// Seconds from the nozzle to the end.
        float flight = 0.1f;

        /// Where it lands; nothing for a jet that ends in the air.
        std::optional<Landing> landing;

        /// Drops and splashes that are due, with their fractions.
        float drips = 0.0f;
        float sprays = 0.0f;
        float splashes = 0.0f;
    };

    std::size_t flowOf(const Shooter& shooter);
    void aim(std::size_t index, const Shooter& shooter, std::span<const WetBody> bodies,
             float seconds, bool isNew);
    void aimIntoSky(std::size_t index, const Shooter& shooter);
    void run(std::size_t index, float seconds);
    void spray(std::size_t index, float seconds);

    const MapManager* map_;
    arena::Grid grid_;
    Chance chance_;
    std::vector<Jet> jets_;
    std::vector<Flow> flows_;
    Drops drops_;
    WetPatches patches_;
};

} // namespace drench::game
