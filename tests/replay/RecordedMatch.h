#pragma once

#include "arena/MapText.h"
#include "client/recording/RecordingReader.h"
#include "replay/Footage.h"

#include <string>
#include <vector>

using namespace drench;

/// Twenty seconds of four bots, recorded by drench-bots.
struct RecordedMatch {
    client::RecordingReader reader =
        client::RecordingReader::open(std::string(DRENCH_TEST_DATA) + "/match.drench");
    MapManager map = arena::readMapText(reader.header().arena).map;
    std::vector<replay::Frame> frames = replay::statesOf(reader);

    RecordedMatch() { reader.seek(client::RecordedTime(0)); }
};
