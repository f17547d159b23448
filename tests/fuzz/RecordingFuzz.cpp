// Any bytes as a recording, as the content of each kind of block with the checksums that get it
// read, and as datagrams to be recorded. The first byte of an input says which.

#include "client/recording/Block.h"
#include "client/recording/RecordingBytes.h"
#include "client/recording/RecordingReader.h"
#include "src/Messages.h"
#include "tests/fuzz/Bytes.h"
#include "tests/fuzz/InputErrors.h"

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

using namespace drench;
using namespace drench::client;

namespace {

/// So that no input takes long: the datagrams of a block may be long, many and all the same.
constexpr std::size_t mostDatagrams = 20000;

std::vector<RecordedDatagram> datagramsIn(RecordingReader& reader) {
    std::vector<RecordedDatagram> datagrams;
    RecordedTime last(0);
    while (std::optional<RecordedDatagram> datagram = reader.next()) {
        require(datagram->time >= last, "times are in order");
        require(datagram->time <= reader.duration(), "no time lies behind the end");
        require(datagram->bytes.size() <= recordingLimits::datagramBytes, "no datagram is longer");
        last = datagram->time;
        datagrams.push_back(std::move(*datagram));
        if (datagrams.size() > mostDatagrams)
            break;
    }
    return datagrams;
}

void requireComesBack(const std::vector<RecordedDatagram>& datagrams) {
    RecordingBytes recording({});
    for (const RecordedDatagram& datagram : datagrams)
        recording.add(datagram);
    recording.end();
    RecordingReader reader(recording.takeReady(), "again");
    for (const RecordedDatagram& datagram : datagrams) {
        const std::optional<RecordedDatagram> again = reader.next();
        require(again && again->bytes == datagram.bytes && again->time == datagram.time &&
                    again->way == datagram.way && again->line == datagram.line,
                "what is recorded is read");
    }
    require(!reader.next() && reader.problems().empty(), "and nothing else");
}

void read(const std::string& bytes) {
    try {
        RecordingReader reader(bytes, "fuzz");
        std::vector<RecordedDatagram> datagrams = datagramsIn(reader);
        if (datagrams.size() <= mostDatagrams)
            requireComesBack(datagrams);
        reader.seek(reader.duration() / 2);
        if (const std::optional<RecordedDatagram> datagram = reader.next())
            require(datagram->time >= reader.duration() / 2, "nothing lies before what is sought");
        for (const std::string& problem : reader.problems())
            requireOneLine(problem);
    } catch (const InputError& error) {
        requireOneLine(error.what());
    }
}

std::string asBlock(BlockKind kind, Bytes& bytes) {
    BlockHead head;
    if (kind == BlockKind::datagrams) {
        head.datagrams = bytes.next<std::uint16_t>();
        head.lastTime = bytes.next<std::uint32_t>();
    }
    return blockOf(kind, bytes.text(SIZE_MAX), head);
}

/// A recording of a header, a block of datagrams and an index of the input.
std::string withIndex(Bytes& bytes) {
    RecordingBytes recording({});
    recording.add({RecordedTime(5), Way::fromRoom, 1, "x"});
    recording.endBlock();
    std::string file = recording.takeReady();
    IndexTrailer trailer;
    trailer.offset = file.size();
    file += blockOf(BlockKind::index, bytes.text(SIZE_MAX));
    file.append(reinterpret_cast<const char*>(&trailer), sizeof trailer);
    return file;
}

std::vector<RecordedDatagram> datagramsFrom(Bytes& bytes) {
    std::vector<RecordedDatagram> datagrams;
    RecordedTime time(0);
    while (!bytes.isEmpty() && datagrams.size() < mostDatagrams) {
        time += RecordedTime(bytes.next<std::uint16_t>());
        const auto what = bytes.next<std::uint8_t>();
        const bool isState = (what & 2) != 0;
        std::string text = bytes.text(isState ? sizeof(UpdateMessage) - 4 : what >> 2);
        if (isState) {
            text.insert(0, std::string("u\0\0\0", 4));
            text.resize(sizeof(UpdateMessage));
        }
        datagrams.push_back({time, (what & 1) != 0 ? Way::toRoom : Way::fromRoom, what, text});
    }
    return datagrams;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Bytes bytes(data, size);
    const std::string magic(recordingMagic);
    switch (bytes.next<std::uint8_t>() % 6) {
    case 0:
        read(bytes.text(size));
        break;
    case 1:
        read(magic + asBlock(BlockKind::datagrams, bytes));
        break;
    case 2:
        read(magic + asBlock(BlockKind::header, bytes));
        break;
    case 3:
        read(withIndex(bytes));
        break;
    case 4:
        read(magic + bytes.text(size));
        break;
    default:
        requireComesBack(datagramsFrom(bytes));
    }
    return 0;
}
