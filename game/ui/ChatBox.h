#pragma once

#include "game/ChatLine.h"
#include "game/Match.h"
#include "game/PlayerMark.h"
#include "game/ui/Theme.h"

#include <SDL.h>
#include <optional>
#include <span>
#include <string>

namespace drench::game {

/// What has been said, and the line that is being written.
class ChatBox {
  public:
    enum class Outcome { writing, said, given };

    /// Takes keys and letters while the line is open.
    /// @param words  set to what is to be said, for `said`
    Outcome take(std::span<const SDL_Event> events, std::string& words);

    /// Empties the line, as when it is closed from elsewhere.
    void cancel() { line_.cancel(); }

    /// Draws what was said lately, or with the line all that there is room for.
    /// @param foot  units at the lower edge that are left to others
    void draw(const Theme& theme, const Match& match, Palette palette, client::Time now,
              bool isOpen, float foot = 0.0f) const;

  private:
    std::optional<Outcome> press(const SDL_KeyboardEvent& key, std::string& words);
    void drawLine(const Theme& theme, float left, float bottom) const;

    ChatLine line_;
};

} // namespace drench::game
