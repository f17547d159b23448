#pragma once

#include <string>

namespace drench {

/// What people are told while the bots play: one line that is rewritten, and notes that stay.
class Console {
  public:
    /// Rewrites its line on standard error, or on standard output when only that is a terminal.
    /// @param keepOutputClean  standard output is for programs to read
    Console(bool quiet, bool keepOutputClean);

    /// Clears its line.
    ~Console();
    Console(const Console&) = delete;
    Console& operator=(const Console&) = delete;

    /// Whether there is a terminal to rewrite a line on, and somebody who wants it.
    bool isLive() const { return terminal_ >= 0; }

    /// Replaces the line; nothing unless isLive().
    void show(const std::string& line);
    void clear();

    /// Writes a line to standard error.
    void note(const std::string& line);

  private:
    void write(const std::string& text) const;

    int terminal_ = -1;
    bool shown_ = false;
};

} // namespace drench
