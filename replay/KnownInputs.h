#pragma once

#include "client/Prediction.h"
#include "client/recording/RecordingReader.h"
#include "src/MapManager.h"

#include <cstdint>
#include <string>
#include <vector>

namespace drench::replay {

/// How the states of one player follow from its own inputs.
struct KnownInputs {
    std::uint32_t line = 0;
    std::string name;

    /// Of all its times in the room.
    client::Prediction::Statistics statistics;
};

/// Predicts each player whose inputs the recording has, as a client would have done it: the ones of
/// lines that send keys or views. From the reader's place on; of the first 64 lines.
std::vector<KnownInputs> predictKnownInputs(client::RecordingReader& reader, MapManager& map);

} // namespace drench::replay
