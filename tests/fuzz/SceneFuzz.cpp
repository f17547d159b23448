// What a window draws of a room that shows anything: from its snapshots, over where everybody is,
// to the vertices of figures, water and one's own gun. An input is a run of steps, one byte each
// and what it needs: three bits say what, five bits how much or who. The room is a socket on
// 127.0.0.1, where what is sent has arrived.

#include "client/Session.h"
#include "game/Senses.h"
#include "tests/fuzz/Bytes.h"
#include "tests/fuzz/HostileState.h"
#include "tests/fuzz/Require.h"
#include "tests/fuzz/RoomSocket.h"
#include "tests/fuzz/SceneRules.h"
#include "tests/support/Datagrams.h"

#include <cstddef>
#include <optional>
#include <string>

using namespace drench;
using namespace drench::game;

namespace {

using std::chrono::milliseconds;

constexpr char name[] = "Ann";

/// Of one input, so that no input takes long.
constexpr int mostFrames = 100;

/// What lasts from frame to frame, and the frame itself.
class Picture {
  public:
    void take(const client::Event& event, const client::Session& session, client::Time now) {
        senses_.take(event, session, now);
    }

    void serviced(client::Session& session, client::Time now) { senses_.serviced(session, now); }

    void draw(client::Time now, float seconds, bool ahead) {
        Settings settings;
        settings.showWhereShotsMeet = ahead;
        senses_.show(scene_, settings, true, now, seconds);
        if (Ears* const ears = senses_.ears())
            ears->forget();
        requireDrawable(scene_);
    }

    const Scene& scene() const { return scene_; }

  private:
    Senses senses_{courtWithCubes()};
    Scene scene_;
};

/// A window in a room.
class Watch {
  public:
    Watch() {
        std::string problem;
        session_ = client::Session::join(room_.address(), name, now_, problem);
        require(session_.has_value(), "a session begins");
        drain();
        send(acceptanceDatagram('1'));
    }

    client::Session& session() { return *session_; }
    const Scene& scene() const { return picture_.scene(); }

    void send(const std::string& datagram) {
        if (session_->isOpen())
            room_.send(datagram);
    }

    void pass(milliseconds time, bool ahead) {
        now_ += time;
        session_->service(now_);
        drain();
        picture_.serviced(*session_, now_);
        while (const std::optional<client::Event> event = session_->nextEvent())
            picture_.take(*event, *session_, now_);
        picture_.draw(now_, std::chrono::duration<float>(time).count(), ahead);
    }

  private:
    void drain() {
        while (room_.receive()) {
        }
    }

    RoomSocket room_;
    client::Time now_{std::chrono::hours(1)};
    std::optional<client::Session> session_;
    Picture picture_;
};

void act(Bytes& bytes, std::size_t much, client::Session& session) {
    if (much < 2 * keyIndex::count) {
        session.setKey(static_cast<int>(much / 2), much % 2 != 0);
    } else {
        const int dx = bytes.next<std::int16_t>();
        session.turn(dx, bytes.next<std::int16_t>());
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Bytes bytes(data, size);
    Watch watch;
    HostileState state(fourPlayers(name));
    int frames = 0;
    const auto show = [&](milliseconds time, bool ahead) {
        watch.send(state.datagram());
        watch.pass(time, ahead);
        ++frames;
    };
    show(milliseconds(17), false);
    require(watch.scene().gun && watch.scene().figures.size() == maxPlayers - 1,
            "the window plays, and shows the others");
    while (!bytes.isEmpty() && frames < mostFrames) {
        const auto step = bytes.next<std::uint8_t>();
        const auto much = static_cast<std::size_t>(step & 31);
        switch (step >> 5) {
        case 0:
            for (std::size_t i = 0; i <= much; ++i)
                show(milliseconds(16 + i % 2), much % 2 != 0);
            break;
        case 1:
            state.change(much, offsetof(PlayerUpdate, position), bytes.text(sizeof(vec3)));
            break;
        case 2:
            state.change(much, offsetof(PlayerUpdate, direction), bytes.text(sizeof(vec3)));
            break;
        case 3:
            state.change(much, offsetof(PlayerUpdate, shooting), bytes.text(1));
            break;
        case 4:
            state.change(much, bytes.next<std::uint8_t>(), bytes.text(8));
            break;
        case 5:
            act(bytes, much, watch.session());
            break;
        case 6:
            // Nothing comes for a while, or all at once.
            watch.pass(milliseconds(much * much), much % 2 != 0);
            ++frames;
            break;
        default:
            watch.send(much < 8 ? bytes.text(31)
                                : chatDatagram(static_cast<char>('0' + much % 8), bytes.text(30)));
        }
    }
    // What the input has set up is seen at least once.
    show(milliseconds(17), true);
    return 0;
}
