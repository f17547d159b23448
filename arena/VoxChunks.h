#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

// Places in a voxel file, which is a tree of chunks. Errors are InputErrors that begin with the
// wrong byte's offset, counted from 0.

namespace drench::arena {

/// Coordinates are bytes. Editors write larger models with coordinates that wrap around.
constexpr int longestVoxSide = 256;

constexpr std::size_t voxelBytes = 4;

/// The first bytes of every voxel file.
inline constexpr std::string_view voxMagic = "VOX ";

/// Offsets in a file of one model. Only the palette's may be 0: then there is none.
struct VoxLayout {
    std::size_t size = 0;
    std::size_t voxels = 0;
    std::size_t voxelsEnd = 0;
    std::size_t palette = 0;
};

/// Edges of a model along the file's x, y and z.
struct VoxSides {
    int x;
    int y;
    int z;
};

/// Finds the offsets in a whole file. Throws if its chunks are not those of one model.
VoxLayout voxLayoutOf(const std::string& bytes);

/// Reads the content of a SIZE chunk. Throws if no arena has that size.
VoxSides voxSidesAt(const std::string& bytes, std::size_t at);

std::uint8_t byteAt(const std::string& bytes, std::size_t at);

/// Throws InputError "byte <byte>: <what>".
[[noreturn]] void failAtByte(std::size_t byte, const std::string& what);

} // namespace drench::arena
