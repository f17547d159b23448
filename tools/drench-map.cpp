#include "arena/ArenaFile.h"
#include "arena/Check.h"
#include "arena/MapText.h"
#include "arena/Plan.h"
#include "arena/Reach.h"
#include "arena/VoxFile.h"
#include "arena/picture/Picture.h"
#include "arena/picture/Png.h"
#include "common/Console.h"
#include "common/Files.h"
#include "tools/CheckReport.h"

#include <CLI/CLI.hpp>
#include <array>
#include <filesystem>
#include <iomanip>
#include <iostream>
#include <map>
#include <string>
#include <vector>

using namespace drench;

// The command line of the arena tools; what can be known of an arena is in arena/.

namespace {

constexpr int playable = 0;
constexpr int notPlayable = 1;
constexpr int notReadable = 2;

/// Writes a result, but never over the file that it was made from.
void writeResult(const std::string& input, const std::string& output, const std::string& bytes) {
    std::error_code ignored;
    if (std::filesystem::equivalent(input, output, ignored))
        throw InputError(output + ": is the input; the result needs a file of its own");
    replaceFile(output, bytes);
}

int checkFile(const std::string& file, bool asJson) {
    arena::MapText text;
    arena::CheckResult result;
    try {
        arena::ArenaFile arena = arena::readArena(file);
        text = std::move(arena.text);
        Console console(false, true);
        ProgressLine progress(console);
        const auto report = [&](const std::string& subject, std::size_t places) {
            progress.show(subject + ": " + std::to_string(places) + " standing places");
        };
        result = arena.isMapText ? arena::check(text, report)
                                 : arena::check(text.map, arena.placeOf, report);
    } catch (const InputError& error) {
        if (!asJson)
            throw;
        result.findings.push_back({.severity = arena::Severity::error,
                                   .subject = arena::Subject::file,
                                   .words = error.what(),
                                   .cell = {},
                                   .place = {}});
    }
    (asJson ? writeJson : writeReport)(std::cout, file, text.map, result);
    if (!std::cout.flush())
        throw InputError("the report cannot be written");
    if (!text.map.hasCells())
        return notReadable;
    return result.playable() ? playable : notPlayable;
}

std::vector<arena::SpawnMark> spawnMarks(const std::vector<arena::Arrival>& arrivals) {
    std::vector<arena::SpawnMark> marks;
    for (const arena::Arrival& arrival : arrivals) {
        const Player& player = arrival.lands ? arrival.landed : arrival.spawned;
        if (arrival.insideWorld)
            marks.push_back({arrival.pose + 1, player.box, player.direction});
    }
    return marks;
}

const std::map<std::string, arena::Corner> corners = {
    {"south-east", arena::Corner::southEast},
    {"south-west", arena::Corner::southWest},
    {"north-west", arena::Corner::northWest},
    {"north-east", arena::Corner::northEast},
};

struct PictureOptions {
    std::string view = "iso";
    arena::Corner from = arena::Corner::southEast;
    std::array<int, 2> size = {1600, 1000};
    std::array<float, 3> at{};
    std::array<float, 3> look{};
};

arena::Image pictureOf(MapManager& map, const PictureOptions& options) {
    const std::vector<arena::Arrival> arrivals = arena::arrivals(map);
    const std::vector<arena::SpawnMark> marks = spawnMarks(arrivals);
    const auto [width, height] = options.size;
    if (options.view == "iso")
        return arena::isometricPicture(map, marks, options.from, width, height);
    if (options.view == "eye") {
        const auto [x, y, z] = options.at;
        const auto [lookX, lookY, lookZ] = options.look;
        return arena::eyePicture(map, marks, {x, y, z}, {lookX, lookY, lookZ}, width, height);
    }
    Console console(false, true);
    ProgressLine progress(console);
    const arena::Reach reach =
        arena::explore(map, arrivals, arena::Pace::ordinary, [&](std::size_t places) {
            progress.show("reach: " + std::to_string(places) + " standing places");
        });
    std::vector<arena::CellIndex> reached;
    for (const arena::StandingPlace& place : reach.places)
        reached.push_back(place.feet);
    return arena::topPicture(map, marks, arena::walkableCells(map), reached, width, height);
}

void writePicture(const std::string& file, const PictureOptions& options,
                  const std::string& output) {
    arena::ArenaFile arena = arena::readWholeArena(file);
    writeResult(file, output, arena::encodePng(pictureOf(arena.text.map, options)));
}

void build(const std::string& file, const std::string& output) {
    const arena::Plan plan = arena::readPlan(readFile(file), file);
    writeResult(file, output, arena::writeMapText(plan.map));
}

void writePlanOf(const std::string& file, const std::string& name, const std::string& output) {
    arena::ArenaFile arena = arena::readWholeArena(file);
    std::string planName = name.empty() ? arena.name : name;
    if (planName.empty())
        planName = std::filesystem::path(file).stem().string();
    writeResult(file, output, arena::writePlan({planName, std::move(arena.text.map)}));
}

void importVox(const std::string& file, const std::string& output) {
    const arena::VoxImport import = arena::readVox(file, readFile(file));
    writeResult(file, output, arena::writeMapText(import.map));
    for (const arena::ReplacedColour& replaced : import.replaced) {
        const auto [red, green, blue] = replaced.colour;
        std::cerr << "colour " << std::hex << std::setfill('0') << std::setw(2) << +red
                  << std::setw(2) << +green << std::setw(2) << +blue << std::dec
                  << " is no material's; cubes that are " << arena::materialName(replaced.cellValue)
                  << " now: " << replaced.voxels << '\n';
    }
}

void exportVox(const std::string& file, const std::string& output) {
    const arena::ArenaFile arena = arena::readWholeArena(file);
    std::string bytes;
    try {
        bytes = arena::writeVox(arena.text.map);
    } catch (const InputError& error) {
        throw InputError(file + ": " + error.what());
    }
    writeResult(file, output, bytes);
}

} // namespace

