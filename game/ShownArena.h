#pragma once

#include "client/Clock.h"
#include "game/ArenaFinder.h"
#include "game/ArenaMesh.h"
#include "game/Arenas.h"

#include <chrono>
#include <cstddef>
#include <future>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

namespace drench::game {

/// The arena that is shown: of those known, the one that fits what is seen of the room. Its surface
/// is made in the background, and shown roughly lit where that takes long.
class ShownArena {
  public:
    /// An arena whose surface takes longer is shown roughly lit meanwhile.
    static constexpr std::chrono::milliseconds usualPatience{250};

    /// Shows the first.
    /// @param known  those that rooms may play, the likeliest first; at least one; must outlive
    /// this
    explicit ShownArena(std::vector<KnownArena>& known,
                        client::Time::duration patience = usualPatience);

    /// Gives up the surface that is being made.
    ~ShownArena() { stop_.request_stop(); }
    ShownArena(const ShownArena&) = delete;
    ShownArena& operator=(const ShownArena&) = delete;

    /// The one shown now.
    MapManager& map() const { return known_[shown_].map; }

    /// All that rooms may play.
    const std::vector<KnownArena>& known() const { return known_; }

    /// Waits for the first surface. To be called once, before change().
    ArenaMesh firstSurface();

    /// A room is entered: nothing is known yet of what it plays.
    void enterRoom();

    /// Judges by what the room shows. To be called after enterRoom().
    void see(const client::Snapshot& snapshot);

    /// The surface to draw from now on, if it is another one: better lit, or of the arena that
    /// fits, which is shown from now on.
    std::optional<ArenaMesh> change();

    /// Something else was drawn: change() brings the surface once more.
    void showAgain();

    /// Whether the room can play no other of the known ones.
    bool isCertain() const;

    /// What to tell the player as long as no known arena fits; empty else.
    const std::string& trouble() const { return trouble_; }

  private:
    /// The two stages of a surface.
    struct Making {
        std::size_t arena = 0;
        client::Time roughDue;
        std::future<ArenaMesh> rough;
        std::future<ArenaMesh> lit;
    };

    void make(std::size_t arena);
    std::size_t fitting() const;

    std::vector<KnownArena>& known_;
    client::Time::duration patience_;
    std::size_t shown_ = 0;

    /// False while something else is drawn.
    bool isShown_ = true;
    std::optional<ArenaFinder> finder_;

    /// The arenas in the finder's order.
    std::vector<std::size_t> judged_;
    std::string trouble_;
    std::stop_source stop_;
    Making making_;
};

} // namespace drench::game
