// Bots in a room that sends anything. An input is the bots' skill and seed, and then what the room
// does, one byte each and what it needs: three bits say what, five bits how much or who. The room
// is a socket on 127.0.0.1, where what is sent has arrived.

#include "bots/Play.h"
#include "bots/Report.h"
#include "replay/Tracks.h"
#include "src/Messages.h"
#include "tests/bots/LevelRoadmap.h"
#include "tests/fuzz/Bytes.h"
#include "tests/fuzz/HostileState.h"
#include "tests/fuzz/Require.h"
#include "tests/fuzz/RoomSocket.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <sstream>
#include <string>

using namespace drench;

namespace {

/// Of one input, so that no input takes long.
constexpr int mostStates = 400;

/// A court with some cubes to hide behind, to jump on and to bump into.
struct Arena {
    MapManager map = court(9, 6, 9, [](int i, int j, int k) {
        return (j == 1 && i % 3 == 0 && k % 4 == 0) || (j <= 3 && i == 4 && k == 4);
    });
    bots::Roadmap roadmap = levelRoadmap(map);
};

UpdateMessage firstState() {
    UpdateMessage state;
    for (int i = 0; i < maxPlayers; ++i) {
        PlayerUpdate& player = state.updates[i];
        player.id = static_cast<char>('1' + i);
        player.position = standingIn(2 + i, 2);
        player.direction = vec3(0.0f, 0.0f, 1.0f);
        // Ours is the first, by the name that Play gives it.
        const std::string name = "Bot " + std::to_string(i + 1);
        std::copy(name.begin(), name.end(), player.name);
    }
    return state;
}

/// One bot, and the room that it plays in.
class Match {
  public:
    Match(const bots::Roadmap& roadmap, double skill, std::uint64_t seed)
        : play_(roadmap, {{"room", room_.address()}},
                {.playersPerRoom = 1,
                 .skill = skill,
                 .seed = seed,
                 .name = "Bot",
                 .keepTracks = true},
                [](const std::string&) {}) {
        step();
        send({messageCode::accepted, '1'});
    }

    void send(const std::string& datagram) {
        room_.send(datagram);
        step();
    }

    const bots::Play& play() const { return play_; }

  private:
    void step() {
        play_.step(client::Clock::now());
        while (room_.receive()) {
        }
    }

    RoomSocket room_;
    bots::Play play_;
};

void checkResults(const bots::Play& play, const MapManager& map, int statesSent) {
    bots::Report report;
    report.bots = {"arena", 1, 0.5};
    report.rooms = {"room"};
    report.players = play.players();
    const bots::Tally tally = report.total();
    require(tally.snapshots <= static_cast<std::uint64_t>(statesSent),
            "no more snapshots are counted than came");
    require(std::isfinite(tally.distance) && tally.distance >= 0.0, "a distance is a number");
    require(tally.deaths <= static_cast<long>(tally.snapshots) && tally.deaths >= 0,
            "a death takes a snapshot");
    require(tally.burstsThatSoaked <= tally.bursts, "soaking bursts are bursts");
    std::ostringstream out;
    bots::writeTable(out, report);
    bots::writeJson(out, report);
    const arena::Image image = replay::tracksPicture(map, play.tracks(), 120, 120);
    require(image.width == 120 && image.height == 120, "tracks are drawn in the size asked for");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static Arena arena;
    Bytes bytes(data, size);
    const double skill = bytes.next<std::uint8_t>() / 255.0;
    Match match(arena.roadmap, skill, bytes.next<std::uint8_t>());
    HostileState state(firstState());
    match.send(state.datagram());
    require(match.play().standing().snapshots == 1, "the bot plays");
    int states = 1;
    while (!bytes.isEmpty() && states < mostStates) {
        const auto step = bytes.next<std::uint8_t>();
        const auto much = static_cast<std::size_t>(step & 31);
        switch (step >> 5) {
        case 0:
            for (std::size_t i = 0; i <= much; ++i, ++states)
                match.send(state.datagram());
            break;
        case 1:
            state.change(much, offsetof(PlayerUpdate, position), bytes.text(sizeof(vec3)));
            break;
        case 2:
            state.change(much, offsetof(PlayerUpdate, direction), bytes.text(sizeof(vec3)));
            break;
        case 3:
            state.change(much, offsetof(PlayerUpdate, points), bytes.text(sizeof(std::int32_t)));
            break;
        case 4:
            state.change(much, offsetof(PlayerUpdate, shooting), bytes.text(1));
            break;
        case 5: {
            const auto offset = bytes.next<std::uint8_t>();
            state.change(much, offset, bytes.text(8));
            break;
        }
        case 6:
            match.send(bytes.text(much + 1));
            break;
        default: {
            // Records of their right sizes.
            TalkMessage words;
            const std::string text = bytes.text(sizeof words.text);
            std::memcpy(words.text, text.data(), text.size());
            words.id = static_cast<char>('0' + much % 8);
            match.send({reinterpret_cast<const char*>(&words), sizeof words});
        }
        }
    }
    // What the input has set up is seen at least once.
    match.send(state.datagram());
    checkResults(match.play(), arena.map, states + 1);
    return 0;
}
