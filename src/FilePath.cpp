#include "FilePath.h"

#include <filesystem>
#include <system_error>

std::string getAppPath() {
    std::error_code ignored;
    const std::filesystem::path executable =
        std::filesystem::read_symlink("/proc/self/exe", ignored);
    std::string folder = executable.parent_path().string();
    if (folder == "/")
        folder.clear();
    return folder;
}

std::string getResourcePath(std::string name) {
    return getAppPath() + "/Resources/" + name;
}

std::string resourcePath(std::string /*name*/) {
    return "";
}
