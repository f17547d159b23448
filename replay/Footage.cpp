#include "replay/Footage.h"

#include "client/Records.h"
#include "common/Files.h"

#include <chrono>
#include <variant>

namespace drench::replay {

namespace {

/// Longer than a line that goes on is ever silent.
constexpr RecordedTime silence = std::chrono::milliseconds(1500);

} // namespace

bool OneLine::takes(const RecordedDatagram& datagram) {
    if (datagram.way != client::Way::fromRoom)
        return false;
    const bool isState = datagram.bytes.size() == sizeof(UpdateMessage) &&
                         datagram.bytes.front() == messageCode::worldState;
    if (isState && (!line_ || datagram.time - lastState_ > silence))
        line_ = datagram.line;
    if (line_ != datagram.line)
        return false;
    if (isState)
        lastState_ = datagram.time;
    return true;
}

std::vector<Frame> statesOf(client::RecordingReader& reader, std::size_t most) {
    std::vector<Frame> frames;
    OneLine line;
    while (const std::optional<RecordedDatagram> datagram = reader.next()) {
        if (!line.takes(*datagram))
            continue;
        const client::RoomRecord record = client::readRecord(datagram->bytes);
        const auto* state = std::get_if<UpdateMessage>(&record);
        if (!state)
            continue;
        if (frames.size() == most)
            throw InputError(reader.name() + ": longer than can be looked into at once; cut it");
        frames.push_back({datagram->time, *state});
    }
    return frames;
}

} // namespace drench::replay
