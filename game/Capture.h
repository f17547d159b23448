#pragma once

namespace drench::game {

/// Who has the mouse: the game, whose view it turns, or the desktop. The one place that decides it,
/// from the window's focus, the menu and the player's wish.
class Capture {
  public:
    /// The window got or lost the focus. With it the game gets the mouse, unless a menu is open.
    void setFocus(bool focused);

    /// A menu, the chat's line or whatever else needs a pointer is open or not.
    void setMenu(bool open) { menuOpen_ = open; }

    /// Gives the mouse back to the desktop until a click or the next focus.
    void release() { released_ = true; }

    /// A button went down in the window. True if the click gives the mouse to the game, and so does
    /// nothing else.
    bool click();

    bool holdsMouse() const { return focused_ && !menuOpen_ && !released_; }

  private:
    bool focused_ = false;
    bool menuOpen_ = false;
    bool released_ = false;
};

} // namespace drench::game
