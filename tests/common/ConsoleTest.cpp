#include "common/Console.h"
#include "common/ChildProcess.h"
#include "tests/support/PseudoTerminal.h"

#include <algorithm>
#include <chrono>
#include <functional>
#include <gtest/gtest.h>
#include <iostream>
#include <string>
#include <thread>

using namespace drench;

namespace {

struct Terminals {
    bool output;
    bool errors;
};

/// What a terminal shows of a program that has a terminal for these, and nothing for the others.
std::string shown(Terminals terminals, const std::function<void()>& program) {
    PseudoTerminal terminal;
    const Descriptor nothing(open("/dev/null", O_WRONLY | O_CLOEXEC));
    ChildProcess process([&] {
        dup2(terminals.output ? terminal.descriptor() : nothing.number, STDOUT_FILENO);
        dup2(terminals.errors ? terminal.descriptor() : nothing.number, STDERR_FILENO);
        program();
        std::cout.flush();
        _exit(0);
    });
    std::string text = terminal.shownToTheEnd();
    EXPECT_EQ(process.wait(), 0);
    return text;
}

constexpr Terminals both = {true, true};
constexpr Terminals output = {true, false};
constexpr Terminals errors = {false, true};
constexpr Terminals neither = {false, false};

void showProgress(bool quiet, bool keepOutputClean) {
    Console console(quiet, keepOutputClean);
    if (console.isLive())
        std::cerr << "live ";
    console.show("half");
    console.show("all");
}

const std::string progress = "\rhalf\033[K\rall\033[K\r\033[K";

} // namespace

TEST(Console, LineIsRewrittenAndClearedAtTheEnd) {
    EXPECT_EQ(shown(both, [] { showProgress(false, false); }), "live " + progress);
    EXPECT_EQ(shown(errors, [] { showProgress(false, true); }), "live " + progress);
}

TEST(Console, LineGoesToStandardOutputIfOnlyThatIsATerminalAndMayBeUsed) {
    EXPECT_EQ(shown(output, [] { showProgress(false, false); }), progress);
    EXPECT_EQ(shown(output, [] { showProgress(false, true); }), "");
}

TEST(Console, QuietOneShowsNothing) {
    EXPECT_EQ(shown(both, [] { showProgress(true, false); }), "");
    EXPECT_EQ(shown(output, [] { showProgress(true, false); }), "");
    EXPECT_EQ(shown(neither, [] { showProgress(false, false); }), "");
}

TEST(Console, NoteTakesThePlaceOfTheLine) {
    EXPECT_EQ(shown(errors,
                    [] {
                        Console console(false, false);
                        console.note("first");
                        console.show("half");
                        console.note("second");
                        console.clear();
                    }),
              "first\r\n\rhalf\033[K\r\033[Ksecond\r\n");
}

TEST(ProgressLine, IsSilentForASecondThenTellsTheTimeTenTimesASecond) {
    const std::string text = shown(errors, [] {
        Console console(false, false);
        ProgressLine line(console);
        const auto start = std::chrono::steady_clock::now();
        for (int i = 0; std::chrono::steady_clock::now() - start < std::chrono::milliseconds(1250);
             ++i) {
            line.show(std::to_string(i));
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    });
    EXPECT_TRUE(text.ends_with(" s\033[K\r\033[K")) << text;
    const auto lines = std::count(text.begin(), text.end(), ',');
    EXPECT_GE(lines, 1);
    EXPECT_LE(lines, 10) << "of some 200 in that quarter of a second";
    EXPECT_EQ(text.find(", 0 s"), std::string::npos) << text;
}
