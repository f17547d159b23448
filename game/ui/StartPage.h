#pragma once

#include "game/RoomList.h"
#include "game/Settings.h"
#include "game/ui/Theme.h"

#include <string>

namespace drench::game {

/// Where a room is chosen.
class StartPage {
  public:
    struct Outcome {
        /// The room to join; empty for none.
        std::string room;
        bool hosts = false;
        bool opensSettings = false;
        bool quits = false;

        /// The name or the list of rooms changed.
        bool changed = false;
    };

    /// Draws the page and lets the player change the name.
    Outcome draw(const Theme& theme, Settings& settings, const RoomList& rooms);

  private:
    void drawName(const Theme& theme, Settings& settings, Outcome& outcome);
    void drawRooms(const Theme& theme, Settings& settings, const RoomList& rooms, Outcome& outcome);
    void drawAddress(const Theme& theme, Outcome& outcome);

    std::string address_;
};

} // namespace drench::game
