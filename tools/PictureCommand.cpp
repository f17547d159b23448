#include "tools/PictureCommand.h"

#include "arena/ArenaFile.h"
#include "arena/Arrivals.h"
#include "arena/Reach.h"
#include "arena/picture/Picture.h"
#include "arena/picture/Png.h"
#include "common/Console.h"
#include "common/Files.h"

#include <array>
#include <map>
#include <vector>

namespace drench {

namespace {

const std::map<std::string, arena::Corner> corners = {
    {"south-east", arena::Corner::southEast},
    {"south-west", arena::Corner::southWest},
    {"north-west", arena::Corner::northWest},
    {"north-east", arena::Corner::northEast},
};

struct PictureOptions {
    std::string view = "iso";
    std::string from = "south-east";
    std::array<int, 2> size = {1600, 1000};
    std::array<float, 3> at{};
    std::array<float, 3> look{};
};

std::vector<arena::SpawnMark> spawnMarks(const std::vector<arena::Arrival>& arrivals) {
    std::vector<arena::SpawnMark> marks;
    for (const arena::Arrival& arrival : arrivals) {
        const Player& player = arrival.lands ? arrival.landed : arrival.spawned;
        if (arrival.insideWorld)
            marks.push_back(
                {.number = arrival.pose + 1, .body = player.box, .direction = player.direction});
    }
    return marks;
}

arena::Image heightMap(MapManager& map, const std::vector<arena::Arrival>& arrivals, int width,
                       int height) {
    Console console(false, true);
    ProgressLine progress(console);
    const arena::Reach reach =
        arena::explore(map, arrivals, arena::Pace::ordinary, [&](std::size_t places) {
            progress.show("reach: " + std::to_string(places) + " standing places");
        });
    std::vector<arena::CellIndex> reached;
    for (const arena::StandingPlace& place : reach.places)
        reached.push_back(place.feet);
    return arena::topPicture(map, spawnMarks(arrivals), arena::walkableCells(map), reached, width,
                             height);
}

arena::Image pictureOf(MapManager& map, const PictureOptions& options) {
    const std::vector<arena::Arrival> arrivals = arena::arrivals(map);
    const auto [width, height] = options.size;
    if (options.view == "top")
        return heightMap(map, arrivals, width, height);
    const std::vector<arena::SpawnMark> marks = spawnMarks(arrivals);
    if (options.view == "iso")
        return arena::isometricPicture(map, marks, corners.at(options.from), width, height);
    const auto [x, y, z] = options.at;
    const auto [lookX, lookY, lookZ] = options.look;
    return arena::eyePicture(map, marks, {x, y, z}, {lookX, lookY, lookZ}, width, height);
}

} // namespace

void addPicture(CLI::App& app, Run& run) {
    FileCommand command(app, "picture", "Draws an arena");
    command.addFile("Map text, plan or voxel file");
    command.addOutput("PNG file to write");

    const auto chosen = std::make_shared<PictureOptions>();
    command.options
        ->add_option("--view", chosen->view,
                     "iso: from above a corner; top: a height map; eye: what a player sees")
        ->check(CLI::IsMember({"iso", "top", "eye"}))
        ->capture_default_str();
    CLI::Option* from =
        command.options->add_option("--from", chosen->from, "Corner that iso looks from");
    from->check(CLI::IsMember(corners))->type_name("CORNER")->capture_default_str();
    addNumbers(*command.options, "--size", chosen->size, 'x', "WxH", "Width and height in pixels")
        ->default_str("1600x1000");
    const CLI::Option* at = addNumbers(*command.options, "--at", chosen->at, ',', "X,Y,Z",
                                       "Where the eye is, in world units (64 a cube)");
    const CLI::Option* look = addNumbers(*command.options, "--look", chosen->look, ',', "X,Y,Z",
                                         "What the eye looks towards");

    command.options->callback([=, &run] {
        const bool isEye = chosen->view == "eye";
        if (isEye && (at->empty() || look->empty()))
            throw CLI::ValidationError("--view eye", "needs --at X,Y,Z and --look X,Y,Z");
        if (!isEye && !(at->empty() && look->empty()))
            throw CLI::ValidationError("--at and --look", "are for --view eye");
        if (chosen->view != "iso" && !from->empty())
            throw CLI::ValidationError("--from", "is for --view iso");
        run = [=] {
            requirePngName(*command.output);
            arena::ArenaFile loaded = arena::readWholeArena(*command.file);
            writeResult(*command.file, *command.output,
                        arena::encodePng(pictureOf(loaded.text.map, *chosen)));
            return 0;
        };
    });
}

} // namespace drench
