#include "arena/ArenaFile.h"
#include "arena/picture/Png.h"
#include "common/CommandLine.h"
#include "common/Decimals.h"
#include "common/Files.h"
#include "common/GapHistogram.h"
#include "game/Settings.h"
#include "game/Window.h"
#include "game/render/Renderer.h"
#include "game/render/Screenshot.h"

#include <CLI/CLI.hpp>
#include <cmath>
#include <ctime>
#include <iostream>
#include <vector>

using namespace drench;
using namespace drench::game;

// What a frame of the arena costs, drawn as fast as it goes: an eye turns round at places all over
// it. With --from and --to it draws one view instead, for a look at it.

namespace {

using Clock = std::chrono::steady_clock;

/// World units: an eye stands this high above the top of a floor.
constexpr float eyeHeight = 75.25f;

/// Milliseconds of all threads of this process.
double processorTime() {
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) * 1e-6;
}

/// Eyes of players who stand on the highest floor below the open sky at every `step`th column.
std::vector<glm::vec3> places(const MapManager& map, int step) {
    std::vector<glm::vec3> eyes;
    for (int column = step / 2; column < map.columns; column += step) {
        for (int depth = step / 2; depth < map.depth; depth += step) {
            int row = map.rows - 1;
            while (row > 0 && map.cubeIsNull(column, row, depth))
                --row;
            const auto top = static_cast<float>(row + 1) * arena::cubeEdge + eyeHeight;
            if (top < map.height)
                eyes.emplace_back((static_cast<float>(column) + 0.5f) * arena::cubeEdge, top,
                                  (static_cast<float>(depth) + 0.5f) * arena::cubeEdge);
        }
    }
    return eyes;
}

struct Options {
    std::string arena = DRENCH_MAPDATA;
    std::array<int, 2> size = {1280, 720};
    int turns = 24;
    std::vector<float> from;
    std::vector<float> to;
    std::string picture;
    Look look;
};

int draw(const Options& options) {
    arena::ArenaFile arena = arena::readWholeArena(options.arena);
    Window window("What a frame costs", {options.size[0], options.size[1]});
    SDL_GL_SetSwapInterval(0);
    const Clock::time_point start = Clock::now();
    const ArenaMesh mesh = meshOf(arena.text.map);
    const double made = std::chrono::duration<double, std::milli>(Clock::now() - start).count();
    std::cout << mesh.indices.size() / 3 << " triangles, " << mesh.vertices.size()
              << " vertices, made in " << decimals(made, 0) << " ms\n";
    Renderer renderer(mesh);
    Look look = options.look;
    look.inSoftware = window.drawsInSoftware();
    Scene scene;
    scene.camera.fieldOfView = fieldOfViewFrom(90.0f);
    const PixelSize size = window.size();
    if (!options.picture.empty()) {
        scene.camera.eye = {options.from[0], options.from[1], options.from[2]};
        scene.camera.direction =
            glm::vec3(options.to[0], options.to[1], options.to[2]) - scene.camera.eye;
        renderer.draw(scene, size.width, size.height, look);
        replaceFile(options.picture, arena::encodePng(screenshot(size.width, size.height)));
        return 0;
    }

    GapHistogram times;
    double processor = 0.0;
    for (const glm::vec3& eye : places(arena.text.map, 4)) {
        scene.camera.eye = eye;
        for (int turn = 0; turn < options.turns; ++turn) {
            const float angle =
                6.2831853f * static_cast<float>(turn) / static_cast<float>(options.turns);
            scene.camera.direction = {std::sin(angle), -0.1f, std::cos(angle)};
            const double before = processorTime();
            const Clock::time_point begin = Clock::now();
            renderer.draw(scene, size.width, size.height, look);
            window.show();
            glFinish();
            times.add(Clock::now() - begin);
            processor += processorTime() - before;
            window.takeEvents();
        }
    }
    std::cout << times.count() << " frames of " << size.width << " x " << size.height << ": p50 "
              << decimals(times.percentile(typical), 1) << " ms, p99 "
              << decimals(times.percentile(nearlyAll), 1) << " ms, longest "
              << decimals(times.longest(), 1) << " ms; processor "
              << decimals(processor / static_cast<double>(times.count()), 2) << " ms a frame\n";
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    CLI::App app("What a frame of the arena costs.", "frames");
    Options options;
    app.add_option("--arena", options.arena, "The arena")->type_name("FILE");
    app.add_option("--size", options.size, "Width and height in pixels")
        ->type_name("WxH")
        ->delimiter('x');
    app.add_flag("--full", options.look.full, "The full picture");
    app.add_option("--render-scale", options.look.scale, "Of width and height, what is drawn")
        ->check(numberBetween(renderScaleLimits.least, renderScaleLimits.most));
    app.add_option("--turns", options.turns, "Frames at each place")->check(numberBetween(0, 1000));
    CLI::Option* from = app.add_option("--from", options.from, "The eye of one view, world units")
                            ->type_name("X Y Z")
                            ->expected(3);
    CLI::Option* to = app.add_option("--to", options.to, "The point that it looks at")
                          ->type_name("X Y Z")
                          ->expected(3);
    app.add_option("--picture", options.picture, "Draw that view there instead")
        ->type_name("PNG")
        ->needs(from, to);
    if (const std::optional<int> status = parseArguments(app, argc, argv, [] {}))
        return *status;
    return runTool([&] { return draw(options); });
}
