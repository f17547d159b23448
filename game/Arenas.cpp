#include "game/Arenas.h"

#include "arena/ArenaFile.h"
#include "arena/Map.h"
#include "common/Files.h"
#include "common/UserFolders.h"
#include "src/FilePath.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <string_view>

namespace drench::game {

namespace {

namespace fs = std::filesystem;

/// The most files that are looked at; a folder may be anything.
constexpr std::size_t mostFiles = 100;

bool areAlike(const MapManager& a, const MapManager& b) {
    if (a.columns != b.columns || a.rows != b.rows || a.depth != b.depth)
        return false;
    for (int i = 0; i < a.columns; ++i) {
        for (int j = 0; j < a.rows; ++j) {
            for (int k = 0; k < a.depth; ++k) {
                const Box& one = arena::cell(a, i, j, k);
                const Box& other = arena::cell(b, i, j, k);
                if ((one.solid != 0) != (other.solid != 0) || one.cellValue != other.cellValue)
                    return false;
            }
        }
    }
    return true;
}

std::vector<std::string> filesIn(const std::string& folder) {
    std::vector<std::string> files;
    std::error_code ended;
    for (fs::directory_iterator entry(folder, ended); !ended && entry != fs::directory_iterator();
         entry.increment(ended)) {
        std::error_code unknown;
        if (entry->is_regular_file(unknown) && !entry->path().filename().string().starts_with('.'))
            files.push_back(entry->path().string());
    }
    std::sort(files.begin(), files.end());
    files.resize(std::min(files.size(), mostFiles));
    return files;
}

void add(KnownArenas& known, const std::string& file) {
    try {
        arena::ArenaFile read = arena::readWholeArena(file);
        arena::requireCells(read.text.map);
        const auto alike =
            std::find_if(known.arenas.begin(), known.arenas.end(),
                         [&](const KnownArena& each) { return areAlike(each.map, read.text.map); });
        if (alike == known.arenas.end())
            known.arenas.push_back(
                {read.name.empty() ? fs::path(file).filename().string() : read.name, file,
                 std::move(read.text.map)});
        else if (!read.name.empty())
            alike->name = read.name;
    } catch (const InputError& error) {
        const std::string_view problem = error.what();
        known.problems.push_back(problem.starts_with(file) ? std::string(problem)
                                                           : file + ": " + std::string(problem));
    }
}

} // namespace

std::vector<std::string> arenaFolders() {
    std::vector<std::string> folders;
    if (const std::string own = userFolder("XDG_DATA_HOME", ".local/share"); !own.empty())
        folders.push_back(own + "/arenas");
    const char* const set = std::getenv("XDG_DATA_DIRS");
    std::string_view shared = set && *set ? set : "/usr/local/share:/usr/share";
    while (!shared.empty()) {
        const std::string_view folder = shared.substr(0, shared.find(':'));
        if (fs::path(folder).is_absolute())
            folders.push_back(std::string(folder) + "/drench/arenas");
        shared.remove_prefix(std::min(folder.size() + 1, shared.size()));
    }
    folders.push_back(getResourcePath("arenas"));
    return folders;
}

std::string usualArena() {
    return getResourcePath("mapdata");
}

KnownArenas readArenas(const std::string& usual, std::span<const std::string> folders) {
    KnownArenas known;
    add(known, usual);
    for (const std::string& folder : folders) {
        for (const std::string& file : filesIn(folder))
            add(known, file);
    }
    return known;
}

} // namespace drench::game
