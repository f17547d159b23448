#pragma once

#include "common/Files.h"
#include "tests/support/TemporaryFolder.h"

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <map>
#include <sstream>
#include <string>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

using namespace drench;

/// A program started in the background, with its output in files. Destruction ends it.
class ToolProcess {
  public:
    /// @param arguments  separated by single blanks
    /// @param terminal  what standard error is to be instead of a file
    ToolProcess(const std::string& executable, const std::string& arguments, int terminal = -1) {
        std::vector<std::string> words = {executable};
        std::istringstream text(arguments);
        for (std::string word; text >> word;)
            words.push_back(word);
        std::vector<char*> argv;
        for (std::string& word : words)
            argv.push_back(word.data());
        argv.push_back(nullptr);
        const int out = create("out");
        const int err = create("err");
        pid_ = fork();
        if (pid_ == 0) {
            prctl(PR_SET_PDEATHSIG, SIGKILL);
            dup2(out, STDOUT_FILENO);
            dup2(terminal >= 0 ? terminal : err, STDERR_FILENO);
            execv(argv.front(), argv.data());
            _exit(127);
        }
        close(out);
        close(err);
    }
    ~ToolProcess() {
        if (status_ < 0) {
            kill(pid_, SIGKILL);
            waitpid(pid_, nullptr, 0);
        }
    }
    ToolProcess(const ToolProcess&) = delete;
    ToolProcess& operator=(const ToolProcess&) = delete;

    void signal(int number) const { kill(pid_, number); }

    /// Waits for the end and returns the exit status; 128 and the signal's number after a signal.
    int status() {
        int ended;
        if (status_ < 0 && waitpid(pid_, &ended, 0) == pid_)
            status_ = WIFEXITED(ended) ? WEXITSTATUS(ended) : 128 + WTERMSIG(ended);
        return status_;
    }

    std::string out() const { return readFile(folder_.path + "/out"); }
    std::string err() const { return readFile(folder_.path + "/err"); }

  private:
    int create(const char* name) const {
        return open((folder_.path + "/" + name).c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
    }

    TemporaryFolder folder_;
    pid_t pid_ = -1;
    int status_ = -1;
};

/// A terminal that a program can be given, and what it has shown there.
class PseudoTerminal {
  public:
    PseudoTerminal() : master_(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK)) {
        EXPECT_EQ(grantpt(master_), 0);
        EXPECT_EQ(unlockpt(master_), 0);
        descriptor_ = open(ptsname(master_), O_RDWR | O_NOCTTY | O_CLOEXEC);
        EXPECT_GE(descriptor_, 0);
    }
    ~PseudoTerminal() {
        close(descriptor_);
        close(master_);
    }
    PseudoTerminal(const PseudoTerminal&) = delete;
    PseudoTerminal& operator=(const PseudoTerminal&) = delete;

    int descriptor() const { return descriptor_; }

    /// What has been written since the last call, at most 64 KiB.
    std::string shown() const {
        std::string text(65536, '\0');
        const ssize_t length = read(master_, text.data(), text.size());
        text.resize(length > 0 ? static_cast<std::size_t>(length) : 0);
        return text;
    }

  private:
    int master_;
    int descriptor_;
};

/// Each of these arguments ends the program at once, with status 2, nothing on standard output, and
/// the words beside them on standard error.
inline void expectWrongUse(const std::string& executable,
                           const std::map<std::string, std::string>& wordsByArguments) {
    for (const auto& [arguments, words] : wordsByArguments) {
        ToolProcess tool(executable, arguments);
        EXPECT_EQ(tool.status(), 2) << arguments;
        EXPECT_NE(tool.err().find(words), std::string::npos) << arguments << ": " << tool.err();
        EXPECT_EQ(tool.out(), "") << arguments;
    }
}
