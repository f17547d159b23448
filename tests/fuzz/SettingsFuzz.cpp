// Any bytes as the file of the settings.

#include "game/SettingsFile.h"
#include "tests/fuzz/InputErrors.h"
#include "tests/fuzz/Require.h"
#include "tests/support/TemporaryFolder.h"

#include <cstdint>
#include <filesystem>
#include <string>

using namespace drench::game;

namespace {

namespace fs = std::filesystem;

/// A problem begins with file and line, and the line is one of the text.
void requirePlace(const std::string& file, const std::string& text, std::string_view words) {
    const auto line = takeNumber(words, file + ":");
    require(line && words.starts_with(": "), "a problem begins with file and line");
    require(lineOf(text, *line).has_value(), "a problem names a line of the file");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const TemporaryFolder folder;
    const std::string text(reinterpret_cast<const char*>(data), size);
    const std::string file = folder.write("settings.toml", text);
    const std::string damaged = file + ".damaged";

    const ReadSettings read = readSettings(file);
    for (const std::string& problem : read.problems)
        requirePlace(file, text, problem);
    Settings clamped = read.settings;
    clamp(clamped);
    require(clamped == read.settings, "settings are within their limits");
    if (fs::exists(damaged)) {
        require(read.problems.size() == 1 && read.settings == Settings(),
                "damage is told, and the usual settings stand for the file");
        require(readFile(damaged) == text && !fs::exists(file), "a damaged file is kept whole");
        fs::remove(damaged);
    }

    writeSettings(file, read.settings);
    const ReadSettings again = readSettings(file);
    require(again.settings == read.settings, "settings survive being written and read");
    require(again.problems.empty() && !fs::exists(damaged), "what is written can be read");
    return 0;
}
