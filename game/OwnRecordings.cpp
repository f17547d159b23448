#include "game/OwnRecordings.h"

#include "client/recording/RecordingReader.h"
#include "common/Descriptor.h"
#include "common/Files.h"
#include "common/UserFolders.h"
#include "game/OpenedRecording.h"
#include "game/Text.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <filesystem>
#include <system_error>

namespace drench::game {

namespace {

namespace fs = std::filesystem;

constexpr char ending[] = ".drench";

/// The latest names in the folder, which begin with their dates.
std::vector<std::string> filesIn(const std::string& folder) {
    std::vector<std::string> files;
    std::error_code ended;
    for (fs::directory_iterator entry(folder, ended); !ended && entry != fs::directory_iterator();
         entry.increment(ended)) {
        std::error_code unknown;
        if (entry->is_regular_file(unknown) && isRecording(entry->path().string()))
            files.push_back(entry->path().string());
    }
    std::sort(files.rbegin(), files.rend());
    files.resize(std::min(files.size(), mostRecordings));
    return files;
}

std::string nowAsName() {
    const std::time_t now = std::time(nullptr);
    std::tm parts{};
    std::array<char, 64> words{};
    if (!localtime_r(&now, &parts) ||
        std::strftime(words.data(), words.size(), "%Y-%m-%d %H.%M.%S", &parts) == 0)
        return std::to_string(now);
    return words.data();
}

} // namespace

std::string recordingsFolder() {
    const std::string own = userFolder("XDG_DATA_HOME", ".local/share");
    return own.empty() ? own : own + "/recordings";
}

std::vector<OwnRecording> recordingsIn(const std::string& folder) {
    std::vector<OwnRecording> recordings;
    for (const std::string& file : filesIn(folder)) {
        try {
            const auto reader = client::RecordingReader::open(file);
            const client::RecordingHeader& header = reader.header();
            recordings.push_back({file, drawable(header.room), dateOf(header.startedAt),
                                  reader.duration(), header.startedAt});
        } catch (const InputError&) {
            // Of a version to come, or removed meanwhile.
        }
    }
    std::stable_sort(
        recordings.begin(), recordings.end(),
        [](const OwnRecording& a, const OwnRecording& b) { return a.startedAt > b.startedAt; });
    return recordings;
}

std::string newRecordingFile(const std::string& folder) {
    if (folder.empty())
        throw InputError("there is no folder for recordings: neither XDG_DATA_HOME nor HOME is "
                         "set");
    std::error_code problem;
    fs::create_directories(folder, problem);
    if (problem)
        throw InputError(folder + ": cannot be made (" + problem.message() + ")");
    const std::string name = folder + "/" + nowAsName();
    std::string file = name + ending;
    for (int copy = 2;; ++copy) {
        const Descriptor made(open(file.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
        if (made.number >= 0)
            return file;
        if (errno != EEXIST)
            throw InputError(file + ": cannot be made (" + std::strerror(errno) + ")");
        file = name + " " + std::to_string(copy) + ending;
    }
}

std::string lengthWords(std::chrono::duration<double> length) {
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(length).count();
    const auto twoDigits = [](std::int64_t number) {
        return (number < 10 ? "0" : "") + std::to_string(number);
    };
    const std::string rest = ":" + twoDigits(seconds % 60);
    if (seconds < 3600)
        return std::to_string(seconds / 60) + rest;
    return std::to_string(seconds / 3600) + ":" + twoDigits(seconds / 60 % 60) + rest;
}

} // namespace drench::game
