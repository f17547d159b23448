#pragma once

#include "common/ChildProcess.h"
#include "common/Descriptor.h"
#include "common/Files.h"
#include "tests/support/PseudoTerminal.h"
#include "tests/support/TemporaryFolder.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <map>
#include <sstream>
#include <string>
#include <unistd.h>
#include <vector>

using namespace drench;

/// A program started in the background, with its output in files. Destruction ends it.
class ToolProcess {
  public:
    /// @param arguments  separated by single blanks
    /// @param terminal  what standard error is to be instead of a file
    ToolProcess(const std::string& executable, const std::string& arguments, int terminal = -1)
        : process_(start(executable, arguments, terminal)) {}

    void signal(int number) const { process_.signal(number); }

    pid_t pid() const { return process_.pid(); }

    /// Waits for the end and returns the exit status; 128 and the signal's number after a signal.
    int status() { return process_.wait(); }

    std::string out() const { return readFile(folder_.path + "/out"); }
    std::string err() const { return readFile(folder_.path + "/err"); }

  private:
    ChildProcess start(const std::string& executable, const std::string& arguments,
                       int terminal) const {
        std::vector<std::string> words = {executable};
        std::istringstream text(arguments);
        for (std::string word; text >> word;)
            words.push_back(word);
        const Descriptor out(create("out"));
        const Descriptor err(create("err"));
        return ChildProcess(words, {out.number, terminal >= 0 ? terminal : err.number});
    }

    int create(const char* name) const {
        return open((folder_.path + "/" + name).c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
    }

    TemporaryFolder folder_;
    ChildProcess process_;
};

/// The numbers that stand right before these words, in the order of their places.
inline std::vector<double> numbersBefore(const std::string& words, const std::string& text) {
    std::vector<double> numbers;
    for (std::size_t at = 0; (at = text.find(words, at)) != std::string::npos; ++at) {
        const std::size_t begin = text.find_last_not_of("0123456789.", at - 1) + 1;
        numbers.push_back(std::stod(text.substr(begin, at - begin)));
    }
    return numbers;
}

/// The help of a program has all these lines.
inline void expectHelp(const std::string& executable, const std::string& arguments,
                       const std::vector<std::string>& lines) {
    ToolProcess help(executable, arguments);
    EXPECT_EQ(help.status(), 0);
    EXPECT_EQ(help.err(), "");
    for (const std::string& line : lines)
        EXPECT_NE(help.out().find("\n" + line + "\n"), std::string::npos) << line << help.out();
}

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
