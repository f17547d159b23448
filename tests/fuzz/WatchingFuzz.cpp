// A recorded match that may hold anything, watched at any moment, from anywhere. An input is a run
// of steps, one byte each and what it needs: three bits say what, five bits how much or who. Steps
// write the recording first; those of watching come after it, in their order.

#include "game/Watching.h"
#include "tests/fuzz/Bytes.h"
#include "tests/fuzz/HostileState.h"
#include "tests/fuzz/SceneRules.h"
#include "tests/support/Datagrams.h"

#include <chrono>
#include <cstddef>
#include <glm/geometric.hpp>
#include <string>
#include <vector>

using namespace drench;
using namespace drench::game;

namespace {

using std::chrono::milliseconds;

/// Of one input, so that no input takes long.
constexpr int mostSnapshots = 400;
constexpr std::size_t mostCommands = 60;

struct Command {
    int kind = 0;
    int much = 0;
};

void steer(Watching& watching, int much) {
    Spectator& spectator = watching.spectator();
    const auto share = static_cast<float>(much) / 8.0f;
    switch (much / 2 % 4) {
    case 0:
        spectator.watch(static_cast<char>('1' + much / 8 % maxPlayers));
        break;
    case 1:
        spectator.setView(static_cast<Spectator::View>(much / 8 % 3));
        break;
    case 2:
        spectator.turn(share, 1.0f - share);
        break;
    default:
        spectator.fly({share, -share, 1.0f}, share);
    }
}

void watch(Watching& watching, const std::vector<Command>& commands) {
    Scene scene;
    const auto pass = [&](double seconds) {
        watching.pass(seconds, {}, scene);
        require(watching.playback().moment() >= watching.playback().begin() &&
                    watching.playback().moment() <= watching.playback().end(),
                "the moment is one of the match");
        requireDrawable(scene);
    };
    pass(0.0);
    for (const Command& command : commands) {
        Playback& playback = watching.playback();
        switch (command.kind) {
        case 0:
            pass(0.01 * command.much);
            break;
        case 1:
            playback.seek(playback.end() * command.much / 31.0);
            break;
        case 2:
            command.much % 2 != 0 ? playback.seekNextSoaking() : playback.seekLastSoaking();
            break;
        default:
            steer(watching, command.much);
        }
        pass(0.02);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Bytes bytes(data, size);
    LineDecoder decoder;
    HostileState state(fourPlayers("Ann"));
    client::Time now{};
    std::vector<Command> commands;
    int snapshots = 0;
    const auto show = [&](milliseconds time) {
        now += time;
        decoder.take(now, state.datagram());
        ++snapshots;
    };
    decoder.take(now, acceptanceDatagram('1'));
    show(milliseconds(0));
    while (!bytes.isEmpty() && snapshots < mostSnapshots && commands.size() < mostCommands) {
        const auto step = bytes.next<std::uint8_t>();
        const auto much = static_cast<std::size_t>(step & 31);
        switch (step >> 5) {
        case 0:
            for (std::size_t i = 0; i <= much; ++i)
                show(milliseconds(16 + i % 2));
            break;
        case 1:
            state.change(much, offsetof(PlayerUpdate, position), bytes.text(sizeof(vec3)));
            break;
        case 2: {
            const auto offset = bytes.next<std::uint8_t>();
            state.change(much, offset, bytes.text(8));
            break;
        }
        case 3:
            show(milliseconds(much * much * much));
            break;
        case 4:
            decoder.take(now, much < 8 ? bytes.text(31) : noticeDatagram(bytes.text(30)));
            break;
        case 5:
            decoder.take(now, acceptanceDatagram(static_cast<char>('0' + much % 6)));
            break;
        default:
            commands.push_back({static_cast<int>(step >> 5) % 2 * 2 + static_cast<int>(much % 2),
                                static_cast<int>(much)});
        }
    }
    Watching watching(Playback(decoder.finish()), courtWithCubes());
    watch(watching, commands);
    return 0;
}
