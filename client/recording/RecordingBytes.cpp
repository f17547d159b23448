#include "client/recording/RecordingBytes.h"

#include "client/recording/Columns.h"
#include "common/Checksum.h"
#include "common/Files.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace drench::client {

namespace {

void putText(std::string& bytes, const std::string& text) {
    if (text.size() > recordingLimits::textBytes)
        throw InputError("the name of a room or program is too long for a recording");
    putNumber(bytes, text.size());
    bytes += text;
}

} // namespace

RecordingHeader headerNow(std::string arena, std::string room, std::string program) {
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return {.arena = std::move(arena),
            .room = std::move(room),
            .program = std::move(program),
            .startedAt = std::chrono::duration_cast<std::chrono::microseconds>(now).count()};
}

RecordingBytes::RecordingBytes(const RecordingHeader& header, std::size_t mostBytes)
    : mostBytes_(mostBytes) {
    if (header.arena.size() > recordingLimits::arenaBytes)
        throw InputError("the arena is too large for a recording");
    if (!isPossibleStart(header.startedAt))
        throw InputError("a recording cannot begin at such a time");
    std::string bytes;
    putSigned(bytes, header.startedAt);
    putText(bytes, header.room);
    putText(bytes, header.program);
    putNumber(bytes, header.arena.size());
    putNumber(bytes, checksum(header.arena));
    append(std::string(recordingMagic));
    append(blockOf(BlockKind::header, bytes));
    if (!header.arena.empty())
        append(blockOf(BlockKind::arena, header.arena));
}

void RecordingBytes::add(const RecordedDatagram& datagram) {
    if (!builder_.hasRoomFor(datagram))
        endBlock();
    if (size_ + places_.size() + lastBytes > mostBytes_)
        throw InputError("a recording is no larger than " + std::to_string(mostBytes_ >> 20) +
                         " MiB");
    if (places_.size() + lastBytes > blockLimits::bytes)
        throw InputError("a recording has no more than " + std::to_string(blocks_) + " blocks");
    builder_.add(datagram);
}

void RecordingBytes::addBlock(std::string block, RecordedTime shift) {
    BlockHead head;
    std::memcpy(&head, block.data(), sizeof head);
    head.firstTime -= shift.count();
    head.lastTime -= shift.count();
    seal(head);
    std::memcpy(block.data(), &head, sizeof head);
    const BlockPlace place{size_, RecordedTime(head.firstTime), RecordedTime(head.lastTime),
                           head.datagrams};
    putNumber(places_, place.offset - last_.offset);
    putNumber(places_, static_cast<std::uint64_t>((place.firstTime - last_.lastTime).count()));
    putNumber(places_, static_cast<std::uint64_t>((place.lastTime - place.firstTime).count()));
    putNumber(places_, place.datagrams);
    last_ = place;
    ++blocks_;
    append(block);
}

void RecordingBytes::endBlock() {
    if (!builder_.isEmpty())
        addBlock(builder_.take(), RecordedTime(0));
}

void RecordingBytes::end() {
    endBlock();
    std::string index;
    putNumber(index, blocks_);
    index += places_;
    IndexTrailer trailer;
    trailer.offset = size_;
    append(blockOf(BlockKind::index, index));
    append({reinterpret_cast<const char*>(&trailer), sizeof trailer});
}

std::string RecordingBytes::takeReady() {
    return std::exchange(ready_, {});
}

void RecordingBytes::append(const std::string& bytes) {
    ready_ += bytes;
    size_ += bytes.size();
}

} // namespace drench::client
