#pragma once

#include <iostream>
#include <sstream>
#include <string>

/// A string stream buffer that counts its flushes.
struct FlushCounter : std::stringbuf {
    int flushes = 0;
    int sync() override {
        ++flushes;
        return 0;
    }
};

/// Catches the output to std::cout while it lives.
class CapturedOutput {
  public:
    CapturedOutput() : original_(std::cout.rdbuf(&buffer_)) {}
    ~CapturedOutput() { std::cout.rdbuf(original_); }
    CapturedOutput(const CapturedOutput&) = delete;
    CapturedOutput& operator=(const CapturedOutput&) = delete;

    std::string text() const { return buffer_.str(); }
    int flushes() const { return buffer_.flushes; }

  private:
    FlushCounter buffer_;
    std::streambuf* original_;
};

/// For death tests, which see only standard error.
inline void showOutputOnStandardError() {
    std::cout.rdbuf(std::cerr.rdbuf());
}
