#include "tests/window/Desk.h"

#include "src/Player.h"
#include "tests/support/Arenas.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <condition_variable>
#include <mutex>

using namespace drench;

namespace {

constexpr char env[] = "/usr/bin/env";

/// Counts of the mouse are counts of the view, so that a test can say by how much it turns.
constexpr char plainSettings[] = "[mouse]\nsensitivity = 1.0\n";

std::string withSettings(const TemporaryFolder& folder, const std::string& more) {
    std::filesystem::create_directories(folder.path + "/drench");
    folder.write("drench/settings.toml", plainSettings + more);
    return folder.path;
}

bool areSame(vec3 a, vec3 b) {
    return a.x == b.x && a.y == b.y && a.z == b.z;
}

/// Radians upward from the horizon.
double pitch(vec3 direction) {
    return std::atan2(direction.y, std::hypot(direction.x, direction.z));
}

int countsOf(double radians) {
    return static_cast<int>(std::lround(radians * Player::countsPerRadian));
}

} // namespace

std::string windowCommand(const std::string& display, const std::string& folder,
                          const std::string& arguments, const std::string& environment) {
    const std::string where = display.empty() ? "-u DISPLAY" : "DISPLAY=" + display;
    return "-u WAYLAND_DISPLAY " + where +
           " LIBGL_ALWAYS_SOFTWARE=1 SDL_AUDIODRIVER=dummy XDG_CONFIG_HOME=" + folder + " " +
           environment + " " + DRENCH_WINDOW_PROGRAM + " " + arguments;
}

double turnRight(vec3 from, vec3 to) {
    const double before = std::atan2(from.x, from.z);
    return std::remainder(before - std::atan2(to.x, to.z), 2.0 * 3.14159265358979);
}

Desk::Desk(const Plan& plan)
    : server_(ServerProcess::listening(emptyCourt())),
      window(env, windowCommand(display.name, withSettings(folder_, plan.settings),
                                "localhost:" + std::to_string(server_->port()) + " --name " +
                                    player + " --arena " + server_->folder().string() +
                                    "/Resources/mapdata --size " + plan.size + " " + plan.arguments,
                                plan.environment)) {
    port_ = server_->port();
    beginWatching();
}

void Desk::beginWatching() {
    eve_.emplace(port_);
    eve_->join(watcher);
    signsOfLife_ = std::jthread([this](const std::stop_token& ends) {
        std::mutex mutex;
        std::unique_lock lock(mutex);
        std::condition_variable_any waiting;
        do {
            eve_->send(keepAliveDatagram(eve_->id()));
        } while (!waiting.wait_for(lock, ends, std::chrono::seconds(1),
                                   [&] { return ends.stop_requested(); }));
    });
}

void Desk::settle() {
    ASSERT_TRUE(sees([](const PlayerUpdate&) { return true; })) << window.err();
    ASSERT_TRUE(comesToRest());
    ASSERT_TRUE(turnsAtLast()) << "without the focus";
    ASSERT_TRUE(comesToRest());
}

/// The watcher takes what has come, before more comes than its socket holds.
void Desk::catchUp() {
    while (eve_->waitFor([](const std::string&) { return true; }, 1)) {
    }
}

void Desk::tap(const std::string& key) {
    catchUp();
    display.xdotool("key " + key);
}

void Desk::type(const std::string& text) {
    catchUp();
    display.xdotool("type --delay 30 " + text);
}

void Desk::moveMouse(int right, int down) {
    display.xdotool("mousemove_relative -- " + std::to_string(right) + " " + std::to_string(down));
}

bool Desk::turnsAtLast() {
    const vec3 before = seen()->direction;
    return waitUntil([&] {
        moveMouse(90, 0);
        return sees(
            [&](const PlayerUpdate& ann) { return turnRight(before, ann.direction) != 0.0; }, 300);
    });
}

void Desk::click(Pixel place) {
    display.xdotool("mousemove " + std::to_string(place.x) + " " + std::to_string(place.y) +
                    " click 1");
}

bool Desk::aimAt(vec3 place) {
    // The screen is no wider than this to either side of its middle.
    constexpr int most = 250;
    for (;;) {
        const vec3 before = seen()->direction;
        const vec3 wanted = place - seen()->position;
        const int right = std::clamp(countsOf(turnRight(before, wanted)), -most, most);
        const int down = std::clamp(countsOf(pitch(before) - pitch(wanted)), -most, most);
        if (right == 0 && down == 0)
            return true;
        moveMouse(right, down);
        const bool turns = sees([&](const PlayerUpdate& ann) {
            return countsOf(turnRight(before, ann.direction)) == right &&
                   countsOf(pitch(before) - pitch(ann.direction)) == down;
        });
        if (!turns) {
            ADD_FAILURE() << "moved by " << right << ", " << down << "; turned by "
                          << countsOf(turnRight(before, seen()->direction)) << ", "
                          << countsOf(pitch(before) - pitch(seen()->direction));
            return false;
        }
    }
}

const PlayerUpdate* Desk::seen() const {
    for (const PlayerUpdate& each : eve_->state.updates) {
        if (each.id != 0 && std::string(each.name) == player)
            return &each;
    }
    return nullptr;
}

bool Desk::sees(const std::function<bool(const PlayerUpdate&)>& wanted, int milliseconds) {
    return eve_->waitForState(
        [&](const UpdateMessage&) {
            const PlayerUpdate* ann = seen();
            return ann && wanted(*ann);
        },
        milliseconds);
}

bool Desk::seesLeave(int milliseconds) {
    return eve_->waitForState([&](const UpdateMessage&) { return !seen(); }, milliseconds);
}

bool Desk::comesToRest() {
    constexpr int still = 20;
    int count = 0;
    PlayerUpdate last;
    return sees([&](const PlayerUpdate& ann) {
        const bool isSame =
            areSame(ann.position, last.position) && areSame(ann.direction, last.direction);
        last = ann;
        count = isSame ? count + 1 : 0;
        return count >= still;
    });
}

bool Desk::hears(const std::string& words) {
    const PlayerUpdate* ann = seen();
    if (!ann)
        return false;
    const std::string line = chatDatagram(ann->id, words);
    return std::ranges::count(eve_->heard, line) > 0 || eve_->waitForDatagram(line);
}

void Desk::keepWatcherAway(float distance) {
    const auto isAway = [&](const PlayerUpdate& ann) {
        const vec3 way = seenWatcher().position - ann.position;
        return std::hypot(way.x, way.z) > distance;
    };
    if (sees(isAway, 100))
        return;
    eve_->send(keyDatagram(eve_->id(), keyIndex::forward, true));
    EXPECT_TRUE(sees(isAway));
    eve_->send(keyDatagram(eve_->id(), keyIndex::forward, false));
}

void Desk::endRoom() {
    signsOfLife_ = {};
    eve_.reset();
    server_.reset();
}

void Desk::openRoomAgain() {
    if (std::optional<ServerProcess> server = ServerProcess::listeningAt(port_, emptyCourt()))
        server_.emplace(std::move(*server));
    ASSERT_TRUE(server_) << "at the same port";
    beginWatching();
}

std::string Desk::windowNumber() const {
    const std::string numbers = display.xdotool("search --sync --onlyvisible --name Drench");
    return numbers.substr(0, numbers.find('\n'));
}
