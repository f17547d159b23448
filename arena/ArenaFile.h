#pragma once

#include "arena/Check.h"
#include "arena/MapText.h"
#include "arena/VoxFile.h"

#include <string>

namespace drench::arena {

/// What a file of any kind that we know holds: a map text, a plan or a voxel file.
struct ArenaFile {
    /// The map, with what is wrong with the text of a map text.
    MapText text;

    bool isMapText = false;

    /// A plan's name; empty for other kinds.
    std::string name;

    /// Where cells stand in the file; empty for a map text, which knows it itself, and for a voxel
    /// file, whose bytes nobody edits.
    PlaceOfCell placeOf;
};

/// Reads the file, whatever is wrong with a map text. Throws InputError, which begins with the
/// file's name, when no map can be read from it.
ArenaFile readArena(const std::string& file);

/// The same for a file that must hold the whole map: throws also at the first thing in a map text
/// that makes the server read another map than is meant.
ArenaFile readWholeArena(const std::string& file);

/// Reads the bytes of a voxel file, with its name before what is wrong.
VoxImport readVox(const std::string& file, const std::string& bytes);

} // namespace drench::arena
