// Any bytes as a voxel file.

#include "arena/VoxFile.h"
#include "tests/fuzz/InputErrors.h"
#include "tests/fuzz/Maps.h"
#include "tests/fuzz/Require.h"

#include <cstdint>
#include <cstring>
#include <string>

using namespace drench;

namespace {

bool isSlowVox(const std::string& bytes) {
    constexpr std::size_t headBytes = 12;
    for (std::size_t at = bytes.find("SIZE"); at != std::string::npos;
         at = bytes.find("SIZE", at + 1)) {
        std::int32_t sides[3];
        if (bytes.size() - at < headBytes + sizeof sides)
            break;
        std::memcpy(sides, bytes.data() + at + headBytes, sizeof sides);
        if (isSlow(sides[0], sides[2], sides[1]))
            return true;
    }
    return false;
}

void requirePlace(const std::string& bytes, std::string_view words) {
    requireOneLine(words);
    // The file is well made, but holds more than a map can.
    if (takeNumber(words, "holds ").value_or(0) > 1)
        return;
    const auto byte = takeNumber(words, "byte ");
    require(byte && words.starts_with(": "), "an error begins with the byte");
    require(*byte >= 0 && static_cast<std::size_t>(*byte) <= bytes.size(),
            "an error names a byte of the file");
}

long solidCells(const MapManager& map) {
    long count = 0;
    for (const auto& column : map.cubes) {
        for (const auto& row : column) {
            for (const Box& cube : row)
                count += cube.solid;
        }
    }
    return count;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    if (isSlowVox(bytes))
        return 0;
    arena::VoxImport import;
    try {
        import = arena::readVox(bytes);
    } catch (const InputError& error) {
        requirePlace(bytes, error.what());
        return 0;
    }
    require(arena::isVox(bytes), "a voxel file is known by its beginning");
    require(solidCells(import.map) * 4 <= static_cast<long>(size), "a cell takes a voxel");
    for (std::size_t i = 0; i < import.replaced.size(); ++i) {
        require(import.replaced[i].voxels > 0 && import.replaced[i].cellValue > 0,
                "a colour that was replaced has voxels");
        for (int cellValue = 1; cellValue <= 255; ++cellValue)
            require(import.replaced[i].colour != arena::colourOf(cellValue),
                    "a cellValue's own colour is not replaced");
        require(i == 0 || import.replaced[i].voxels <= import.replaced[i - 1].voxels,
                "the colour with the most voxels comes first");
    }
    requireTextOf(import.map);

    const std::string written = arena::writeVox(import.map);
    const arena::VoxImport again = arena::readVox(written);
    require(again.replaced.empty(), "cellValues have colours of their own");
    require(sameCells(again.map, import.map), "what is written is read as the same map");
    require(arena::writeVox(again.map) == written, "the same map gives the same file");
    return 0;
}
