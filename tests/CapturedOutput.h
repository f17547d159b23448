#pragma once

#include <iostream>
#include <sstream>
#include <string>

/// Catches what is written to std::cout while it lives.
class CapturedOutput {
  public:
    CapturedOutput() : original_(std::cout.rdbuf(stream_.rdbuf())) {}
    ~CapturedOutput() { std::cout.rdbuf(original_); }
    CapturedOutput(const CapturedOutput&) = delete;
    CapturedOutput& operator=(const CapturedOutput&) = delete;

    std::string text() const { return stream_.str(); }

  private:
    std::ostringstream stream_;
    std::streambuf* original_;
};
