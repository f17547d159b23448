#include "common/Console.h"

#include <iostream>
#include <unistd.h>

namespace drench {

Console::Console(bool quiet, bool keepOutputClean) {
    if (quiet)
        return;
    if (isatty(STDERR_FILENO))
        terminal_ = STDERR_FILENO;
    else if (isatty(STDOUT_FILENO) && !keepOutputClean)
        terminal_ = STDOUT_FILENO;
}

Console::~Console() {
    clear();
}

void Console::show(const std::string& line) {
    if (!isLive())
        return;
    write("\r" + line + "\033[K");
    shown_ = true;
}

void Console::clear() {
    if (shown_)
        write("\r\033[K");
    shown_ = false;
}

void Console::note(const std::string& line) {
    clear();
    std::cerr << line << '\n';
}

void Console::write(const std::string& text) const {
    (terminal_ == STDERR_FILENO ? std::cerr : std::cout) << text << std::flush;
}

void ProgressLine::show(const std::string& line) {
    using namespace std::chrono;
    const auto now = steady_clock::now();
    if (now - started_ < seconds(1) || now - shown_ < milliseconds(100))
        return;
    shown_ = now;
    console_.show(line + ", " + std::to_string(duration_cast<seconds>(now - started_).count()) +
                  " s");
}

} // namespace drench
