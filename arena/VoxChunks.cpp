#include "arena/VoxChunks.h"

#include "arena/Map.h"
#include "common/Files.h"

#include <algorithm>

namespace drench::arena {

namespace {

/// A chunk's id, and the lengths of its content and of its children.
constexpr std::size_t chunkHeaderBytes = 12;

/// SIZE holds three numbers.
constexpr std::size_t sizeBytes = 12;

/// RGBA holds 256 colours of four bytes.
constexpr std::size_t paletteBytes = 1024;

std::int32_t int32At(const std::string& bytes, std::size_t at) {
    std::uint32_t value = 0;
    for (std::size_t i = 4; i-- > 0;)
        value = value << 8 | byteAt(bytes, at + i);
    return static_cast<std::int32_t>(value);
}

struct Chunk {
    std::string_view id;
    std::size_t start;
    std::size_t content;
    std::size_t children;
    std::size_t end;

    std::size_t contentBytes() const { return children - content; }
};

/// The id as text for messages, whatever its bytes are.
std::string printable(std::string_view id) {
    std::string text(id);
    std::replace_if(
        text.begin(), text.end(), [](char c) { return c < ' ' || c > '~'; }, '?');
    return text;
}

/// The end of a part of a chunk that begins at `start` and has its length at `at`.
std::size_t endOfPart(const std::string& bytes, std::size_t at, std::size_t start, std::size_t end,
                      std::string_view id, const char* part) {
    const std::int32_t length = int32At(bytes, at);
    if (length < 0 || static_cast<std::size_t>(length) > end - start)
        failAtByte(at, printable(id) + " with " + part + " of " + std::to_string(length) +
                           " bytes, where " + std::to_string(end - start) + " are left");
    return start + static_cast<std::size_t>(length);
}

/// The chunk that starts at `start` and must not reach beyond `end`.
Chunk chunkAt(const std::string& bytes, std::size_t start, std::size_t end) {
    if (end - start < chunkHeaderBytes)
        failAtByte(start, std::to_string(end - start) + " bytes, too few for the head of a chunk");
    const std::string_view id = std::string_view(bytes).substr(start, 4);
    const std::size_t content = start + chunkHeaderBytes;
    const std::size_t children = endOfPart(bytes, start + 4, content, end, id, "content");
    const std::size_t chunkEnd = endOfPart(bytes, start + 8, children, end, id, "children");
    return {id, start, content, children, chunkEnd};
}

void requireContent(const Chunk& chunk, std::size_t allowed) {
    if (chunk.contentBytes() != allowed)
        failAtByte(chunk.start + 4,
                   printable(chunk.id) + " with " + std::to_string(chunk.contentBytes()) +
                       " bytes of content, where " + std::to_string(allowed) + " are allowed");
}

Chunk mainChunk(const std::string& bytes) {
    if (!bytes.starts_with(voxMagic))
        failAtByte(0, "no \"VOX \" at the start, so this is no voxel file");
    if (bytes.size() < 8)
        failAtByte(4, "the end where the version is allowed");
    const std::int32_t version = int32At(bytes, 4);
    if (version != 150 && version != 200)
        failAtByte(4, "version " + std::to_string(version) + ", where 150 and 200 are allowed");
    const Chunk main = chunkAt(bytes, 8, bytes.size());
    if (main.id != "MAIN")
        failAtByte(main.start, "chunk " + printable(main.id) + " where MAIN is allowed");
    if (main.end != bytes.size())
        failAtByte(main.end,
                   std::to_string(bytes.size() - main.end) + " bytes after the end of MAIN");
    return main;
}

void placeVoxels(const std::string& bytes, const Chunk& chunk, VoxLayout& layout) {
    if (chunk.contentBytes() < 4)
        failAtByte(chunk.start + 4, "XYZI without a count of voxels");
    layout.voxels = chunk.content + 4;
    layout.voxelsEnd = chunk.children;
    const std::int32_t count = int32At(bytes, chunk.content);
    const std::size_t room = layout.voxelsEnd - layout.voxels;
    if (count < 0 || static_cast<std::size_t>(count) * voxelBytes != room)
        failAtByte(chunk.content, std::to_string(count) + " voxels in " + std::to_string(room) +
                                      " bytes, where each takes 4");
}

} // namespace

void failAtByte(std::size_t byte, const std::string& what) {
    throw InputError("byte " + std::to_string(byte) + ": " + what);
}

std::uint8_t byteAt(const std::string& bytes, std::size_t at) {
    return static_cast<std::uint8_t>(bytes[at]);
}

VoxLayout voxLayoutOf(const std::string& bytes) {
    const Chunk main = mainChunk(bytes);
    VoxLayout layout;
    std::size_t pack = 0;
    int models = 0;
    bool sizeIsNext = true;
    for (std::size_t at = main.children; at < main.end;) {
        const Chunk chunk = chunkAt(bytes, at, main.end);
        if (chunk.id == "SIZE" || chunk.id == "XYZI") {
            if (sizeIsNext != (chunk.id == "SIZE"))
                failAtByte(at, printable(chunk.id) + " where " + (sizeIsNext ? "SIZE" : "XYZI") +
                                   " is allowed next");
            sizeIsNext = !sizeIsNext;
        }
        if (chunk.id == "SIZE") {
            requireContent(chunk, sizeBytes);
            layout.size = chunk.content;
        } else if (chunk.id == "XYZI") {
            placeVoxels(bytes, chunk, layout);
            ++models;
        } else if (chunk.id == "RGBA") {
            requireContent(chunk, paletteBytes);
            layout.palette = chunk.content;
        } else if (chunk.id == "PACK") {
            requireContent(chunk, 4);
            pack = chunk.content;
        }
        at = chunk.end;
    }
    if (!sizeIsNext)
        failAtByte(main.end, "the end where XYZI is allowed next");
    if (models == 0)
        failAtByte(main.end, "the end, and no model before it");
    if (models > 1)
        throw InputError("holds " + std::to_string(models) +
                         " models; merge them into one in the editor");
    if (pack != 0 && int32At(bytes, pack) != models)
        failAtByte(pack,
                   "PACK says " + std::to_string(int32At(bytes, pack)) + " models, but 1 follows");
    return layout;
}

VoxSides voxSidesAt(const std::string& bytes, std::size_t at) {
    const VoxSides sides{int32At(bytes, at), int32At(bytes, at + 4), int32At(bytes, at + 8)};
    const auto [shortest, longest] = std::minmax({sides.x, sides.y, sides.z});
    const std::string size = "a model of " + sizeWords(sides.x, sides.y, sides.z) + " voxels";
    if (shortest < 1 || longest > longestVoxSide)
        failAtByte(at, size + ", where 1 to 256 are allowed each way");
    if (!isArenaSize(sides.x, sides.z, sides.y))
        failAtByte(at,
                   size + ", where at most " + std::to_string(mostCells) + " are allowed together");
    return sides;
}

} // namespace drench::arena
