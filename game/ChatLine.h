#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace drench::game {

/// A line of chat while it is written, and the lines said before. It is valid UTF-8 of at most
/// longestLine bytes, and the cursor stands between whole characters.
class ChatLine {
  public:
    /// The most bytes that a room passes on.
    static constexpr std::size_t longestLine = 30;

    const std::string& text() const { return text_; }

    /// Bytes before the cursor.
    std::size_t cursor() const { return cursor_; }

    /// Inserts typed or pasted text at the cursor: as many of its characters as there is room for.
    /// Those that cannot be drawn are left out.
    void insert(std::string_view typed);

    /// Removes the character before the cursor, or the one behind it.
    void eraseBefore();
    void eraseBehind();

    /// Moves the cursor by a character, or to an end.
    void moveLeft();
    void moveRight();
    void moveHome() { cursor_ = 0; }
    void moveEnd() { cursor_ = text_.size(); }

    /// Shows an earlier line, or a later one; behind the latest is the one that was begun.
    void showEarlier();
    void showLater();

    /// The line to say, without blanks at its ends; empty if there is nothing to say. It becomes
    /// the latest of the earlier lines, and the line is empty again.
    std::string finish();

    /// Empties the line.
    void cancel();

  private:
    /// The most earlier lines that are kept.
    static constexpr std::size_t mostEarlier = 50;

    void show(std::size_t line);
    std::size_t characterBefore() const;

    std::string text_;
    std::size_t cursor_ = 0;

    /// The oldest first.
    std::vector<std::string> earlier_;

    /// Which of them is shown; their number for the one that was begun.
    std::size_t shown_ = 0;
    std::string begun_;
};

} // namespace drench::game
