#pragma once

#include "game/ArenaFinder.h"
#include "game/ArenaMesh.h"
#include "game/Arenas.h"

#include <cstddef>
#include <future>
#include <optional>
#include <string>
#include <vector>

namespace drench::game {

/// The arena that is shown: of those known, the one that fits what is seen of the room. The surface
/// of another one is made in the background.
class ShownArena {
  public:
    /// Shows the first.
    /// @param known  those that rooms may play, the likeliest first; at least one; must outlive
    /// this
    explicit ShownArena(std::vector<KnownArena>& known) : known_(known) {}

    /// The one shown now.
    MapManager& map() const { return known_[shown_].map; }

    /// A room is entered: nothing is known yet of what it plays.
    void enterRoom();

    /// Judges by what the room shows. To be called after enterRoom().
    void see(const client::Snapshot& snapshot);

    /// Changes to the arena that fits, once its surface is made, and returns that; nothing else.
    std::optional<ArenaMesh> change();

    /// Whether the room can play no other of the known ones.
    bool isCertain() const;

    /// What to tell the player as long as no known arena fits; empty else.
    const std::string& trouble() const { return trouble_; }

  private:
    void make(std::size_t arena);

    std::vector<KnownArena>& known_;
    std::size_t shown_ = 0;
    std::optional<ArenaFinder> finder_;

    /// The arenas in the finder's order.
    std::vector<std::size_t> judged_;
    std::string trouble_;

    /// The arena whose surface is made.
    std::size_t making_ = 0;
    std::future<ArenaMesh> mesh_;
};

} // namespace drench::game
