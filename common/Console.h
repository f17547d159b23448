#pragma once

#include <chrono>
#include <string>

namespace drench {

/// Tells people how a program gets on: by one line that is rewritten, and by notes that stay.
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

/// Shows on a console how far a long task has come: from its second second on, ten times a second
/// at most.
class ProgressLine {
  public:
    explicit ProgressLine(Console& console) : console_(console) {}

    /// Clears the line.
    ~ProgressLine() { console_.clear(); }
    ProgressLine(const ProgressLine&) = delete;
    ProgressLine& operator=(const ProgressLine&) = delete;

    /// @param line  how far it is; the seconds that have gone by are added
    void show(const std::string& line);

  private:
    Console& console_;
    std::chrono::steady_clock::time_point started_ = std::chrono::steady_clock::now();
    std::chrono::steady_clock::time_point shown_ = started_;
};

} // namespace drench
