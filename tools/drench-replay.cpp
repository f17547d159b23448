#include "arena/ArenaFile.h"
#include "arena/MapText.h"
#include "arena/picture/Png.h"
#include "client/recording/RecordingReader.h"
#include "common/CommandLine.h"
#include "common/Counting.h"
#include "common/ExitStatus.h"
#include "common/Files.h"
#include "replay/Capture.h"
#include "replay/Editing.h"
#include "replay/Footage.h"
#include "replay/Heat.h"
#include "replay/Soakings.h"
#include "replay/Tracks.h"
#include "replay/Verification.h"
#include "tools/Arguments.h"
#include "tools/FileCommand.h"
#include "tools/ReplayReport.h"
#include "tools/Saving.h"

#include <CLI/CLI.hpp>
#include <array>
#include <cmath>
#include <iostream>
#include <map>
#include <memory>
#include <string>
#include <vector>

using namespace drench;

// The command line of recordings; replay/ reads what they tell. Each subcommand has a function that
// adds its options, and that puts its action into `run` if this subcommand was chosen.

namespace {

constexpr int possible = 0;
constexpr int notPossible = 1;

constexpr char programName[] = "drench-replay " DRENCH_VERSION;

/// Tells on standard error what is wrong with a recording that can be read all the same.
void tellProblems(const client::RecordingReader& reader) {
    for (const std::string& problem : reader.problems())
        std::cerr << problem << '\n';
}

/// Reads a recording by `read`, and tells its problems.
template<class Read>
auto withRecording(const std::string& file, const Read& read) {
    client::RecordingReader reader = client::RecordingReader::open(file);
    auto result = read(reader);
    tellProblems(reader);
    return result;
}

/// The arena that a recording holds. Throws InputError if it holds none, or not all of it.
arena::MapText ownArenaOf(const client::RecordingReader& reader) {
    if (reader.header().arena.empty())
        throw InputError(reader.name() + ": does not hold its arena; name its file with --arena");
    arena::MapText text = arena::readMapText(reader.header().arena);
    arena::requireWhole(text, reader.name() + ": its arena");
    return text;
}

/// The map of a recording, or of the file that --arena names. What is whole has cells.
MapManager mapOf(const client::RecordingReader& reader, const std::string& arenaFile) {
    return (arenaFile.empty() ? ownArenaOf(reader) : arena::readWholeArena(arenaFile).text).map;
}

template<class Result>
void print(const Result& result, bool asJson) {
    if (asJson)
        writeJson(std::cout, result);
    else
        writeTable(std::cout, result);
    if (!std::cout.flush())
        throw InputError("the report cannot be written");
}

std::shared_ptr<bool> addJson(CLI::App& options) {
    auto asJson = std::make_shared<bool>(false);
    options.add_flag("--json", *asJson, "Print one JSON object for programs");
    return asJson;
}

std::shared_ptr<std::string> addArena(CLI::App& options, const char* description) {
    auto arena = std::make_shared<std::string>();
    options.add_option("--arena", *arena, description)->type_name("FILE");
    return arena;
}

constexpr char recordingFile[] = "Recording";
constexpr char otherArena[] = "What the room played, if the recording does not say";

void addInfo(CLI::App& app, Run& run) {
    FileCommand command(app, "info", "Says what a recording is of");
    command.addFile(recordingFile);
    const auto asJson = addJson(*command.options);
    command.options->callback([=, &run] {
        run = [=] {
            print(withRecording(
                      *command.file,
                      [](client::RecordingReader& reader) { return RecordingInfo(reader); }),
                  *asJson);
            return 0;
        };
    });
}

void addSoakings(CLI::App& app, Run& run) {
    FileCommand command(app, "soakings", "Lists who soaked whom, when, where and from how far");
    command.addFile(recordingFile);
    const auto asJson = addJson(*command.options);
    command.options->callback([=, &run] {
        run = [=] {
            const std::vector<replay::Soaking> soakings =
                withRecording(*command.file, [](client::RecordingReader& reader) {
                    return replay::soakingsOf(reader);
                });
            print(std::span<const replay::Soaking>(soakings), *asJson);
            return 0;
        };
    });
}

/// The tracks of all players, by their names.
std::vector<replay::Track> tracksIn(const std::vector<replay::Frame>& frames) {
    // More would not fit below a picture.
    constexpr std::size_t mostTracks = 40;
    std::vector<replay::Track> tracks;
    std::map<std::string, std::size_t> numbers;
    std::vector<bool> isThere;
    for (const replay::Frame& frame : frames) {
        isThere.assign(tracks.size(), false);
        for (const PlayerUpdate& player : frame.state.updates) {
            if (player.id == 0)
                continue;
            const auto [number, isNew] = numbers.try_emplace(player.name, tracks.size());
            if (isNew && tracks.size() == mostTracks) {
                numbers.erase(number);
                continue;
            }
            if (isNew) {
                tracks.emplace_back(player.name);
                isThere.push_back(false);
            }
            tracks[number->second].see(player);
            isThere[number->second] = true;
        }
        for (std::size_t i = 0; i < tracks.size(); ++i) {
            if (!isThere[i])
                tracks[i].breakOff();
        }
    }
    return tracks;
}

arena::Image tracksOf(const MapManager& map, const std::vector<replay::Frame>& frames, int width,
                      int height) {
    return replay::tracksPicture(map, tracksIn(frames), width, height);
}

void addPicture(CLI::App& app, Run& run, const char* name, const char* description,
                arena::Image (*draw)(const MapManager&, const std::vector<replay::Frame>&, int,
                                     int)) {
    FileCommand command(app, name, description);
    command.addFile(recordingFile);
    command.addOutput("PNG file to write");
    const auto arena = addArena(*command.options, otherArena);
    const auto size = std::make_shared<std::array<int, 2>>(std::array{1280, 1000});
    addNumbers(*command.options, "--size", *size, 'x', "WxH", "Width and height in pixels")
        ->default_str("1280x1000");
    command.options->callback([=, &run] {
        // Smaller pictures show nothing.
        constexpr int smallestSide = 100;
        const auto [width, height] = *size;
        if (std::min(width, height) < smallestSide ||
            std::max(width, height) > arena::Image::largestSide)
            throw CLI::ValidationError("--size", "sides are from " + std::to_string(smallestSide) +
                                                     " to " +
                                                     std::to_string(arena::Image::largestSide));
        run = [=] {
            requirePngName(*command.output);
            const auto drawIt = [&](client::RecordingReader& reader) {
                const MapManager map = mapOf(reader, *arena);
                return draw(map, replay::statesOf(reader), (*size)[0], (*size)[1]);
            };
            writeResult(*command.file, *command.output,
                        arena::encodePng(withRecording(*command.file, drawIt)));
            return 0;
        };
    });
}

void addHeat(CLI::App& app, Run& run) {
    addPicture(app, run, "heat", "Draws where players were for how long", replay::heatPicture);
}

void addTracks(CLI::App& app, Run& run) {
    addPicture(app, run, "tracks", "Draws where everybody went and was soaked", tracksOf);
}

/// Seconds, or "minutes:seconds", or "hours:minutes:seconds", with decimals.
client::RecordedTime timeIn(const std::string& text) {
    double seconds = 0.0;
    std::size_t begin = 0;
    while (true) {
        const std::size_t end = text.find(':', begin);
        const auto part =
            numberIn<double>(text.substr(begin, end == std::string::npos ? end : end - begin));
        if (!part || !(*part >= 0.0))
            throw InputError(text + ": is no time such as 75.5 or 1:15.5");
        seconds = seconds * 60.0 + *part;
        if (end == std::string::npos)
            break;
        begin = end + 1;
    }
    const double most = std::chrono::duration<double>(client::recordingLimits::duration).count();
    return std::chrono::duration_cast<client::RecordedTime>(
        std::chrono::duration<double>(std::min(seconds, most)));
}

void addCut(CLI::App& app, Run& run) {
    FileCommand command(app, "cut", "Takes out the part between two moments");
    command.addFile(recordingFile);
    const auto from = std::make_shared<std::string>();
    const auto to = std::make_shared<std::string>();
    command.options->add_option("from", *from, "Where it begins: 75.5 or 1:15.5")
        ->required()
        ->type_name("FROM");
    command.options->add_option("to", *to, "Where it ends")->required()->type_name("TO");
    command.addOutput("Recording to write");
    command.options->callback([=, &run] {
        run = [=] {
            writeResult(*command.file, *command.output,
                        withRecording(*command.file, [&](client::RecordingReader& reader) {
                            return replay::cut(reader, timeIn(*from), timeIn(*to));
                        }));
            return 0;
        };
    });
}

void addJoin(CLI::App& app, Run& run) {
    FileCommand command(app, "join",
                        "Makes one recording of several, at the times at which they were made");
    const auto files = std::make_shared<std::vector<std::string>>();
    command.options->add_option("files", *files, "Recordings")->required()->type_name("FILE ...");
    command.addOutput("Recording to write");
    command.options->callback([=, &run] {
        run = [=] {
            std::vector<client::RecordingReader> readers;
            for (const std::string& file : *files)
                readers.push_back(client::RecordingReader::open(file));
            const std::string joint = replay::join(readers);
            for (const std::string& file : *files)
                requireOther(file, *command.output);
            replaceFile(*command.output, joint);
            for (const client::RecordingReader& reader : readers)
                tellProblems(reader);
            return 0;
        };
    });
}

void addImport(CLI::App& app, Run& run) {
    FileCommand command(app, "import", "Makes a recording of what tcpdump caught");
    command.addFile("Capture, pcap or pcapng");
    command.addOutput("Recording to write");
    const auto port = std::make_shared<int>(5000);
    command.options->add_option("--port", *port, "The room's port")
        ->type_name("PORT")
        ->check(numberBetween(1, largestPort))
        ->capture_default_str();
    const auto arena =
        addArena(*command.options, "What the room played: a map text, plan or voxel file");
    command.options->callback([=, &run] {
        run = [=] {
            const replay::Imported imported = replay::importCapture(
                *command.file, static_cast<std::uint16_t>(*port), arenaTextOf(*arena), programName);
            writeResult(*command.file, *command.output, imported.recording);
            std::cout << counted(imported.datagrams, "datagram") << " of "
                      << counted(imported.lines, "client")
                      << "; left out: " << counted(imported.others, "other packet") << ", "
                      << counted(imported.fragments, "fragment") << ", " << imported.broken
                      << " cut off or malformed\n";
            return 0;
        };
    });
}

void addVerify(CLI::App& app, Run& run) {
    FileCommand command(app, "verify", "Replays all movement by the game's own rules");
    command.addFile(recordingFile);
    const auto arena = addArena(*command.options, otherArena);
    const auto asJson = addJson(*command.options);
    command.options->footer("Exit status: 0 when every state can follow from the one before it, 1 "
                            "when one cannot, 2 when the file cannot be used.");
    command.options->callback([=, &run] {
        run = [=] {
            const VerifyReport report =
                withRecording(*command.file, [&](client::RecordingReader& reader) {
                    MapManager map = mapOf(reader, *arena);
                    VerifyReport both;
                    both.verification = replay::verify(replay::statesOf(reader), map);
                    reader.seek(client::RecordedTime(0));
                    both.inputs = replay::predictKnownInputs(reader, map);
                    return both;
                });
            print(report, *asJson);
            return report.verification.impossibleSteps == 0 ? possible : notPossible;
        };
    });
}

} // namespace

int main(int argc, char** argv) {
    CLI::App app("Looks into recordings of matches.", "drench-replay");
    app.set_version_flag("--version", programName);
    app.require_subcommand(1);
    app.get_formatter()->column_width(34);
    Run run;
    for (const auto add :
         {addInfo, addSoakings, addHeat, addTracks, addCut, addJoin, addImport, addVerify})
        add(app, run);
    if (const std::optional<int> status = parseArguments(app, argc, argv, [] {}))
        return *status;
    return runTool(run);
}
