#pragma once

#include "common/Descriptor.h"

#include <cstdlib>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <unistd.h>

using namespace drench;

/// A terminal that a program can be given, and what it has shown there.
class PseudoTerminal {
  public:
    PseudoTerminal() : master_(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC)) {
        EXPECT_EQ(grantpt(master_.number), 0);
        EXPECT_EQ(unlockpt(master_.number), 0);
        ours_.emplace(open(ptsname(master_.number), O_RDWR | O_NOCTTY | O_CLOEXEC));
        EXPECT_GE(ours_->number, 0);
    }

    /// For the program, until shownToTheEnd() is called.
    int descriptor() const { return ours_->number; }

    /// All that is written until the program ends. Only then has all of it come: a terminal hands
    /// on what is written a little later, and its writer waits while nobody reads.
    std::string shownToTheEnd() {
        ours_.reset();
        std::string text;
        char block[4096];
        for (ssize_t length; (length = read(master_.number, block, sizeof block)) > 0;)
            text.append(block, static_cast<std::size_t>(length));
        return text;
    }

  private:
    Descriptor master_;
    std::optional<Descriptor> ours_;
};
