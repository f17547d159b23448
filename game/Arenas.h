#pragma once

#include "src/MapManager.h"

#include <span>
#include <string>
#include <vector>

namespace drench::game {

/// An arena that the window knows.
struct KnownArena {
    /// As its plan names it, or else its file.
    std::string name;
    std::string file;
    MapManager map;
};

struct KnownArenas {
    /// No two of them alike.
    std::vector<KnownArena> arenas;

    /// Files that are no arenas, a line each for the user.
    std::vector<std::string> problems;
};

/// The folders whose arenas the window knows, whether they are there or not: the user's own, those
/// of the system by $XDG_DATA_DIRS, and the one beside the executable.
std::vector<std::string> arenaFolders();

/// The arena that rooms started here play unless told otherwise: the file beside the executable.
std::string usualArena();

/// Reads the usual arena, which comes first, and every file in the folders, by name. Names of plans
/// are taken over for arenas that are alike.
KnownArenas readArenas(const std::string& usual, std::span<const std::string> folders);

} // namespace drench::game
