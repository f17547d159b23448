#pragma once

#include <chrono>
#include <string>

namespace drench {

/// A program's messages to people: one progress line that is rewritten, and notes that stay.
class Console {
  public:
    /// Rewrites its line on standard error, or on standard output if only that is a terminal.
    /// @param keepOutputClean  whether standard output must stay readable for programs
    Console(bool quiet, bool keepOutputClean);

    /// Clears its line.
    ~Console();
    Console(const Console&) = delete;
    Console& operator=(const Console&) = delete;

    /// Whether a terminal can show the line, and the user did not ask for quiet.
    bool isLive() const { return terminal_ >= 0; }

    /// Replaces the line; does nothing unless isLive().
    void show(const std::string& line);
    void clear();

    /// Writes a line to standard error.
    void note(const std::string& line);

  private:
    void write(const std::string& text) const;

    int terminal_ = -1;
    bool shown_ = false;
};

/// Shows the progress of a long task on a console: after the first second, at most ten times a
/// second.
class ProgressLine {
  public:
    explicit ProgressLine(Console& console) : console_(console) {}

    /// Clears the line.
    ~ProgressLine() { console_.clear(); }
    ProgressLine(const ProgressLine&) = delete;
    ProgressLine& operator=(const ProgressLine&) = delete;

    /// @param line  the progress; the seconds since the start are added
    void show(const std::string& line);

  private:
    Console& console_;
    std::chrono::steady_clock::time_point started_ = std::chrono::steady_clock::now();
    std::chrono::steady_clock::time_point shown_ = started_;
};

} // namespace drench
