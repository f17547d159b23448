#include "common/UserFolders.h"

#include <cstdlib>
#include <filesystem>

namespace drench {

namespace {

std::filesystem::path folderFromEnvironment(const char* variable) {
    const char* const value = std::getenv(variable);
    return value ? value : "";
}

} // namespace

std::string userFolder(const char* variable, const char* belowHome) {
    if (const auto folder = folderFromEnvironment(variable); folder.is_absolute())
        return (folder / "drench").string();
    if (const auto home = folderFromEnvironment("HOME"); home.is_absolute())
        return (home / belowHome / "drench").string();
    return {};
}

} // namespace drench
