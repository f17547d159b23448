#include "replay/Editing.h"

#include "client/recording/RecordingBytes.h"
#include "common/Files.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <limits>
#include <optional>
#include <utility>

namespace drench::replay {

using client::RecordedDatagram;
using client::RecordedTime;
using client::RecordingBytes;
using client::RecordingHeader;
using client::RecordingReader;

namespace {

/// A recording on its way into a joint one.
struct Piece {
    RecordingReader* reader;
    std::int64_t start = 0;
    std::int64_t end = 0;
    std::uint32_t firstLine = 0;
    std::optional<RecordedDatagram> next;
};

std::uint32_t linesIn(RecordingReader& reader) {
    std::uint32_t lines = 1;
    while (const std::optional<RecordedDatagram> datagram = reader.next())
        lines = std::max(lines, datagram->line + 1);
    reader.seek(RecordedTime(0));
    return lines;
}

/// The arena that all of them have, where known.
std::string commonArena(const std::vector<RecordingReader>& readers) {
    std::string arena;
    for (const RecordingReader& reader : readers) {
        const std::string& own = reader.header().arena;
        if (!own.empty() && !arena.empty() && own != arena)
            throw InputError(reader.name() + ": plays another arena than those before it");
        if (arena.empty())
            arena = own;
    }
    return arena;
}

} // namespace

std::string cut(RecordingReader& reader, RecordedTime from, RecordedTime to) {
    RecordingHeader header = reader.header();
    header.startedAt += from.count();
    RecordingBytes recording(header);
    reader.seek(from);
    bool isEmpty = true;
    for (std::optional<RecordedDatagram> datagram = reader.next(); datagram && datagram->time < to;
         datagram = reader.next()) {
        datagram->time -= from;
        recording.add(*datagram);
        isEmpty = false;
    }
    if (isEmpty)
        throw InputError(reader.name() + ": there is nothing at these times");
    recording.end();
    return recording.takeReady();
}

std::string join(std::vector<RecordingReader>& readers) {
    RecordingHeader header = readers.front().header();
    header.arena = commonArena(readers);
    std::vector<Piece> pieces;
    std::uint32_t lines = 0;
    for (RecordingReader& reader : readers) {
        Piece piece{.reader = &reader, .start = reader.header().startedAt, .next = {}};
        piece.end = piece.start + reader.duration().count();
        const bool overlaps = std::any_of(pieces.begin(), pieces.end(), [&](const Piece& other) {
            return piece.start <= other.end && other.start <= piece.end;
        });
        piece.firstLine = overlaps ? lines : 0;
        const std::uint32_t last = piece.firstLine + linesIn(reader);
        if (last > client::recordingLimits::lines)
            throw InputError(reader.name() + ": with those before it there are more than " +
                             std::to_string(client::recordingLimits::lines) + " lines");
        lines = std::max(lines, last);
        piece.next = reader.next();
        pieces.push_back(std::move(piece));
    }
    header.startedAt =
        std::min_element(pieces.begin(), pieces.end(), [](const Piece& a, const Piece& b) {
            return a.start < b.start;
        })->start;
    for (const Piece& piece : pieces) {
        if (piece.start - header.startedAt >
            client::recordingLimits::duration.count() - piece.reader->duration().count())
            throw InputError(piece.reader->name() + ": was made too long after the others");
    }

    RecordingBytes recording(header);
    while (true) {
        Piece* earliest = nullptr;
        const auto timeOf = [&](const Piece& piece) {
            return piece.start + piece.next->time.count();
        };
        for (Piece& piece : pieces) {
            if (piece.next && (!earliest || timeOf(piece) < timeOf(*earliest)))
                earliest = &piece;
        }
        if (!earliest)
            break;
        RecordedDatagram& datagram = *earliest->next;
        datagram.time = RecordedTime(timeOf(*earliest) - header.startedAt);
        datagram.line += earliest->firstLine;
        recording.add(datagram);
        earliest->next = earliest->reader->next();
    }
    recording.end();
    return recording.takeReady();
}

} // namespace drench::replay
