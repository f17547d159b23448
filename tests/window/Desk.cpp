#include "tests/window/Desk.h"

#include "tests/support/Arenas.h"

#include <chrono>
#include <fcntl.h>
#include <thread>

using namespace drench;

namespace {

constexpr char env[] = "/usr/bin/env";

/// Counts of the mouse are counts of the view, so that a test can say by how much it turns.
constexpr char plainSettings[] = "[mouse]\nsensitivity = 1.0\n";

std::string withSettings(const TemporaryFolder& folder) {
    std::filesystem::create_directories(folder.path + "/drench");
    folder.write("drench/settings.toml", plainSettings);
    return folder.path;
}

} // namespace

Display::Display() {
    const std::string said = folder_.write("number", "");
    const Descriptor output(open(said.c_str(), O_WRONLY | O_CLOEXEC));
    const Descriptor errors(open(folder_.write("errors", "").c_str(), O_WRONLY | O_CLOEXEC));
    server_.emplace(std::vector<std::string>{env, "Xvfb", "-displayfd", "1", "-screen", "0",
                                             "1280x720x24", "-nolisten", "tcp"},
                    ChildProcess::Outputs{output.number, errors.number});
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(patience);
    std::string number;
    while (number.find('\n') == std::string::npos) {
        if (server_->status() || std::chrono::steady_clock::now() > end)
            throw std::runtime_error("no X server: " + readFile(folder_.path + "/errors"));
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        number = readFile(said);
    }
    name = ":" + number.substr(0, number.find('\n'));
}

std::string Display::xdotool(const std::string& arguments) const {
    ToolProcess tool(env, "DISPLAY=" + name + " xdotool " + arguments);
    EXPECT_EQ(tool.status(), 0) << arguments << ": " << tool.err();
    return tool.out();
}

std::string windowCommand(const std::string& display, const std::string& folder,
                          const std::string& arguments, const std::string& environment) {
    const std::string where = display.empty() ? "-u DISPLAY" : "DISPLAY=" + display;
    return "-u WAYLAND_DISPLAY " + where +
           " LIBGL_ALWAYS_SOFTWARE=1 SDL_AUDIODRIVER=dummy XDG_CONFIG_HOME=" + folder + " " +
           environment + " " + DRENCH_WINDOW_PROGRAM + " " + arguments;
}

Desk::Desk(const std::string& arguments, const std::string& environment)
    : server_(ServerProcess::listening(emptyCourt())), port_(server_->port()), watcher_(port_),
      window(env, windowCommand(display.name, withSettings(folder_),
                                "localhost:" + std::to_string(port_) + " --name " + player +
                                    " --arena " + server_->folder().string() +
                                    "/Resources/mapdata " + arguments,
                                environment)) {
    watcher_.join("Eve");
}

void Desk::settle() {
    ASSERT_TRUE(sees([](const PlayerUpdate&) { return true; })) << window.err();
    ASSERT_TRUE(comesToRest());
}

void Desk::moveMouse(int right, int down) {
    display.xdotool("mousemove_relative -- " + std::to_string(right) + " " + std::to_string(down));
}

const PlayerUpdate* Desk::seen() const {
    for (const PlayerUpdate& each : watcher_.state.updates) {
        if (each.id != 0 && std::string(each.name) == player)
            return &each;
    }
    return nullptr;
}

bool Desk::sees(const std::function<bool(const PlayerUpdate&)>& wanted, int milliseconds) {
    return watcher_.waitForState(
        [&](const UpdateMessage&) {
            const PlayerUpdate* ann = seen();
            return ann && wanted(*ann);
        },
        milliseconds);
}

bool Desk::seesLeave(int milliseconds) {
    return watcher_.waitForState([&](const UpdateMessage&) { return !seen(); }, milliseconds);
}

bool Desk::hears(const std::string& words) {
    const PlayerUpdate* ann = seen();
    return ann && watcher_.waitForDatagram(chatDatagram(ann->id, words));
}

void Desk::openRoomAgain() {
    const std::string port = std::to_string(port_);
    server_.emplace(std::vector<std::string>{port}, emptyCourt());
    ASSERT_TRUE(server_->waitForLine("Server is listening on port " + port));
    watcher_.join("Eve");
}

std::string Desk::settingsFile() const {
    return readFile(folder_.path + "/drench/settings.toml");
}

bool Desk::comesToRest() {
    constexpr int still = 20;
    int count = 0;
    vec3 last;
    return sees([&](const PlayerUpdate& ann) {
        const vec3 moved = ann.position - last;
        last = ann.position;
        count = moved.x == 0.0f && moved.y == 0.0f && moved.z == 0.0f ? count + 1 : 0;
        return count >= still;
    });
}

std::string Desk::windowNumber() const {
    const std::string numbers = display.xdotool("search --sync --onlyvisible --name Drench");
    return numbers.substr(0, numbers.find('\n'));
}
