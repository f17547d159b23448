// A predicted player whose room shows it anything. An input is a spawn pose and then what happens,
// one byte each and what it needs: three bits say what, five bits how much. A truthful room plays
// along, so that an input may lie at any moment.

#include "client/Prediction.h"
#include "client/Records.h"
#include "src/FileLoader.h"
#include "tests/fuzz/Bytes.h"
#include "tests/fuzz/Require.h"
#include "tests/support/Datagrams.h"

#include <cmath>
#include <cstddef>
#include <iterator>
#include <optional>
#include <string>
#include <variant>
#include <vector>

using namespace drench;

namespace {

using client::Prediction;
using std::chrono::milliseconds;

/// So that a run ends.
constexpr int mostSnapshots = 128;

/// As Prediction keeps them.
constexpr std::size_t mostHypotheses = 24;

MapManager& arena() {
    static MapManager map = [] {
        MapManager read;
        read.init(fileStringContents(DRENCH_MAPDATA));
        return read;
    }();
    return map;
}

bool isFinite(const vec3& v) {
    return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z);
}

class Watch {
  public:
    explicit Watch(int pose) : truth_('1', "Ann", 0.0f, pose), prediction_(arena()) {
        truth_.setMapMan(&arena());
    }

    void pass(milliseconds time) { now_ += time; }

    void send(const client::InputRecord& record, bool acts) {
        prediction_.sent({record}, now_);
        ++sent_;
        if (!acts)
            return;
        if (const auto* view = std::get_if<ViewMessage>(&record))
            truth_.rotateView(view->dx, view->dy);
        else if (const auto* key = std::get_if<KeyMessage>(&record))
            truth_.setKey(key->key, key->down != 0);
    }

    void tick() {
        if (!truth_.dead)
            truth_.update(0.0f);
    }

    void soak() { truth_.die(0.0f); }

    void spawn(int pose) {
        truth_.dead = false;
        truth_.spawnAt(pose);
    }

    UpdateMessage state() {
        UpdateMessage state;
        state.add(truth_.getPlayerUpdate());
        return state;
    }

    /// Shows the bytes as the room's; only what a session would pass on reaches the prediction.
    void show(const std::string& datagram, double period) {
        const client::RoomRecord record = client::readRecord(datagram);
        const auto* const state = std::get_if<UpdateMessage>(&record);
        if (!state || ++shown_ > mostSnapshots)
            return;
        const Prediction::Statistics before = prediction_.statistics();
        const std::int64_t tick = prediction_.tick();
        prediction_.take({*state, 0, now_}, '1', roundTrip_, period);
        check(before, tick, client::playerWith(*state, '1') != nullptr);
    }

    void takeLost() {
        const std::vector<client::InputRecord> lost = prediction_.takeLost();
        told_ += lost.size();
        require(told_ <= sent_, "no more is lost than was sent");
        require(prediction_.takeLost().empty(), "losses are told once");
    }

    void setRoundTrip(double time) { roundTrip_ = time; }

  private:
    void check(const Prediction::Statistics& before, std::int64_t tick, bool isThere) {
        const Prediction::Statistics& after = prediction_.statistics();
        const std::uint64_t explained = after.exact - before.exact + after.close - before.close;
        require(explained + after.unexplained - before.unexplained == (isThere ? 1u : 0u),
                "each snapshot counts once");
        require(after.breaks - before.breaks <= 1, "a snapshot breaks at most once");
        require(prediction_.tick() >= tick, "ticks count up");
        require(prediction_.hypotheses() <= mostHypotheses, "hypotheses are few");
        require(std::isfinite(prediction_.line().delay()), "records take some time");
        require(prediction_.line().spread() > 0.0, "times are uncertain");
        const std::optional<Prediction::Body> body = prediction_.body(now_);
        require(body.has_value() == (prediction_.explained() != nullptr),
                "there is a body where something is explained");
        if (!body)
            return;
        require(isFinite(body->eye) && isFinite(body->player.position) &&
                    isFinite(body->player.direction),
                "the body is somewhere");
        require(body->tick > prediction_.tick() && body->tick <= prediction_.tick() + 64,
                "the body is ahead, by a second at most");
    }

    Player truth_;
    Prediction prediction_;
    std::optional<double> roundTrip_;
    client::Time now_{std::chrono::hours(1)};
    int shown_ = 0;
    std::uint64_t sent_ = 0;
    std::uint64_t told_ = 0;
};

/// What one byte of an input says.
enum Step { soon, later, view, key, tick, lie, fate, flood };

/// The state with some bytes changed.
std::string lieOf(Bytes& bytes, int changes, const UpdateMessage& state) {
    std::string record = bytesOf(state);
    for (; changes > 0; --changes) {
        const std::size_t at = 1 + bytes.next<std::uint16_t>() % (record.size() - 1);
        record[at] = bytes.next<char>();
    }
    return record;
}

/// The state with one of its numbers replaced.
std::string leapOf(Bytes& bytes, UpdateMessage state) {
    PlayerUpdate& player = state.updates[0];
    float* const numbers[] = {&player.position.x,  &player.position.y,  &player.position.z,
                              &player.direction.x, &player.direction.y, &player.direction.z,
                              &player.rotation.x,  &player.rotation.y,  &player.rotation.z,
                              &player.rotation.w};
    *numbers[bytes.next<unsigned char>() % std::size(numbers)] = bytes.next<float>();
    return bytesOf(state);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Bytes bytes(data, size);
    Watch watch(bytes.next<unsigned char>() % Player::spawnPoseCount);
    while (!bytes.isEmpty()) {
        const int step = bytes.next<unsigned char>();
        const int argument = step >> 3;
        switch (static_cast<Step>(step & 7)) {
        case soon:
            watch.pass(milliseconds(argument));
            break;
        case later:
            watch.pass(milliseconds(125 * argument));
            break;
        case view: {
            ViewMessage record;
            record.dx = argument == 31 ? bytes.next<std::int32_t>() : bytes.next<std::int8_t>();
            record.dy = argument == 31 ? bytes.next<std::int32_t>() : bytes.next<std::int8_t>();
            watch.send(record, argument % 4 != 0);
            break;
        }
        case key: {
            KeyMessage record;
            record.key = static_cast<signed char>(argument / 4 - 1);
            record.down = static_cast<char>(argument % 2);
            watch.send(record, argument % 4 < 3);
            break;
        }
        case tick:
            for (int i = 0; i <= argument % 4; ++i)
                watch.tick();
            watch.pass(milliseconds(16 * (argument % 4 + 1)));
            watch.show(bytesOf(watch.state()), argument < 28 ? 16.4 : 1.0 + argument * 4.0);
            break;
        case lie:
            watch.show(argument < 16 ? lieOf(bytes, argument, watch.state())
                                     : leapOf(bytes, watch.state()),
                       16.4);
            break;
        case fate:
            if (argument < 8)
                watch.spawn(argument);
            else if (argument < 16)
                watch.soak();
            else if (argument < 24)
                watch.takeLost();
            else
                watch.setRoundTrip(20.0 * (argument - 24));
            break;
        case flood:
            for (int i = 0; i < argument * 16; ++i) {
                ViewMessage record;
                record.dx = i % 3;
                watch.send(record, false);
            }
            break;
        }
    }
    watch.takeLost();
    return 0;
}
