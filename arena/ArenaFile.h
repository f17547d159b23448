#pragma once

#include "arena/Check.h"
#include "arena/MapText.h"
#include "arena/VoxFile.h"

#include <string>

namespace drench::arena {

/// The content of an arena file of any known kind: a map text, a plan or a voxel file.
struct ArenaFile {
    /// The map, and the problems of a map text.
    MapText text;

    bool isMapText = false;

    /// A plan's name; empty for other kinds.
    std::string name;

    /// Gives the place of a cell in the file. Empty for a map text, which has MapText::placeOf, and
    /// for a voxel file, which nobody edits as text.
    PlaceOfCell placeOf;
};

/// Reads the file; a map text may have any problems. Throws InputError, which begins with the
/// file's name, if no map can be read from it.
ArenaFile readArena(const std::string& file);

/// Throws InputError, which begins with `origin`, at the first problem that makes the server read
/// another map than is meant.
void requireWhole(const MapText& text, const std::string& origin);

/// Reads a file that must hold the whole map. Also throws as requireWhole() does.
ArenaFile readWholeArena(const std::string& file);

/// Reads the bytes of a voxel file. Puts the file's name before the words of an InputError.
VoxImport readVox(const std::string& file, const std::string& bytes);

} // namespace drench::arena
