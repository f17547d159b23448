#pragma once

#include "client/recording/Recording.h"

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

namespace drench::game {

/// The folder of the user's own recordings, whether it is there or not; empty if the user has no
/// folder for data.
std::string recordingsFolder();

struct OwnRecording {
    std::string file;

    /// To be drawn; empty if unknown.
    std::string room;

    /// "22 November 2026, 10:12".
    std::string date;
    client::RecordedTime length{};
    std::int64_t startedAt = 0;
};

/// The most that are listed.
constexpr std::size_t mostRecordings = 100;

/// The recordings in a folder, the latest first. Reads all of them: a match takes some
/// milliseconds. What is no recording is left out.
std::vector<OwnRecording> recordingsIn(const std::string& folder);

/// The name of a recording that begins now in the folder, which is made if need be. An empty file
/// with this name is there then, so that nobody else gets it. Throws InputError if that fails.
std::string newRecordingFile(const std::string& folder);

/// "0:34", "1:02:03".
std::string lengthWords(std::chrono::duration<double> length);

} // namespace drench::game
