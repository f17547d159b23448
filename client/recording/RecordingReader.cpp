#include "client/recording/RecordingReader.h"

#include "client/recording/Block.h"
#include "client/recording/Columns.h"
#include "common/Checksum.h"
#include "common/Files.h"

#include <algorithm>
#include <cstring>
#include <string_view>
#include <utility>

namespace drench::client {

namespace {

std::string textIn(ColumnReader& content) {
    const std::uint64_t length = content.number();
    if (length > recordingLimits::textBytes)
        throw InputError("a name is too long");
    return std::string(content.bytes(length));
}

RecordedTime timeAfter(RecordedTime time, std::uint64_t gap) {
    if (gap > static_cast<std::uint64_t>((recordingLimits::duration - time).count()))
        throw InputError("a time is too late");
    return time + RecordedTime(static_cast<std::int64_t>(gap));
}

/// The blocks that an index names. Throws InputError if they cannot lie one behind the other in
/// `size` bytes.
std::vector<BlockPlace> placesIn(std::string_view content, std::uint64_t size) {
    ColumnReader left(content);
    const std::uint64_t count = left.number();
    std::vector<BlockPlace> places;
    BlockPlace place;
    for (std::uint64_t i = 0; i < count; ++i) {
        const std::uint64_t gap = left.number();
        if (gap < sizeof(BlockHead) || gap > size - place.offset)
            throw InputError("blocks overlap or lie outside");
        place.offset += gap;
        place.firstTime = timeAfter(place.lastTime, left.number());
        place.lastTime = timeAfter(place.firstTime, left.number());
        place.datagrams = left.number();
        if (place.datagrams > blockLimits::datagrams)
            throw InputError("a block has too many datagrams");
        places.push_back(place);
    }
    return places;
}

} // namespace

RecordingReader RecordingReader::open(const std::string& path) {
    return RecordingReader(readFile(path, recordingLimits::fileBytes), path);
}

RecordingReader::RecordingReader(std::string bytes, std::string name)
    : bytes_(std::move(bytes)), name_(std::move(name)) {
    readMagic();
    if (!readIndex())
        scan();
    if (!hasHeader_)
        note(0, "its header is missing");
}

void RecordingReader::readMagic() {
    const std::string_view start = std::string_view(bytes_).substr(0, recordingMagic.size());
    const std::string_view product = recordingMagic.substr(0, recordingMagic.size() - 1);
    if (bytes_.empty() || !product.starts_with(start.substr(0, product.size())))
        throw InputError(name_ + ": is no recording");
    if (start.size() == recordingMagic.size() && start != recordingMagic)
        throw InputError(name_ + ": is a recording of version " +
                         std::to_string(static_cast<unsigned char>(start.back())) +
                         "; this program reads version " +
                         std::to_string(static_cast<int>(recordingMagic.back())));
}

/// Takes the blocks from the index; false if there is none, or it is damaged.
bool RecordingReader::readIndex() {
    IndexTrailer trailer;
    if (bytes_.size() < recordingMagic.size() + sizeof trailer)
        return false;
    const std::size_t end = bytes_.size() - sizeof trailer;
    std::memcpy(&trailer, bytes_.data() + end, sizeof trailer);
    if (std::memcmp(trailer.mark, IndexTrailer().mark, sizeof trailer.mark) != 0 ||
        trailer.offset >= end)
        return false;
    const auto indexAt = static_cast<std::size_t>(trailer.offset);
    const std::string_view index = std::string_view(bytes_).substr(indexAt, end - indexAt);
    const std::optional<BlockHead> head = headAt(index);
    if (!head || head->kind != BlockKind::index)
        return false;
    try {
        blocks_ = placesIn(contentOf(*head, index.substr(sizeof *head)), indexAt);
    } catch (const InputError&) {
        return false;
    }
    // What stands before the first block of datagrams.
    const std::size_t datagramsAt =
        blocks_.empty() ? indexAt : static_cast<std::size_t>(blocks_.front().offset);
    for (std::size_t offset = recordingMagic.size(); offset < datagramsAt;) {
        const std::size_t size = takeBlock(offset);
        if (size == 0)
            break;
        offset += size;
    }
    return true;
}

/// Finds the blocks by going from one to the next, and by their marks behind damage.
void RecordingReader::scan() {
    const BlockHead any;
    const std::string_view mark(any.mark, sizeof any.mark);
    std::size_t offset = recordingMagic.size();
    while (offset < bytes_.size()) {
        if (const std::size_t size = takeBlock(offset); size > 0) {
            offset += size;
            continue;
        }
        std::size_t next = offset;
        do {
            next = bytes_.find(mark, next + 1);
        } while (next != std::string::npos && !headAt(std::string_view(bytes_).substr(next)));
        if (next == std::string::npos)
            break;
        note(offset, "damaged up to byte " + std::to_string(next));
        offset = next;
    }
    note(std::min(offset, bytes_.size()), "cut off here, and read up to here");
}

/// Takes the block that begins here, and returns its size; 0 if there is none, or it is cut off. A
/// block whose head is whole counts even if the rest is damaged: so no byte is looked at twice.
std::size_t RecordingReader::takeBlock(std::size_t offset) {
    const std::string_view bytes = std::string_view(bytes_).substr(offset);
    const std::optional<BlockHead> head = headAt(bytes);
    if (!head || bytes.size() - sizeof *head < head->storedBytes)
        return 0;
    const std::size_t size = sizeof *head + head->storedBytes;
    const std::string_view stored = bytes.substr(sizeof *head, head->storedBytes);
    try {
        switch (head->kind) {
        case BlockKind::header:
            if (hasHeader_)
                break;
            if (head->bytes > blockLimits::headerBytes)
                throw InputError("a header is too long");
            takeHeader(contentOf(*head, stored));
            break;
        case BlockKind::arena:
            // Only once, right or wrong: each takes long to decompress.
            if (!std::exchange(hasMetArena_, true))
                takeArena(contentOf(*head, stored));
            break;
        case BlockKind::datagrams:
            if (RecordedTime(head->firstTime) < duration())
                throw InputError("begins before the block before it ended");
            blocks_.push_back({offset, RecordedTime(head->firstTime), RecordedTime(head->lastTime),
                               head->datagrams});
            break;
        case BlockKind::index:
        default:
            break;
        }
    } catch (const InputError& error) {
        note(offset, std::string("a block that cannot be read: ") + error.what());
    }
    return size;
}

void RecordingReader::takeHeader(std::string_view content) {
    ColumnReader left(content);
    RecordingHeader header;
    header.startedAt = left.signedNumber();
    if (!isPossibleStart(header.startedAt))
        throw InputError("it began at an impossible time");
    header.room = textIn(left);
    header.program = textIn(left);
    if (left.number() > 0)
        arenaChecksum_ = left.number();
    header_ = std::move(header);
    hasHeader_ = true;
}

void RecordingReader::takeArena(std::string arena) {
    if (arena.size() > recordingLimits::arenaBytes || checksum(arena) != arenaChecksum_)
        throw InputError("it is not the arena that the header names");
    header_.arena = std::move(arena);
}

RecordedTime RecordingReader::duration() const {
    return blocks_.empty() ? RecordedTime(0) : blocks_.back().lastTime;
}

std::uint64_t RecordingReader::datagrams() const {
    std::uint64_t count = 0;
    for (const BlockPlace& block : blocks_)
        count += block.datagrams;
    return count;
}

std::optional<RecordedDatagram> RecordingReader::next() {
    for (; block_ < blocks_.size(); ++block_) {
        if (!isLoaded_) {
            load(block_);
            nextLoaded_ = 0;
            isLoaded_ = true;
        }
        if (nextLoaded_ < loaded_.size())
            return std::move(loaded_[nextLoaded_++]);
        isLoaded_ = false;
    }
    return std::nullopt;
}

void RecordingReader::seek(RecordedTime time) {
    const auto found =
        std::partition_point(blocks_.begin(), blocks_.end(),
                             [time](const BlockPlace& block) { return block.lastTime < time; });
    block_ = static_cast<std::size_t>(found - blocks_.begin());
    isLoaded_ = block_ < blocks_.size();
    if (!isLoaded_)
        return;
    load(block_);
    const auto first = std::partition_point(
        loaded_.begin(), loaded_.end(),
        [time](const RecordedDatagram& datagram) { return datagram.time < time; });
    nextLoaded_ = static_cast<std::size_t>(first - loaded_.begin());
}

/// Decodes a block; one that is damaged has no datagrams.
void RecordingReader::load(std::size_t block) {
    const BlockPlace& place = blocks_[block];
    const auto offset = static_cast<std::size_t>(place.offset);
    loaded_.clear();
    try {
        // A block of an index may claim bytes of the next one, which would be read many times over.
        const std::size_t end = block + 1 < blocks_.size()
                                    ? static_cast<std::size_t>(blocks_[block + 1].offset)
                                    : bytes_.size();
        const std::string_view bytes = std::string_view(bytes_).substr(offset, end - offset);
        const std::optional<BlockHead> head = headAt(bytes);
        if (!head || head->kind != BlockKind::datagrams ||
            RecordedTime(head->firstTime) != place.firstTime ||
            RecordedTime(head->lastTime) != place.lastTime)
            throw InputError("its head is damaged");
        loaded_ = datagramsOf(*head, bytes.substr(sizeof *head, head->storedBytes));
    } catch (const InputError& error) {
        note(offset, std::string("a block that cannot be read: ") + error.what());
    }
}

/// The same problem may be met again after a seek.
void RecordingReader::note(std::size_t offset, const std::string& what) {
    std::string problem = name_ + ": byte " + std::to_string(offset) + ": " + what;
    if (std::find(problems_.begin(), problems_.end(), problem) == problems_.end() &&
        problems_.size() < mostProblems)
        problems_.push_back(std::move(problem));
}

} // namespace drench::client