int main(int argc, char** argv) {
    CLI::App app("Makes, checks and draws arenas.", "drench-map");
    app.set_version_flag("--version", "drench-map " DRENCH_VERSION);
    app.require_subcommand(1);
    app.get_formatter()->column_width(34);

    std::string file;
    std::string output;
    const auto command = [&](const char* name, const char* description, const char* input) {
        CLI::App* added = app.add_subcommand(name, description);
        added->add_option("file", file, input)->required()->type_name("FILE");
        return added;
    };
    const auto commandWithOutput = [&](const char* name, const char* description, const char* input,
                                       const char* result) {
        CLI::App* added = command(name, description, input);
        added->add_option("-o,--output", output, result)->required()->type_name("FILE");
        return added;
    };

    bool asJson = false;
    CLI::App* check = command("check", "Says whether an arena can be played, and why not",
                              "Map text, plan or voxel file");
    check->add_flag("--json", asJson, "Print one JSON object for programs");
    check->footer("Exit status: 0 when it can be played, 1 when it cannot, 2 when no arena can be "
                  "read from the file.");

    PictureOptions options;
    CLI::App* picture = commandWithOutput("picture", "Draws an arena",
                                          "Map text, plan or voxel "
                                          "file",
                                          "PNG file to write");
    picture
        ->add_option("--view", options.view,
                     "iso: from above a corner; top: a height map; eye: "
                     "what a player sees")
        ->check(CLI::IsMember({"iso", "top", "eye"}))
        ->capture_default_str();
    std::string from = "south-east";
    picture->add_option("--from", from, "Corner that iso looks from")
        ->check(CLI::IsMember(corners))
        ->type_name("CORNER")
        ->capture_default_str();
    picture->add_option("--size", options.size, "Width and height in pixels")
        ->delimiter('x')
        ->type_name("WxH")
        ->default_str("1600x1000");
    CLI::Option* at = picture
                          ->add_option("--at", options.at,
                                       "Where the eye is, in world units "
                                       "(64 a cube)")
                          ->delimiter(',')
                          ->type_name("X,Y,Z");
    CLI::Option* look = picture->add_option("--look", options.look, "What the eye looks towards")
                            ->delimiter(',')
                            ->type_name("X,Y,Z");

    CLI::App* buildCommand = commandWithOutput("build",
                                               "Turns a plan into the map text that the "
                                               "server reads",
                                               "Plan", "Map text to write");
    CLI::App* plan = commandWithOutput("plan", "Turns an arena into a plan, for a text editor",
                                       "Map text, voxel file or plan", "Plan to write");
    std::string name;
    plan->add_option("--name", name, "The arena's name")
        ->default_str("the plan's own, or the file's");
    CLI::App* importCommand = commandWithOutput("import",
                                                "Turns a voxel editor's file into a map "
                                                "text",
                                                "Voxel file (.vox)", "Map text to write");
    CLI::App* exportCommand = commandWithOutput("export",
                                                "Turns an arena into a file for voxel "
                                                "editors",
                                                "Map text or plan", "Voxel file (.vox) to write");

    try {
        app.parse(argc, argv);
        if (*picture && options.view == "eye" && (at->empty() || look->empty()))
            throw CLI::ValidationError("--view eye", "needs --at X,Y,Z and --look X,Y,Z");
        options.from = corners.at(from);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? 0 : notReadable;
    }

    try {
        if (*check)
            return checkFile(file, asJson);
        if (*picture)
            writePicture(file, options, output);
        else if (*buildCommand)
            build(file, output);
        else if (*plan)
            writePlanOf(file, name, output);
        else if (*importCommand)
            importVox(file, output);
        else if (*exportCommand)
            exportVox(file, output);
    } catch (const InputError& error) {
        std::cerr << error.what() << '\n';
        return notReadable;
    }
    return 0;
}
