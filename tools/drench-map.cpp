#include "arena/ArenaFile.h"
#include "arena/Check.h"
#include "arena/NewPlan.h"
#include "arena/Plan.h"
#include "common/Console.h"
#include "common/ExitStatus.h"
#include "common/Files.h"
#include "tools/CheckReport.h"
#include "tools/FileCommand.h"
#include "tools/PictureCommand.h"

#include <filesystem>
#include <iomanip>
#include <iostream>

using namespace drench;

// The command line of the arena tools; arena/ examines the arenas. Each subcommand has a function
// that adds its options, and that puts its action into `run` if this subcommand was chosen.

namespace {

constexpr int playable = 0;
constexpr int notPlayable = 1;

int checkFile(const std::string& file, bool asJson) {
    arena::MapText text;
    arena::CheckResult result;
    try {
        arena::ArenaFile loaded = arena::readArena(file);
        text = std::move(loaded.text);
        Console console(false, true);
        ProgressLine progress(console);
        const auto report = [&](const std::string& subject, std::size_t places) {
            progress.show(subject + ": " + std::to_string(places) + " standing places");
        };
        result = loaded.isMapText ? arena::check(text, report)
                                  : arena::check(text.map, loaded.placeOf, report);
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
        return notUsable;
    return result.playable() ? playable : notPlayable;
}

void addCheck(CLI::App& app, Run& run) {
    FileCommand command(app, "check", "Says whether an arena can be played, and why not");
    command.addFile("Map text, plan or voxel file");
    const auto asJson = std::make_shared<bool>(false);
    command.options->add_flag("--json", *asJson, "Print one JSON object for programs");
    command.options->footer("Exit status: 0 when it can be played, 1 when it cannot, 2 when no "
                            "arena can be read from the file.");
    command.options->callback(
        [=, &run] { run = [=] { return checkFile(*command.file, *asJson); }; });
}

void addNew(CLI::App& app, Run& run) {
    FileCommand command(app, "new", "Writes a plan to begin with: a court with marked spawns");
    command.addOutput("Plan to write");
    const auto size = std::make_shared<std::array<int, 3>>(std::array{32, 16, 32});
    addNumbers(*command.options, "--size", *size, 'x', "CxRxD", "Columns, rows and depth in cubes")
        ->default_str("32x16x32");
    const auto name = std::make_shared<std::string>();
    command.options->add_option("--name", *name, "The arena's name")->default_str("the file's");
    command.options->callback([=, &run] {
        run = [=] {
            if (name->empty())
                *name = std::filesystem::path(*command.output).stem().string();
            const auto [columns, rows, depth] = *size;
            const std::string plan = arena::newPlan(*name, columns, rows, depth);
            std::error_code ignored;
            if (std::filesystem::is_regular_file(*command.output, ignored) &&
                std::filesystem::file_size(*command.output, ignored) > 0)
                throw InputError(*command.output + ": exists already, and may be somebody's work");
            replaceFile(*command.output, plan);
            return 0;
        };
    });
}

void addBuild(CLI::App& app, Run& run) {
    FileCommand command(app, "build", "Turns a plan into the map text that the server reads");
    command.addFile("Plan");
    command.addOutput("Map text to write");
    command.options->callback([=, &run] {
        run = [=] {
            const arena::Plan plan = arena::readPlan(readFile(*command.file), *command.file);
            writeResult(*command.file, *command.output, arena::writeMapText(plan.map));
            return 0;
        };
    });
}

void addPlan(CLI::App& app, Run& run) {
    FileCommand command(app, "plan", "Turns an arena into a plan, for a text editor");
    command.addFile("Map text, voxel file or plan");
    command.addOutput("Plan to write");
    const auto name = std::make_shared<std::string>();
    command.options->add_option("--name", *name, "The arena's name")
        ->default_str("the plan's own, or the file's");
    command.options->callback([=, &run] {
        run = [=] {
            arena::ArenaFile loaded = arena::readWholeArena(*command.file);
            std::string planName = name->empty() ? loaded.name : *name;
            if (planName.empty())
                planName = std::filesystem::path(*command.file).stem().string();
            writeResult(*command.file, *command.output,
                        arena::writePlan({planName, std::move(loaded.text.map)}));
            return 0;
        };
    });
}

void writeReplaced(const arena::ReplacedColour& replaced) {
    const auto [red, green, blue] = replaced.colour;
    std::cerr << "colour " << std::hex << std::setfill('0') << std::setw(2) << +red << std::setw(2)
              << +green << std::setw(2) << +blue << std::dec << " is no material's; cubes that are "
              << arena::materialName(replaced.cellValue) << " now: " << replaced.voxels << '\n';
}

void addImport(CLI::App& app, Run& run) {
    FileCommand command(app, "import", "Turns a voxel editor's file into a map text");
    command.addFile("Voxel file (.vox)");
    command.addOutput("Map text to write");
    command.options->callback([=, &run] {
        run = [=] {
            const arena::VoxImport import = arena::readVox(*command.file, readFile(*command.file));
            writeResult(*command.file, *command.output, arena::writeMapText(import.map));
            for (const arena::ReplacedColour& replaced : import.replaced)
                writeReplaced(replaced);
            return 0;
        };
    });
}

void addExport(CLI::App& app, Run& run) {
    FileCommand command(app, "export", "Turns an arena into a file for voxel editors");
    command.addFile("Map text or plan");
    command.addOutput("Voxel file (.vox) to write");
    command.options->callback([=, &run] {
        run = [=] {
            const arena::ArenaFile loaded = arena::readWholeArena(*command.file);
            std::string bytes;
            try {
                bytes = arena::writeVox(loaded.text.map);
            } catch (const InputError& error) {
                throw InputError(*command.file + ": " + error.what());
            }
            writeResult(*command.file, *command.output, bytes);
            return 0;
        };
    });
}

} // namespace

int main(int argc, char** argv) {
    CLI::App app("Makes, checks and draws arenas.", "drench-map");
    app.set_version_flag("--version", "drench-map " DRENCH_VERSION);
    app.require_subcommand(1);
    app.get_formatter()->column_width(34);
    Run run;
    for (const auto add : {addCheck, addPicture, addNew, addBuild, addPlan, addImport, addExport})
        add(app, run);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? 0 : notUsable;
    }

    try {
        return run();
    } catch (const InputError& error) {
        std::cerr << error.what() << '\n';
        return notUsable;
    }
}
