#pragma once

#include "client/recording/RecordingReader.h"
#include "replay/Footage.h"
#include "src/Vector.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace drench::replay {

/// One player soaked by another.
struct Soaking {
    RecordedTime time{};
    std::string victim;

    /// Empty if the recording does not tell.
    std::string shooter = {};

    /// Where both were last seen before it, and the world units between them; absent if the
    /// recording does not show them.
    std::optional<vec3> at = std::nullopt;
    std::optional<vec3> from = std::nullopt;
    std::optional<double> distance = std::nullopt;
};

/// More than four players can have in five days: who is soaked is out for four seconds.
constexpr std::size_t mostSoakings = 500'000;

/// The soakings of a recording, from the reader's place on. States tell who was soaked, and the
/// notices, or points where a notice was lost, by whom. Throws InputError if there are more than
/// `most`.
std::vector<Soaking> soakingsOf(client::RecordingReader& reader, std::size_t most = mostSoakings);

} // namespace drench::replay
