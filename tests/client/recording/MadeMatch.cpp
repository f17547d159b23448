#include "tests/client/recording/MadeMatch.h"

#include "client/recording/RecordingBytes.h"
#include "common/Chance.h"
#include "tests/support/Courts.h"
#include "tests/support/Datagrams.h"

#include <string>

using namespace drench;
using namespace drench::client;

namespace {

std::string receipt() {
    GenericMessage record;
    record.data[0] = messageCode::join;
    return bytesOf(record);
}

} // namespace

std::vector<RecordedDatagram> madeMatch(int ticks) {
    MapManager map = loaded(emptyCourt());
    std::vector<Player> players;
    for (int i = 0; i < maxPlayers; ++i) {
        players.emplace_back(static_cast<char>('1' + i), "Player", 0.0f, i);
        players.back().setMapMan(&map);
    }
    Chance chance(1);
    std::vector<RecordedDatagram> match;
    RecordedTime now(0);
    for (int tick = 0; tick < ticks; ++tick) {
        now += RecordedTime(16000 + chance.below(700));
        UpdateMessage state;
        for (Player& player : players) {
            const auto line = static_cast<std::uint32_t>(player.playerID - '1');
            const auto send = [&](const std::string& datagram) {
                match.push_back({now, Way::toRoom, line, datagram});
                match.push_back({now, Way::fromRoom, line, receipt()});
            };
            if (chance.happens(0.05)) {
                const int key = chance.below(keyIndex::count);
                const bool isDown = !player.keys[key] || key == keyIndex::jump;
                player.setKey(key, isDown);
                send(keyDatagram(player.playerID, key, isDown));
            }
            if (chance.happens(0.7)) {
                const int dx = chance.below(41) - 20;
                const int dy = chance.below(9) - 4;
                player.rotateView(dx, dy);
                send(viewDatagram(player.playerID, dx, dy));
            }
            player.update(0.0f);
            state.add(player.getPlayerUpdate());
        }
        for (std::uint32_t line = 0; line < maxPlayers; ++line)
            match.push_back({now + RecordedTime(line * 20), Way::fromRoom, line, bytesOf(state)});
    }
    return match;
}

bool same(const RecordedDatagram& a, const RecordedDatagram& b) {
    return a.time == b.time && a.way == b.way && a.line == b.line && a.bytes == b.bytes;
}

RecordingHeader madeHeader() {
    return {.arena = "an arena\nof two lines\n",
            .room = "localhost:5000",
            .program = "a test 1.0",
            .startedAt = 1700000000000000};
}

std::string recordingOf(const std::vector<RecordedDatagram>& datagrams) {
    RecordingBytes recording(madeHeader());
    for (const RecordedDatagram& datagram : datagrams)
        recording.add(datagram);
    recording.end();
    return recording.takeReady();
}
