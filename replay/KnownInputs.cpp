#include "replay/KnownInputs.h"

#include "client/Records.h"
#include "client/RoundTrip.h"
#include "client/TickClock.h"
#include "replay/Footage.h"

#include <cstring>
#include <memory>
#include <optional>
#include <variant>

namespace drench::replay {

namespace {

constexpr std::uint32_t mostLines = 64;

/// The key or view in a datagram to the room; nothing if it is another record.
std::optional<client::InputRecord> inputIn(const std::string& datagram) {
    const auto read = [&datagram](auto record) {
        std::memcpy(static_cast<void*>(&record), datagram.data(), sizeof record);
        return client::InputRecord(record);
    };
    if (datagram.size() == sizeof(KeyMessage) && datagram.front() == messageCode::key)
        return read(KeyMessage());
    if (datagram.size() == sizeof(ViewMessage) && datagram.front() == messageCode::view)
        return read(ViewMessage());
    return std::nullopt;
}

/// One player behind its line, as far as a client needs to know it.
class Seat {
  public:
    Seat(std::uint32_t line, MapManager& map) : map_(&map), prediction_(map) { known_.line = line; }

    void take(const RecordedDatagram& datagram) {
        const client::Time now{datagram.time};
        if (datagram.way == client::Way::toRoom) {
            roundTrip_.sent(now);
            const std::optional<client::InputRecord> input = inputIn(datagram.bytes);
            hasInputs_ = hasInputs_ || input;
            if (input)
                prediction_.sent({*input}, now);
            return;
        }
        const client::RoomRecord record = client::readRecord(datagram.bytes);
        if (std::get_if<client::Receipt>(&record))
            roundTrip_.receipt(now);
        if (const auto* acceptance = std::get_if<AcceptanceMessage>(&record);
            acceptance && acceptance->id != id_) {
            settle();
            id_ = acceptance->id;
        }
        const auto* state = std::get_if<UpdateMessage>(&record);
        const PlayerUpdate* self = state ? client::playerWith(*state, id_) : nullptr;
        if (!self)
            return;
        known_.name = self->name;
        const std::int64_t tick = tickClock_.arrival(now);
        prediction_.take({*state, tick, now}, id_, roundTrip_.smoothed(), tickClock_.period());
    }

    /// Nothing if no inputs of it are known.
    std::optional<KnownInputs> finish() {
        settle();
        return hasInputs_ && !known_.name.empty() ? std::optional(known_) : std::nullopt;
    }

  private:
    /// Adds up what was predicted since it came in.
    void settle() {
        const client::Prediction::Statistics& more = prediction_.statistics();
        client::Prediction::Statistics& all = known_.statistics;
        all.exact += more.exact;
        all.close += more.close;
        all.unexplained += more.unexplained;
        all.breaks += more.breaks;
        all.lostKeys += more.lostKeys;
        all.lostViews += more.lostViews;
        prediction_ = client::Prediction(*map_);
        tickClock_ = {};
    }

    MapManager* map_;
    client::Prediction prediction_;
    client::TickClock tickClock_;
    client::RoundTrip roundTrip_;
    char id_ = 0;
    bool hasInputs_ = false;
    KnownInputs known_;
};

} // namespace

std::vector<KnownInputs> predictKnownInputs(client::RecordingReader& reader, MapManager& map) {
    std::vector<std::unique_ptr<Seat>> seats;
    while (const std::optional<RecordedDatagram> datagram = reader.next()) {
        if (datagram->line >= mostLines)
            continue;
        while (seats.size() <= datagram->line)
            seats.push_back(std::make_unique<Seat>(static_cast<std::uint32_t>(seats.size()), map));
        seats[datagram->line]->take(*datagram);
    }
    std::vector<KnownInputs> known;
    for (const std::unique_ptr<Seat>& seat : seats) {
        if (std::optional<KnownInputs> one = seat->finish())
            known.push_back(std::move(*one));
    }
    return known;
}

} // namespace drench::replay
