#include "client/recording/Block.h"

#include "client/recording/Columns.h"
#include "client/recording/StateCoder.h"
#include "common/Checksum.h"
#include "common/Files.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstring>
#include <deque>
#include <zstd.h>

namespace drench::client {

namespace {

static_assert(std::endian::native == std::endian::little);

/// The writer's program takes little more with it when it crashes.
constexpr RecordedTime longestBlock = std::chrono::seconds(1);

/// A block is full with this much, well within its limits.
constexpr std::size_t fullBlockBytes = std::size_t{1} << 20;
constexpr std::size_t fullBlockDatagrams = 8192;

/// Higher levels take much longer and save little: docs/recordings.md.
constexpr int compressionLevel = 6;

std::string_view headBytes(const BlockHead& head) {
    return {reinterpret_cast<const char*>(&head), offsetof(BlockHead, headChecksum)};
}

/// Datagrams of one kind that may come again, the latest first. The four lines of a relay carry the
/// same states.
class Latest {
  public:
    static constexpr std::size_t most = 16;

    /// The place of the same bytes, which then come to the front; nothing if there are none.
    std::optional<std::size_t> find(std::string_view bytes) {
        const auto found = std::find(datagrams_.begin(), datagrams_.end(), bytes);
        if (found == datagrams_.end())
            return std::nullopt;
        const auto place = static_cast<std::size_t>(found - datagrams_.begin());
        std::rotate(datagrams_.begin(), found, found + 1);
        return place;
    }

    void add(std::string_view bytes) {
        if (datagrams_.size() == most)
            datagrams_.pop_back();
        datagrams_.emplace_front(bytes);
    }

    /// The same for a reader, with which a place is an input.
    std::string take(std::size_t place) {
        if (place >= datagrams_.size())
            throw InputError("a datagram repeats none");
        const auto found = datagrams_.begin() + static_cast<std::ptrdiff_t>(place);
        std::rotate(datagrams_.begin(), found, found + 1);
        return datagrams_.front();
    }

  private:
    std::deque<std::string> datagrams_;
};

/// How a datagram is stored: its way in bit 0, then one of these, or `again` and a place among the
/// latest of its kind.
enum Form : std::uint8_t { asItIs, asState, again };
constexpr std::uint8_t forms = again + 3 * Latest::most;

/// The three kinds: to the room, states, and others from the room.
constexpr std::size_t kinds = 3;

std::size_t kindOf(Way way, std::string_view bytes) {
    if (way == Way::toRoom)
        return 0;
    return isCodableState(bytes) ? 1 : 2;
}

template<class Column>
struct Columns {
    Column lines;
    Column forms;
    Column times;
    Column lengths;
    Column bytes;
    StateColumns<Column> states;

