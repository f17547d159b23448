#include "client/recording/RecentRecording.h"

#include "client/recording/RecordingBytes.h"

#include <chrono>
#include <utility>

namespace drench::client {

RecentRecording::RecentRecording(RecordingHeader header, Time start, RecordedTime span)
    : header_(std::move(header)), start_(start), span_(span) {}

void RecentRecording::take(Way way, std::uint32_t line, std::string_view datagram, Time now) {
    const RecordedDatagram taken = {std::chrono::duration_cast<RecordedTime>(now - start_), way,
                                    line, std::string(datagram)};
    if (!builder_.hasRoomFor(taken))
        endBlock();
    builder_.add(taken);
}

void RecentRecording::endBlock() {
    if (builder_.isEmpty())
        return;
    const RecordedTime first = builder_.firstTime();
    blocks_.push_back({builder_.take(), first, builder_.lastTime()});
    bytes_ += blocks_.back().block.size();
    while (blocks_.front().lastTime < builder_.lastTime() - span_ || bytes_ > mostBytes) {
        bytes_ -= blocks_.front().block.size();
        blocks_.pop_front();
    }
}

RecordedTime RecentRecording::duration() const {
    if (blocks_.empty() && builder_.isEmpty())
        return RecordedTime(0);
    return builder_.lastTime() -
           (blocks_.empty() ? builder_.firstTime() : blocks_.front().firstTime);
}

std::string RecentRecording::recording() {
    endBlock();
    const RecordedTime start = blocks_.empty() ? RecordedTime(0) : blocks_.front().firstTime;
    RecordingHeader header = header_;
    header.startedAt += start.count();
    RecordingBytes recording(header);
    for (const Kept& kept : blocks_)
        recording.addBlock(kept.block, start);
    recording.end();
    return recording.takeReady();
}

} // namespace drench::client
