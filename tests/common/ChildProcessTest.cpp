#include "common/ChildProcess.h"
#include "common/Descriptor.h"
#include "common/Files.h"
#include "common/Timekeeper.h"
#include "tests/support/TemporaryFolder.h"

#include <algorithm>
#include <csignal>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <string>
#include <thread>
#include <unistd.h>
#include <utility>

using namespace drench;

namespace {

ChildProcess shell(const std::string& command, const ChildProcess::Streams& streams = {}) {
    return ChildProcess({"/bin/sh", "-c", command}, streams);
}

} // namespace

TEST(ChildProcess, StatusIsThatOfTheProgram) {
    EXPECT_EQ(shell("exit 0").wait(), 0);
    ChildProcess three = shell("exit 3");
    EXPECT_EQ(three.wait(), 3);
    EXPECT_EQ(three.wait(), 3) << "asked again";
    EXPECT_EQ(three.status(), 3);
    EXPECT_EQ(ChildProcess({"/nowhere/at/all"}, {}).wait(), 127);
}

TEST(ChildProcess, HasNoStatusWhileItRuns) {
    ChildProcess sleeper = shell("exec sleep 100");
    EXPECT_EQ(sleeper.status(), std::nullopt);
    sleeper.signal(SIGTERM);
    EXPECT_EQ(sleeper.wait(), 128 + SIGTERM);
}

TEST(ChildProcess, OutputsGoWhereTheyAreSent) {
    const TemporaryFolder folder;
    const auto create = [&](const char* name) {
        return open((folder.path + "/" + name).c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
    };
    const Descriptor out(create("out"));
    const Descriptor err(create("err"));
    EXPECT_EQ(shell("echo to out; echo to err >&2", {out.number, err.number}).wait(), 0);
    EXPECT_EQ(readFile(folder.path + "/out"), "to out\n");
    EXPECT_EQ(readFile(folder.path + "/err"), "to err\n");
}

TEST(ChildProcess, InputComesFromWhereItIsTaken) {
    const TemporaryFolder folder;
    const Descriptor in(open(folder.write("in", "3\n").c_str(), O_RDONLY | O_CLOEXEC));
    EXPECT_EQ(shell("read status; exit $status", {.input = in.number}).wait(), 3);
}

TEST(ChildProcess, FurtherDescriptorHasItsNumberWhateverItHadBefore) {
    const TemporaryFolder folder;
    const std::string path = folder.write("further", "5\n");
    const Descriptor further(open(path.c_str(), O_RDONLY | O_CLOEXEC));
    EXPECT_EQ(shell("read status <&3; exit $status", {.further = further.number}).wait(), 5);
    ChildProcess withIt([&path] {
        dup3(open(path.c_str(), O_RDONLY), ChildProcess::furtherNumber, O_CLOEXEC);
        _exit(shell("read status <&3; exit $status", {.further = ChildProcess::furtherNumber})
                  .wait());
    });
    EXPECT_EQ(withIt.wait(), 5);
}

TEST(ChildProcess, ProgramGetsNoOtherDescriptors) {
    const Descriptor left(open("/dev/null", O_RDONLY));
    const Descriptor further(open("/dev/null", O_RDONLY));
    const auto number = [](int descriptor) { return std::to_string(descriptor); };
    const std::string isOpen = "test -e /proc/self/fd/";
    EXPECT_NE(shell(isOpen + number(left.number)).wait(), 0);
    const int gone = std::max(left.number, ChildProcess::furtherNumber + 1);
    EXPECT_NE(shell(isOpen + number(gone), {.further = further.number}).wait(), 0);
}

TEST(ProgramNamed, IsWhatAShellWouldRun) {
    EXPECT_EQ(shell("test \"$(command -v sh)\" = " + programNamed("sh")).wait(), 0);
    EXPECT_EQ(programNamed("no-such-program-anywhere"), "");
}

TEST(ChildProcess, EndsWithItsScope) {
    pid_t pid = -1;
    {
        const ChildProcess sleeper = shell("exec sleep 100");
        pid = sleeper.pid();
        EXPECT_EQ(kill(pid, 0), 0);
    }
    EXPECT_EQ(kill(pid, 0), -1) << "ended, and waited for";
}

TEST(ChildProcess, MovesOnWithoutEnding) {
    ChildProcess first = shell("exec sleep 100");
    ChildProcess second = std::move(first);
    EXPECT_EQ(second.status(), std::nullopt);
    second.signal(SIGKILL);
    EXPECT_EQ(second.wait(), 128 + SIGKILL);
}

TEST(ChildProcess, OutputsMayGoToDescriptorZero) {
    const TemporaryFolder folder;
    const std::string path = folder.path + "/both";
    ChildProcess first([&path] {
        dup2(open(path.c_str(), O_WRONLY | O_CREAT, 0600), STDIN_FILENO);
        _exit(shell("echo out; echo err >&2", {STDIN_FILENO, STDIN_FILENO}).wait());
    });
    EXPECT_EQ(first.wait(), 0);
    EXPECT_EQ(readFile(path), "out\nerr\n");
}

TEST(ChildProcess, EndsWithItsParent) {
    int ends[2];
    ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
    const Descriptor reading(ends[0]);
    {
        const Descriptor writing(ends[1]);
        ChildProcess parent([&writing] {
            const ChildProcess sleeper([&writing] {
                const char ready = '.';
                EXPECT_EQ(write(writing.number, &ready, 1), 1);
                sleep(100);
            });
            sleep(100);
        });
        char ready;
        ASSERT_EQ(read(reading.number, &ready, 1), 1);
        parent.signal(SIGKILL);
        EXPECT_EQ(parent.wait(), 128 + SIGKILL);
    }
    pollfd polled = {reading.number, POLLIN, 0};
    ASSERT_EQ(poll(&polled, 1, 20000), 1) << "somebody still holds the other end";
    char nothing;
    EXPECT_EQ(read(reading.number, &nothing, 1), 0);
}

TEST(ChildProcess, CanGoOnWithAFunction) {
    EXPECT_EQ(ChildProcess([] { _exit(7); }).wait(), 7);
    EXPECT_EQ(ChildProcess([] {}).wait(), 1) << "a function that returns has not become a program";
}

TEST(Timekeeper, RunEndsAfterItsSeconds) {
    const Timekeeper run(0.05);
    EXPECT_TRUE(run.goesOn());
    EXPECT_LT(run.elapsed(), 0.05);
    std::this_thread::sleep_until(run.end());
    EXPECT_FALSE(run.goesOn());
    EXPECT_GE(run.elapsed(), 0.05);
}

TEST(Timekeeper, WithoutSecondsOnlySomebodyWhoAsksEndsIt) {
    const Timekeeper run(0.0);
    EXPECT_TRUE(run.goesOn());
    EXPECT_EQ(run.end(), Timekeeper::Clock::time_point::max());
    listenForSignals();
    EXPECT_TRUE(run.goesOn());
    raise(SIGTERM);
    EXPECT_FALSE(run.goesOn());
    stopAsked = 0;
    struct sigaction now {};
    sigaction(SIGTERM, nullptr, &now);
    EXPECT_EQ(now.sa_handler, SIG_DFL) << "a second one ends us";
}