    /// Calls visit(column) for each column, in the order of the file.
    template<class Visit>
    void forEach(const Visit& visit) {
        for (Column* column : {&lines, &forms, &times, &lengths, &bytes})
            visit(*column);
        for (SlotColumns<Column>& slot : states)
            slot.forEach(visit);
    }
};

std::string columnsOf(const std::vector<RecordedDatagram>& datagrams) {
    Columns<std::string> columns;
    StateCoder states;
    std::array<Latest, kinds> latest;
    RecordedTime before = datagrams.front().time;
    for (const RecordedDatagram& datagram : datagrams) {
        putNumber(columns.lines, datagram.line);
        putNumber(columns.times, static_cast<std::uint64_t>((datagram.time - before).count()));
        before = datagram.time;
        const std::size_t kind = kindOf(datagram.way, datagram.bytes);
        const std::optional<std::size_t> place = latest[kind].find(datagram.bytes);
        std::size_t form = asItIs;
        if (place) {
            form = again + kind * Latest::most + *place;
        } else {
            latest[kind].add(datagram.bytes);
            if (kind == 1) {
                form = asState;
                states.encode(datagram.bytes, columns.states);
            } else {
                putNumber(columns.lengths, datagram.bytes.size());
                columns.bytes += datagram.bytes;
            }
        }
        putByte(columns.forms,
                static_cast<std::uint8_t>(form * 2 + (datagram.way == Way::toRoom ? 1 : 0)));
    }
    std::string bytes;
    columns.forEach([&](const std::string& column) {
        putNumber(bytes, column.size());
        bytes += column;
    });
    return bytes;
}

/// The bytes of the next datagram.
std::string nextDatagram(Columns<ColumnReader>& columns, std::uint8_t form, Way way,
                         StateCoder& states, std::array<Latest, kinds>& latest) {
    if (form >= forms)
        throw InputError("a datagram has an unknown form");
    if (form >= again)
        return latest[(form - again) / Latest::most].take((form - again) % Latest::most);
    std::string bytes;
    if (form == asState) {
        bytes = states.decode(columns.states);
    } else {
        const std::uint64_t length = columns.lengths.number();
        if (length > recordingLimits::datagramBytes)
            throw InputError("a datagram is too long");
        bytes = columns.bytes.bytes(length);
    }
    latest[kindOf(way, bytes)].add(bytes);
    return bytes;
}

} // namespace

void seal(BlockHead& head) {
    head.headChecksum = checksum(headBytes(head));
}

std::string blockOf(BlockKind kind, std::string_view bytes, BlockHead head) {
    std::string stored(ZSTD_compressBound(bytes.size()), '\0');
    // Fails only for lack of memory.
    const std::size_t size =
        ZSTD_compress(stored.data(), stored.size(), bytes.data(), bytes.size(), compressionLevel);
    if (ZSTD_isError(size))
        throw InputError(std::string("not compressed: ") + ZSTD_getErrorName(size));
    stored.resize(size);
    head.kind = kind;
    head.storedBytes = static_cast<std::uint32_t>(size);
    head.bytes = static_cast<std::uint32_t>(bytes.size());
    head.storedChecksum = checksum(stored);
    seal(head);
    // Blocks may be kept for minutes: without the room that compressing needed.
    std::string block;
    block.reserve(sizeof head + size);
    block.append(reinterpret_cast<const char*>(&head), sizeof head);
    block += stored;
    return block;
}

std::optional<BlockHead> headAt(std::string_view bytes) {
    BlockHead head;
    if (bytes.size() < sizeof head)
        return std::nullopt;
    std::memcpy(&head, bytes.data(), sizeof head);
    const bool isWithinLimits =
        head.storedBytes <= blockLimits::storedBytes && head.bytes <= blockLimits::bytes &&
        head.datagrams <= blockLimits::datagrams && head.firstTime >= 0 &&
        head.firstTime <= head.lastTime && head.lastTime <= recordingLimits::duration.count();
    if (std::memcmp(head.mark, BlockHead().mark, sizeof head.mark) != 0 ||
        head.headChecksum != checksum(headBytes(head)) || !isWithinLimits)
        return std::nullopt;
    return head;
}

std::string contentOf(const BlockHead& head, std::string_view stored) {
    if (stored.size() != head.storedBytes || checksum(stored) != head.storedChecksum)
        throw InputError("its checksum is another one");
    std::string bytes(head.bytes, '\0');
    const std::size_t size =
        ZSTD_decompress(bytes.data(), bytes.size(), stored.data(), stored.size());
    if (ZSTD_isError(size) || size != bytes.size())
        throw InputError("cannot be decompressed");
    return bytes;
}

void BlockBuilder::add(const RecordedDatagram& datagram) {
    datagrams_.push_back(datagram);
    RecordedDatagram& added = datagrams_.back();
    last_ = added.time = std::clamp(added.time, last_, recordingLimits::duration);
    added.line = std::min(added.line, recordingLimits::lines - 1);
    if (added.bytes.size() > recordingLimits::datagramBytes)
        added.bytes.resize(recordingLimits::datagramBytes);
    bytes_ += added.bytes.size();
}

bool BlockBuilder::hasRoomFor(const RecordedDatagram& datagram) const {
    return isEmpty() || (datagram.time - firstTime() < longestBlock &&
                         bytes_ + datagram.bytes.size() <= fullBlockBytes &&
                         datagrams_.size() < fullBlockDatagrams);
}

std::string BlockBuilder::take() {
    BlockHead head;
    head.datagrams = static_cast<std::uint32_t>(datagrams_.size());
    head.firstTime = firstTime().count();
    head.lastTime = last_.count();
    std::string block = blockOf(BlockKind::datagrams, columnsOf(datagrams_), head);
    datagrams_.clear();
    bytes_ = 0;
    return block;
}

std::vector<RecordedDatagram> datagramsOf(const BlockHead& head, std::string_view stored) {
    const std::string content = contentOf(head, stored);
    ColumnReader left(content);
    Columns<ColumnReader> columns;
    columns.forEach(
        [&left](ColumnReader& column) { column = ColumnReader(left.bytes(left.number())); });

    StateCoder states;
    std::array<Latest, kinds> latest;
    std::vector<RecordedDatagram> datagrams;
    RecordedTime time(head.firstTime);
    std::size_t bytes = 0;
    for (std::uint32_t i = 0; i < head.datagrams; ++i) {
        const std::uint64_t gap = columns.times.number();
        if (gap > static_cast<std::uint64_t>(head.lastTime - time.count()))
            throw InputError("a datagram is later than the last one");
        time += RecordedTime(static_cast<std::int64_t>(gap));
        const std::uint64_t line = columns.lines.number();
        if (line >= recordingLimits::lines)
            throw InputError("a line has too high a number");
        const std::uint8_t form = columns.forms.byte();
        const Way way = (form & 1) != 0 ? Way::toRoom : Way::fromRoom;
        datagrams.push_back({time, way, static_cast<std::uint32_t>(line),
                             nextDatagram(columns, form / 2, way, states, latest)});
        bytes += datagrams.back().bytes.size();
        if (bytes > blockLimits::datagramBytes)
            throw InputError("it holds too many bytes");
    }
    return datagrams;
}

} // namespace drench::client
