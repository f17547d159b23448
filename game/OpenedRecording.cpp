#include "game/OpenedRecording.h"

#include "arena/Map.h"
#include "arena/MapText.h"
#include "client/recording/Block.h"
#include "client/recording/RecordingReader.h"
#include "common/Files.h"
#include "game/ArenaFinder.h"
#include "game/Text.h"

#include <algorithm>
#include <array>
#include <ctime>
#include <fstream>
#include <map>
#include <optional>
#include <utility>

namespace drench::game {

namespace {

/// More than enough to tell arenas apart.
constexpr std::size_t judgedSnapshots = 20'000;

void requireWanted(const std::stop_token& stop) {
    if (stop.stop_requested())
        throw InputError("the recording was not opened: that was no longer wanted");
}

/// The line that tells the most of the match, the first of equal ones. Nothing if none tells
/// anything.
std::optional<std::uint32_t> wholeLine(client::RecordingReader& reader,
                                       const std::stop_token& stop) {
    std::map<std::uint32_t, std::uint64_t> snapshots;
    while (const std::optional<client::RecordedDatagram> each = reader.next()) {
        requireWanted(stop);
        if (each->way == client::Way::fromRoom &&
            std::holds_alternative<UpdateMessage>(client::readRecord(each->bytes)))
            ++snapshots[each->line];
    }
    const auto most =
        std::max_element(snapshots.begin(), snapshots.end(),
                         [](const auto& a, const auto& b) { return a.second < b.second; });
    return most == snapshots.end() ? std::nullopt : std::optional(most->first);
}

std::vector<PlayedEvent> eventsOf(client::RecordingReader& reader, std::uint32_t line,
                                  const std::stop_token& stop) {
    reader.seek(client::RecordedTime(0));
    LineDecoder decoder;
    while (const std::optional<client::RecordedDatagram> each = reader.next()) {
        requireWanted(stop);
        if (each->line != line)
            continue;
        if (each->way == client::Way::fromRoom)
            decoder.take(client::Time(each->time), each->bytes);
        else
            decoder.takeSent(client::Time(each->time), each->bytes);
    }
    return decoder.finish();
}

/// The arena of a recording's own text; null if it holds none, or none that can be played.
std::unique_ptr<MapManager> ownArena(const std::string& text, std::vector<std::string>& problems) {
    if (text.empty())
        return nullptr;
    auto map = std::make_unique<MapManager>(arena::readMapText(text).map);
    try {
        arena::requireCells(*map);
        return map;
    } catch (const InputError& error) {
        problems.push_back(std::string("the arena in this recording cannot be shown: ") +
                           error.what());
        return nullptr;
    }
}

const MapManager& judgedArena(const std::vector<KnownArena>& known,
                              const std::vector<PlayedEvent>& events,
                              std::vector<std::string>& problems) {
    std::vector<const MapManager*> maps;
    maps.reserve(known.size());
    for (const KnownArena& each : known)
        maps.push_back(&each.map);
    ArenaFinder finder(maps);
    std::size_t seen = 0;
    for (const PlayedEvent& each : events) {
        if (const auto* snapshot = std::get_if<client::Snapshot>(&each.event);
            snapshot && seen++ < judgedSnapshots)
            finder.see(*snapshot);
    }
    if (finder.verdict() == ArenaFinder::Verdict::none)
        problems.push_back("This match was played in an arena that is not known here. Name its "
                           "file with --arena.");
    return *maps[finder.best()];
}

} // namespace

bool isRecording(const std::string& file) {
    std::ifstream in(file, std::ios::binary);
    // Of any version: its reader says which it knows.
    std::array<char, client::recordingMagic.size() - 1> begin{};
    in.read(begin.data(), begin.size());
    return in && client::recordingMagic.starts_with(std::string_view(begin.data(), begin.size()));
}

std::string dateOf(std::int64_t startedAt) {
    const auto seconds = static_cast<std::time_t>(startedAt / 1'000'000);
    std::tm parts{};
    std::array<char, 64> words{};
    if (!localtime_r(&seconds, &parts) ||
        std::strftime(words.data(), words.size(), "%e %B %Y, %H:%M", &parts) == 0)
        return "at an unknown time";
    return words[0] == ' ' ? words.data() + 1 : words.data();
}

OpenedRecording openRecording(const std::string& file, const std::vector<KnownArena>& known,
                              bool ignoresText, const std::stop_token& stop) {
    client::RecordingReader reader = client::RecordingReader::open(file);
    const std::string& room = reader.header().room;
    std::string title =
        (room.empty() ? "" : drawable(room) + ", ") + dateOf(reader.header().startedAt);
    const std::optional<std::uint32_t> line = wholeLine(reader, stop);
    if (!line)
        throw InputError(file + ": nothing can be watched, since no state of the room is in it");
    std::vector<PlayedEvent> events = eventsOf(reader, *line, stop);
    std::vector<std::string> problems = reader.problems();
    if (events.size() >= LineDecoder::mostEvents)
        problems.push_back(file + ": longer than can be watched at once; cut it");
    std::unique_ptr<MapManager> map;
    if (!ignoresText)
        map = ownArena(reader.header().arena, problems);
    if (!map)
        map = std::make_unique<MapManager>(judgedArena(known, events, problems));
    Playback playback(std::move(events));
    ArenaMesh mesh = meshOf(*map, stop);
    requireWanted(stop);
    return {std::move(title), std::move(playback), std::move(map), std::move(mesh),
            std::move(problems)};
}

} // namespace drench::game
