#pragma once

#include "game/OwnRecordings.h"
#include "game/RoomList.h"
#include "game/Settings.h"
#include "game/ui/Theme.h"

#include <string>
#include <vector>

namespace drench::game {

/// Where a room is chosen.
class StartPage {
  public:
    struct Outcome {
        /// The room to join; empty for none.
        std::string room;

        /// The file of the recording to watch; empty for none.
        std::string recording;
        bool hosts = false;
        bool opensSettings = false;
        bool quits = false;

        /// The name or the list of rooms changed.
        bool changed = false;
    };

    /// Draws the page and lets the player change the name.
    /// @param remark  said below the recordings; empty for which inputs record
    Outcome draw(const Theme& theme, Settings& settings, const RoomList& rooms,
                 const std::vector<OwnRecording>& recordings, const std::string& remark);

  private:
    void drawName(const Theme& theme, Settings& settings, Outcome& outcome);
    void drawRooms(const Theme& theme, Settings& settings, const RoomList& rooms, Outcome& outcome);
    void drawAddress(const Theme& theme, Outcome& outcome);

    void drawRecordings(const Theme& theme, const Bindings& bindings,
                        const std::vector<OwnRecording>& recordings, const std::string& remark,
                        Outcome& outcome);

    std::string address_;
    bool showsRecordings_ = false;
};

} // namespace drench::game
