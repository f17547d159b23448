#pragma once

#include "client/recording/RecordingReader.h"
#include "replay/Footage.h"
#include "src/MapManager.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace drench::replay {

/// A state that cannot follow from the one before it.
struct Impossible {
    RecordedTime time{};
    char id = 0;
    std::string name;

    /// What differs, in words.
    std::string what;
};

struct Verification {
    std::uint64_t states = 0;

    /// Steps of single players from state to state.
    std::uint64_t steps = 0;

    /// Of these, steps over states that the line lost, of which only the distance is checked.
    std::uint64_t overGaps = 0;

    /// States that came after later ones, and are left out.
    std::uint64_t late = 0;

    std::uint64_t impossibleSteps = 0;

    /// The first of them.
    static constexpr std::size_t mostListed = 1000;
    std::vector<Impossible> listed;
};

/// Replays the movement of each player in `map` by the game's own code, from state to state.
///
/// A step must come from some keys and a turn. Where the arrivals leave room for lost states,
/// several ticks may have passed. So a single odd step may hide among losses; a server with other
/// speeds or jumps cannot.
Verification verify(const std::vector<Frame>& frames, MapManager& map);

} // namespace drench::replay
