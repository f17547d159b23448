#include "replay/Footage.h"

#include "common/Files.h"
#include "tests/replay/RecordedMatch.h"

#include <gtest/gtest.h>

TEST(Footage, OfMoreStatesThanFitIsRefused) {
    RecordedMatch match;
    const std::size_t states = match.frames.size();
    EXPECT_EQ(states, 1221u);
    EXPECT_EQ(replay::statesOf(match.reader, states).size(), states);
    match.reader.seek(client::RecordedTime(0));
    try {
        replay::statesOf(match.reader, states - 1);
        FAIL();
    } catch (const InputError& error) {
        EXPECT_EQ(error.what(),
                  match.reader.name() + ": longer than can be looked into at once; cut it");
    }
}
