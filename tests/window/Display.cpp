#include "tests/window/Display.h"

#include "common/Descriptor.h"
#include "tests/process/ServerProcess.h"
#include "tests/process/ToolProcess.h"

#include <chrono>
#include <fcntl.h>
#include <thread>

using namespace drench;

Display::Display() {
    const std::string said = folder_.write("number", "");
    const std::string size = std::to_string(width) + "x" + std::to_string(height) + "x24";
    const Descriptor output(open(said.c_str(), O_WRONLY | O_CLOEXEC));
    const Descriptor errors(open(folder_.write("errors", "").c_str(), O_WRONLY | O_CLOEXEC));
    server_.emplace(std::vector<std::string>{"/usr/bin/env", "Xvfb", "-displayfd", "1", "-screen",
                                             "0", size, "-nolisten", "tcp", "-fbdir", folder_.path},
                    ChildProcess::Streams{output.number, errors.number});
    const bool isOpen = waitUntil([&] {
        name = readFile(said);
        return server_->status() || name.find('\n') != std::string::npos;
    });
    if (!isOpen || server_->status())
        throw std::runtime_error("no X server: " + readFile(folder_.path + "/errors"));
    name = ":" + name.substr(0, name.find('\n'));
}

std::string Display::xdotool(const std::string& arguments) const {
    ToolProcess tool("/usr/bin/env", "DISPLAY=" + name + " xdotool " + arguments);
    EXPECT_EQ(tool.status(), 0) << arguments << ": " << tool.err();
    return tool.out();
}

arena::Colour Display::colourAt(Pixel place) const {
    // The server keeps its screen in a file that ends with the pixels, row by row.
    constexpr long pixelSize = 4;
    std::ifstream screen(folder_.path + "/Xvfb_screen0", std::ios::binary);
    const long fromEnd = (static_cast<long>(height - place.y) * width - place.x) * pixelSize;
    screen.seekg(-fromEnd, std::ios::end);
    char blueGreenRed[3] = {};
    EXPECT_TRUE(screen.read(blueGreenRed, sizeof blueGreenRed)) << "no picture of the screen";
    return {static_cast<std::uint8_t>(blueGreenRed[2]), static_cast<std::uint8_t>(blueGreenRed[1]),
            static_cast<std::uint8_t>(blueGreenRed[0])};
}

bool waitUntil(const std::function<bool()>& holds) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(patience);
    while (!holds()) {
        if (std::chrono::steady_clock::now() > end)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return true;
}
