#pragma once

#include "game/ArenaMesh.h"
#include "game/Arenas.h"
#include "game/Playback.h"

#include <memory>
#include <stop_token>
#include <string>
#include <vector>

namespace drench::game {

/// Whether a file begins as recordings do; false too if it cannot be read.
bool isRecording(const std::string& file);

/// A recording made ready to be watched.
struct OpenedRecording {
    /// The room and when it was: "localhost:5000, 22 November 2026, 10:12".
    std::string title;

    /// Of its first whole line: the one with the most snapshots.
    Playback playback;

    /// The arena that was played, and its surface.
    std::unique_ptr<MapManager> map;
    ArenaMesh mesh;

    /// What is damaged or unknown, a line each for people.
    std::vector<std::string> problems;
};

/// Opens a recording. Its arena is the text that it holds or, without one, the one of those known
/// in which it can have been. Takes some tenths of a second, and seconds for hours of a match.
/// Throws InputError if the file is no recording, no match is in it, or it was asked to give up.
/// @param known  those that rooms may play, the likeliest first; at least one
/// @param ignoresText  the arena is among those known, whatever the recording holds
/// @param stop  asks to give up
OpenedRecording openRecording(const std::string& file, const std::vector<KnownArena>& known,
                              bool ignoresText = false, const std::stop_token& stop = {});

/// "22 November 2026, 10:12", by this machine's time zone.
/// @param startedAt  microseconds since 1970
std::string dateOf(std::int64_t startedAt);

} // namespace drench::game
