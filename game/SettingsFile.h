#pragma once

#include "game/Settings.h"

#include <string>
#include <vector>

namespace drench::game {

/// settings.toml in the user's folder for settings; empty if there is none, and then nothing is
/// kept.
std::string settingsFile();

struct ReadSettings {
    Settings settings;

    /// What was wrong and what became of it, a line each for the user, with file and line.
    std::vector<std::string> problems;
};

/// Reads the file, a TOML document; the defaults stand for what is missing. Values are clamped, and
/// one of another kind is told and becomes the default. A file that cannot be parsed is renamed to
/// "….damaged", with a number if need be. Never throws for what the file holds.
ReadSettings readSettings(const std::string& file);

/// Writes the settings into the file, whole or not at all, and makes its folder. What else the file
/// holds stays, comments apart; a damaged file is kept aside as in readSettings(). Throws
/// InputError if the file cannot be read or written.
void writeSettings(const std::string& file, const Settings& settings);

} // namespace drench::game
